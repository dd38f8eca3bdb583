// Builds the factories from the list of effects.
#include "bundle/registry.h"

#include <string>
#include <vector>

#include "ofx/exception.h"

// Defined by each built effect.
#define EFFECT(identifier, fx) OFX::PluginFactory* new_##fx(const char* pluginIdentifier);
#define PLANNED(identifier, fx)
#include "bundle/effects.inc"
#undef EFFECT
#undef PLANNED

namespace {

// Keeps the place of an effect that is not built yet: hosts that ask for its description leave it out.
template <class Factory>
class PlannedPluginFactory : public OFX::PluginFactoryHelper<Factory> {
    [[noreturn]] OFX::ImageEffect* refuse() const {
        throw OFX::Exception::HostInadequate(std::string(this->identifier()) + " is not built yet");
    }

public:
    using OFX::PluginFactoryHelper<Factory>::PluginFactoryHelper;
    void describe(OfxImageEffectHandle) override { refuse(); }
    void describeInContext(OfxImageEffectHandle, OFX::Context) override { refuse(); }
    OFX::ImageEffect* createInstance(OfxImageEffectHandle, OFX::Context) override { return refuse(); }
};

#define EFFECT(identifier, fx)
#define PLANNED(identifier, fx)                                                      \
    class fx##PluginFactory final : public PlannedPluginFactory<fx##PluginFactory> { \
    public:                                                                          \
        using PlannedPluginFactory<fx##PluginFactory>::PlannedPluginFactory;         \
    };                                                                               \
    OFX::PluginFactory* new_##fx(const char* id) { return new fx##PluginFactory(id); }
#include "bundle/effects.inc"
#undef EFFECT
#undef PLANNED

std::vector<OFX::PluginFactory*>& list() {
    static std::vector<OFX::PluginFactory*> factories = {
#define EFFECT(identifier, fx) new_##fx(identifier),
#define PLANNED(identifier, fx) new_##fx(identifier),
#include "bundle/effects.inc"
#undef EFFECT
#undef PLANNED
    };
    return factories;
}

[[maybe_unused]] const auto& builtAtLoad = list();

} // namespace

namespace bundle {

std::span<OFX::PluginFactory* const> factories() { return list(); }

} // namespace bundle
