// Both commands collect what they tell as JSON; the text for people is written from that. Field names are part of the
// program's interface: scripts rely on them.
#include "host/cli/describe.h"

#include <nlohmann/json.hpp>

#include <iomanip>
#include <iostream>

#include "host/cli/error.h"
#include "host/opencl.h"
#include "host/text.h"

namespace cli {
namespace {

using Json = nlohmann::ordered_json;

std::string withoutPrefix(const std::string& name, const std::string& prefix) {
    return host::lower(name.starts_with(prefix) ? name.substr(prefix.size()) : name);
}

std::vector<std::string> plainNames(std::vector<std::string> names, std::string (*plain)(const std::string&)) {
    for (std::string& name : names) name = plain(name);
    return names;
}

Json effectSummary(const Catalogue& catalogue, host::Plugin& plugin) {
    Json effect = {{"identifier", plugin.identifier()},
                   {"version", std::to_string(plugin.majorVersion()) + "." + std::to_string(plugin.minorVersion())},
                   {"bundle", catalogue.binaryOf(plugin).path().string()}};
    const std::string obstacle = catalogue.obstacle(plugin);
    effect["built"] = obstacle.empty();
    if (!obstacle.empty()) {
        effect["reason"] = obstacle;
        return effect;
    }
    const host::Descriptor& descriptor = plugin.describe();
    effect["label"] = descriptor.label();
    effect["grouping"] = descriptor.grouping();
    effect["contexts"] = plainNames(descriptor.contexts(), plainContext);
    effect["depths"] = plainNames(descriptor.depths(), plainDepth);
    return effect;
}

Json clipDescription(const host::Clip& clip) {
    const host::PropertySet& properties = clip.properties();
    return {
        {"name", clip.name()},
        {"optional", clip.isOptional()},
        {"mask", properties.getOr(kOfxImageClipPropIsMask, 0) != 0},
        {"components", plainNames(properties.all<std::string>(kOfxImageEffectPropSupportedComponents),
                                  [](const std::string& name) { return withoutPrefix(name, "OfxImageComponent"); })}};
}

// A bound, or nothing where the parameter has none: hosts and plug-ins write the largest numbers for that.
Json bound(double value) {
    constexpr double kUnbounded = 1e9;
    return std::abs(value) >= kUnbounded ? Json() : Json(value);
}

Json bounds(const host::PropertySet& properties, const char* name, bool integer) {
    Json values = Json::array();
    if (integer)
        for (const int value : properties.all<int>(name))
            values.push_back(bound(value).is_null() ? Json() : Json(value));
    else
        for (const double value : properties.all<double>(name)) values.push_back(bound(value));
    return values;
}

// Numbers as a list, one per component; switches as true or false; options, texts and bytes as they are set.
Json defaultValue(const host::Parameter& parameter) {
    const host::Value value = parameter.defaultValue();
    const std::string kind = parameter.kind().type;
    if (kind == kOfxParamTypeBoolean) return value.numbers[0] != 0;
    const bool number =
        parameter.kind().value == host::ValueType::Integer || parameter.kind().value == host::ValueType::Double;
    if (!number || kind == kOfxParamTypeChoice) return parameter.text(value);
    const auto first = value.numbers.begin();
    return std::vector<double>(first, first + parameter.kind().components);
}

Json parameterDescription(const host::Parameter& parameter) {
    const host::PropertySet& properties = parameter.properties();
    Json json = {{"name", parameter.name()},
                 {"kind", parameter.kind().word},
                 {"label", properties.getOr<std::string>(kOfxPropLabel, parameter.name())},
                 {"parent", properties.getOr<std::string>(kOfxParamPropParent, "")},
                 {"hint", properties.getOr<std::string>(kOfxParamPropHint, "")}};
    if (!parameter.hasValue()) return json;
    json["default"] = defaultValue(parameter);
    json["allowed"] = parameter.allowed();
    json["animates"] = parameter.canAnimate();
    json["enabled"] = properties.getOr(kOfxParamPropEnabled, 1) != 0;
    json["secret"] = properties.getOr(kOfxParamPropSecret, 0) != 0;
    const bool integer = parameter.kind().value == host::ValueType::Integer;
    const std::pair<const char*, const char*> ranges[] = {{"minimum", kOfxParamPropMin},
                                                          {"maximum", kOfxParamPropMax},
                                                          {"displayMinimum", kOfxParamPropDisplayMin},
                                                          {"displayMaximum", kOfxParamPropDisplayMax}};
    for (const auto& [key, property] : ranges) {
        const Json values = bounds(properties, property, integer);
        if (!values.empty()) json[key] = values;
    }
    if (const auto options = parameter.options(); !options.empty()) json["options"] = options;
    return json;
}

// The first context in which this program can run the effect, else its first one.
std::string usualContext(const std::vector<std::string>& contexts) {
    for (const char* context : {kOfxImageEffectContextFilter, kOfxImageEffectContextGenerator,
                                kOfxImageEffectContextTransition, kOfxImageEffectContextGeneral})
        if (std::find(contexts.begin(), contexts.end(), context) != contexts.end()) return context;
    if (contexts.empty()) throw Failure("the effect names no context");
    return contexts.front();
}

void addDetails(Json& effect, const host::Descriptor& descriptor) {
    effect["described"] = plainContext(descriptor.context());
    effect["clips"] = Json::array();
    for (const auto& clip : descriptor.clips()) effect["clips"].push_back(clipDescription(*clip));
    effect["parameters"] = Json::array();
    for (const auto& parameter : descriptor.parameters().all())
        effect["parameters"].push_back(parameterDescription(*parameter));
}

std::string text(const Json& object, const char* key) { return object.value(key, std::string()); }
std::string words(const Json& list) { return host::join(list.get<std::vector<std::string>>()); }

void printParameter(const host::Parameter& parameter) {
    const host::PropertySet& properties = parameter.properties();
    std::vector<std::string> facts;
    if (parameter.hasValue()) {
        facts.push_back(parameter.allowed());
        if (const std::string initial = parameter.text(parameter.defaultValue()); !initial.empty())
            facts.push_back("default " + initial);
        if (!parameter.canAnimate()) facts.emplace_back("no keys");
    }
    if (const auto parent = properties.getOr<std::string>(kOfxParamPropParent, ""); !parent.empty())
        facts.push_back("in " + parent);
    std::cout << "  " << std::left << std::setw(24) << parameter.name() << ' ' << std::setw(10) << parameter.kind().word
              << ' ' << host::join(facts, "; ") << '\n';
    if (const auto hint = properties.getOr<std::string>(kOfxParamPropHint, ""); !hint.empty())
        std::cout << std::string(38, ' ') << hint << '\n';
}

} // namespace

std::string plainContext(const std::string& context) { return withoutPrefix(context, "OfxImageEffectContext"); }
std::string plainDepth(const std::string& depth) { return withoutPrefix(depth, "OfxBitDepth"); }

void listEffects(Catalogue& catalogue, const ListArguments& arguments) {
    Json effects = Json::array();
    for (host::Plugin* plugin : catalogue.all()) effects.push_back(effectSummary(catalogue, *plugin));
    if (arguments.json) {
        std::cout << effects.dump(2) << '\n';
        return;
    }
    std::size_t width = 0, leftOut = 0;
    const auto shown = [&](const Json& effect) { return arguments.all || effect["built"] == true; };
    for (const Json& effect : effects)
        if (shown(effect)) width = std::max(width, text(effect, "identifier").size());
    for (const Json& effect : effects) {
        if (!shown(effect)) {
            ++leftOut;
            continue;
        }
        std::cout << std::left << std::setw(static_cast<int>(width) + 2) << text(effect, "identifier");
        if (effect["built"] == true)
            std::cout << std::setw(12) << words(effect["contexts"]) << ' ' << text(effect, "label") << '\n';
        else
            std::cout << '(' << text(effect, "reason") << ")\n";
    }
    if (leftOut > 0)
        std::cerr << "orvix: " << leftOut << " more are not built yet or cannot run here; --all lists them\n";
}

void describeEffect(Catalogue& catalogue, const DescribeArguments& arguments) {
    host::Plugin& plugin = catalogue.find(arguments.effect);
    const host::Descriptor& descriptor = plugin.describeInContext(usualContext(plugin.contexts()));
    Json effect = effectSummary(catalogue, plugin);
    addDetails(effect, descriptor);
    if (arguments.json) {
        std::cout << effect.dump(2) << '\n';
        return;
    }
    std::vector<std::string> clips;
    for (const auto& clip : descriptor.clips())
        clips.push_back(clip->name() + (clip->isOptional() ? " (optional)" : ""));
    std::cout << text(effect, "identifier") << ' ' << text(effect, "version") << "  " << text(effect, "label") << "\n\n"
              << "  contexts   " << words(effect["contexts"]) << "\n  depths     " << words(effect["depths"])
              << "\n  clips      " << host::join(clips) << "\n  bundle     " << text(effect, "bundle")
              << "\n\nParameters\n";
    for (const auto& parameter : descriptor.parameters().all())
        if (parameter->kind().type != std::string(kOfxParamTypePage)) printParameter(*parameter);
}

void listDevices() {
    const std::vector<host::OpenCLDeviceInfo> devices = host::openCLDevices();
    if (devices.empty()) throw Failure("there is no OpenCL device on this machine");
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const host::OpenCLDeviceInfo& device = devices[i];
        std::cout << i << "  " << device.name << "  (" << device.platform << ", " << device.version << ")"
                  << (device.hasImages ? "" : "  takes no images") << '\n';
    }
}

} // namespace cli
