// What a described effect and a living instance have in common, and descriptors.
#include "host/effect.h"

#include <algorithm>

#include "host/definitions.h"
#include "host/host.h"
#include "host/text.h"

namespace host {

Effect::Effect(Host& host) : host_(host), properties_(host.options().extensions), parameters_(*this) {}

Effect::Effect(const Effect& described)
    : Handle(described),
      host_(described.host_),
      properties_(described.host_.options().extensions),
      parameters_(described.parameters_, *this) {}

Effect::~Effect() = default;

double Effect::time() const { return host_.time(); }

Clip* Effect::findClip(const std::string& name) const {
    const auto found =
        std::find_if(clips_.begin(), clips_.end(), [&](const auto& clip) { return clip->name() == name; });
    return found == clips_.end() ? nullptr : found->get();
}

Clip& Effect::clip(const std::string& name) const {
    if (Clip* found = findClip(name)) return *found;
    std::vector<std::string> names;
    for (const auto& clip : clips_) names.push_back(clip->name());
    throw Error("there is no clip \"" + name + "\"; the clips are " + join(names), kOfxStatErrBadHandle);
}

Descriptor::Descriptor(Host& host, const std::string& binaryPath) : Effect(host) {
    defineDescriptor(properties_, binaryPath);
}

Descriptor::Descriptor(const Descriptor& general, const std::string& context)
    : Effect(general.host()), context_(context) {
    properties_.inherit(general.properties_);
}

Clip& Descriptor::defineClip(const std::string& name) {
    if (findClip(name)) throw Error("there is a clip \"" + name + "\" already", kOfxStatErrExists);
    return *clips_.emplace_back(std::make_unique<Clip>(name, *this));
}

std::string Descriptor::label() const { return properties_.getOr<std::string>(kOfxPropLabel, ""); }

std::string Descriptor::grouping() const {
    return properties_.getOr<std::string>(kOfxImageEffectPluginPropGrouping, "");
}

std::vector<std::string> Descriptor::contexts() const {
    return properties_.all<std::string>(kOfxImageEffectPropSupportedContexts);
}

std::vector<std::string> Descriptor::depths() const {
    return properties_.all<std::string>(kOfxImageEffectPropSupportedPixelDepths);
}

bool Descriptor::supports(Depth depth) const {
    const std::vector<std::string> names = depths();
    return std::find(names.begin(), names.end(), ofxName(depth)) != names.end();
}

} // namespace host
