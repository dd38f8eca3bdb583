// Text for and from people.
#include "host/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <utility>

namespace host {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// How many insertions, deletions and replacements turn one word into the other.
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::optional<double> parseNumber(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
    return number;
}

std::string formatNumber(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> words;
    for (;;) {
        const auto end = text.find(separator);
        words.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return words;
        text.remove_prefix(end + 1);
    }
}

std::string join(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

std::string lower(std::string text) {
    for (char& letter : text)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return text;
}

std::vector<std::string> nearest(const std::string& name, const std::vector<std::string>& candidates) {
    constexpr std::size_t kMost = 3;
    const std::string wanted = lower(name);
    const std::size_t tolerance = std::max<std::size_t>(2, wanted.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> ranked;
    for (const std::string& candidate : candidates) {
        const std::string known = lower(candidate);
        const bool contains = wanted.size() > 2 && known.find(wanted) != std::string::npos;
        const std::size_t distance = contains ? 1 : editDistance(wanted, known);
        if (distance <= tolerance && distance < std::max(wanted.size(), known.size()))
            ranked.emplace_back(distance, candidate);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> best;
    for (std::size_t i = 0; i < std::min(kMost, ranked.size()); ++i) best.push_back(ranked[i].second);
    return best;
}

std::string suggestion(const std::string& name, const std::vector<std::string>& candidates) {
    const std::vector<std::string> near = nearest(name, candidates);
    return near.empty() ? "" : "; did you mean " + join(near, " or ") + "?";
}

} // namespace host
