// Parameter values as text, for people: reading with every check, and writing.
#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include "host/parameter.h"
#include "host/text.h"

namespace host {

namespace {

const char* const kTrue[] = {"true", "1", "yes", "on"};
const char* const kFalse[] = {"false", "0", "no", "off"};

bool contains(const auto& words, const std::string& word) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

// The lowest and highest value of a component; infinite where there is no limit.
struct Range {
    double low = -std::numeric_limits<double>::infinity(), high = std::numeric_limits<double>::infinity();
    bool operator==(const Range&) const = default;
};

// A property that holds the extreme of its type sets no limit.
template <class T>
Range rangeFrom(const PropertySet& properties, int component) {
    const T lowest = std::numeric_limits<T>::lowest(), highest = std::numeric_limits<T>::max();
    const T low = properties.getOr(kOfxParamPropMin, lowest, component);
    const T high = properties.getOr(kOfxParamPropMax, highest, component);
    Range range;
    if (low > lowest) range.low = low;
    if (high < highest) range.high = high;
    return range;
}

Range rangeOf(const Parameter& parameter, int component) {
    const bool isInteger = parameter.kind().value == ValueType::Integer;
    return isInteger ? rangeFrom<int>(parameter.properties(), component)
                     : rangeFrom<double>(parameter.properties(), component);
}

std::string describe(Range range) {
    if (std::isfinite(range.low) && std::isfinite(range.high))
        return " from " + formatNumber(range.low) + " to " + formatNumber(range.high);
    if (std::isfinite(range.low)) return " of at least " + formatNumber(range.low);
    if (std::isfinite(range.high)) return " of at most " + formatNumber(range.high);
    return "";
}

bool isType(const Parameter& parameter, const char* type) { return parameter.kind().type == std::string(type); }

std::string hexadecimal(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += kDigits[static_cast<unsigned char>(byte) / 16];
        text += kDigits[static_cast<unsigned char>(byte) % 16];
    }
    return text;
}

std::optional<std::string> fromHexadecimal(const std::string& text) {
    const std::string digits = lower(text);
    if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789abcdef") != std::string::npos) return {};
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

// An option by its text, then by its index, then by its text in any case.
std::optional<std::size_t> findOption(const std::vector<std::string>& options, const std::string& text) {
    for (std::size_t i = 0; i < options.size(); ++i)
        if (options[i] == text) return i;
    if (const auto index = parseNumber(text); index && *index >= 0 && *index == std::floor(*index))
        if (*index < static_cast<double>(options.size())) return static_cast<std::size_t>(*index);
    for (std::size_t i = 0; i < options.size(); ++i)
        if (lower(options[i]) == lower(text)) return i;
    return std::nullopt;
}

} // namespace

std::vector<std::string> Parameter::options() const { return properties_.all<std::string>(kOfxParamPropChoiceOption); }

std::string Parameter::allowed() const {
    const std::string noun = kind_.value == ValueType::Integer ? "integer" : "number";
    if (!hasValue()) return "nothing: a " + std::string(kind_.word) + " has no value to set";
    if (isType(*this, kOfxParamTypeBoolean)) return "true or false";
    if (isType(*this, kOfxParamTypeChoice) || isType(*this, kOfxParamTypeStrChoice)) return "one of " + join(options());
    if (kind_.value == ValueType::Bytes) return "bytes as pairs of hexadecimal digits";
    if (kind_.value == ValueType::String) return "any text";
    if (kind_.components == 1) return (noun == "integer" ? "an " : "a ") + noun + describe(rangeOf(*this, 0));
    std::string ranges;
    bool same = true;
    for (int i = 0; i < kind_.components; ++i) {
        same = same && rangeOf(*this, i) == rangeOf(*this, 0);
        const std::string range = describe(rangeOf(*this, i));
        ranges += (i ? "," : "") + (range.empty() ? " any" : range);
    }
    const std::string count = std::to_string(kind_.components) + " " + noun + "s separated by commas";
    if (!same) return count + ":" + ranges;
    const std::string range = describe(rangeOf(*this, 0));
    return range.empty() ? count : count + ", each" + range;
}

Value Parameter::parse(const std::string& text) const {
    const auto refuse = [&](const std::string& what) {
        throw Error("parameter \"" + name_ + "\": " + what + "; allowed: " + allowed(), kOfxStatErrValue);
    };
    Value value;
    if (!hasValue()) refuse("it cannot be set");
    if (isType(*this, kOfxParamTypeBoolean)) {
        const bool isTrue = contains(kTrue, lower(text));
        if (!isTrue && !contains(kFalse, lower(text))) refuse("\"" + text + "\" is neither true nor false");
        value.numbers[0] = isTrue ? 1 : 0;
    } else if (isType(*this, kOfxParamTypeChoice)) {
        const auto option = findOption(options(), text);
        if (!option) refuse("there is no option \"" + text + "\"" + suggestion(text, options()));
        value.numbers[0] = static_cast<double>(*option);
    } else if (isType(*this, kOfxParamTypeStrChoice)) {
        const auto enums = properties_.all<std::string>(kOfxParamPropChoiceEnum);
        auto option = findOption(enums, text);
        if (!option || !contains(enums, text))
            if (const auto byLabel = findOption(options(), text)) option = byLabel;
        if (!option || *option >= enums.size()) refuse("there is no option \"" + text + "\"");
        value.text = enums[*option];
    } else if (kind_.value == ValueType::Bytes) {
        const auto bytes = fromHexadecimal(text);
        if (!bytes) refuse("\"" + text + "\" is not hexadecimal");
        value.text = *bytes;
    } else if (kind_.value == ValueType::String) {
        value.text = text;
    } else {
        value = parseNumbers(text, refuse);
    }
    return value;
}

Value Parameter::parseNumbers(const std::string& text, const std::function<void(const std::string&)>& refuse) const {
    const std::vector<std::string> words = split(text, ',');
    const auto count = static_cast<std::size_t>(kind_.components);
    if (words.size() != count)
        refuse("\"" + text + "\" has " + std::to_string(words.size()) + " of " + std::to_string(count) + " components");
    Value value;
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = parseNumber(words[i]);
        if (!number) refuse("\"" + words[i] + "\" is not a number");
        const bool isInteger = *number == std::floor(*number) && *number >= INT_MIN && *number <= INT_MAX;
        if (kind_.value == ValueType::Integer && !isInteger) refuse("\"" + words[i] + "\" is not an integer");
        const Range range = rangeOf(*this, static_cast<int>(i));
        if (*number < range.low || *number > range.high) refuse(words[i] + " is out of range");
        value.numbers[i] = *number;
    }
    return value;
}

void Parameter::setText(const std::string& text) { set(parse(text)); }

void Parameter::setKeys(const std::string& text) {
    const auto refuse = [&](const std::string& what) {
        throw Error("parameter \"" + name_ + "\": " + what + "; keys are written time:value,time:value",
                    kOfxStatErrValue);
    };
    if (hasValue() && !canAnimate()) refuse("it cannot be animated");
    // A word that begins "number:" starts a key; any other word is a further component of the key before it.
    std::vector<std::pair<double, std::string>> keys;
    for (const std::string& word : split(text, ',')) {
        const auto colon = word.find(':');
        const auto time = colon == std::string::npos ? std::nullopt : parseNumber(word.substr(0, colon));
        if (time)
            keys.emplace_back(*time, word.substr(colon + 1));
        else if (!keys.empty())
            keys.back().second += "," + word;
        else
            refuse("\"" + word + "\" is no key");
    }
    std::map<double, Value> values;
    for (const auto& [time, value] : keys)
        if (!values.emplace(time, parse(value)).second) refuse("there are two keys at " + formatNumber(time));
    replaceKeys(std::move(values));
}

std::string Parameter::text(double time) const { return text(value(time)); }

std::string Parameter::text(const Value& value) const {
    if (!hasValue()) return "";
    if (kind_.value == ValueType::Bytes) return hexadecimal(value.text);
    if (kind_.value == ValueType::String) return value.text;
    if (isType(*this, kOfxParamTypeBoolean)) return value.numbers[0] != 0 ? "true" : "false";
    if (isType(*this, kOfxParamTypeChoice)) {
        const std::vector<std::string> labels = options();
        const double index = value.numbers[0];
        if (index >= 0 && index < static_cast<double>(labels.size())) return labels[static_cast<std::size_t>(index)];
        return formatNumber(index);
    }
    std::vector<std::string> words;
    for (std::size_t i = 0; i < static_cast<std::size_t>(kind_.components); ++i)
        words.push_back(formatNumber(value.numbers[i]));
    return join(words, ",");
}

} // namespace host
