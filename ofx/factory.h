// Factories: one object per plug-in, through which the host's actions reach the effect.
#pragma once

#include "ofx/enumerations.h"
#include "ofx/image_effect.h"
#include "ofx/traits.h"
#include "openfx/openfx.h"

namespace OFX {

class PluginFactory {
public:
    PluginFactory(const char* identifier, unsigned versionMajor, unsigned versionMinor)
        : identifier_(identifier), versionMajor_(versionMajor), versionMinor_(versionMinor) {}
    PluginFactory(const PluginFactory&) = delete;
    PluginFactory& operator=(const PluginFactory&) = delete;

    // Called under the bundle's load lock, any number of times and in any balance.
    virtual void load() {}
    virtual void unload() {}
    virtual void describe(OfxImageEffectHandle descriptor) = 0;
    virtual void describeInContext(OfxImageEffectHandle descriptor, Context context) = 0;
    virtual ImageEffect* createInstance(OfxImageEffectHandle instance, Context context) = 0;
    virtual const char* identifier() const { return identifier_; }
    // Identifier and versions in one string.
    virtual const char* uniqueIdentifier() const = 0;
    virtual unsigned versionMajor() const { return versionMajor_; }
    virtual unsigned versionMinor() const { return versionMinor_; }
    virtual OfxPluginEntryPoint* mainEntry() const = 0;

protected:
    ~PluginFactory() = default; // factories live as long as the library

private:
    const char* identifier_;
    unsigned versionMajor_;
    unsigned versionMinor_;
};

// Answers one action for a factory's plug-in; the one place where exceptions become statuses.
OfxStatus mainEntry(PluginFactory& factory, const char* action, const void* handle, OfxPropertySetHandle inArgs,
                    OfxPropertySetHandle outArgs) noexcept;

// Gives each factory class an entry point of its own, so that the host can tell plug-ins apart by it.
template <class Factory>
class FactoryMainEntryHelper {
protected:
    static OfxStatus entry(const char* action, const void* handle, OfxPropertySetHandle inArgs,
                           OfxPropertySetHandle outArgs) {
        return OFX::mainEntry(*factory, action, handle, inArgs, outArgs);
    }
    static inline PluginFactory* factory = nullptr;
};

template <class Factory>
class PluginFactoryHelper : public FactoryMainEntryHelper<Factory>, public PluginFactory {
public:
    explicit PluginFactoryHelper(const char* identifier)
        : PluginFactory(identifier, 1, 0), uniqueIdentifier_(std::string(identifier) + ".1.0") {
        FactoryMainEntryHelper<Factory>::factory = this;
    }
    const char* uniqueIdentifier() const override { return uniqueIdentifier_.c_str(); }
    OfxPluginEntryPoint* mainEntry() const override { return FactoryMainEntryHelper<Factory>::entry; }

private:
    std::string uniqueIdentifier_;
};

// What every built effect's factory does; only the plug-in class and its traits differ.
template <class Factory, class Plugin>
class EffectFactory : public PluginFactoryHelper<Factory> {
public:
    using PluginFactoryHelper<Factory>::PluginFactoryHelper;
    void load() override {
        if (OpenCL::Program* program = Plugin::traits.program) program->load(hostCompile());
    }
    void unload() override {
        if (OpenCL::Program* program = Plugin::traits.program) program->release();
    }
    void describe(OfxImageEffectHandle descriptor) override { OFX::describe(Plugin::traits, descriptor); }
    void describeInContext(OfxImageEffectHandle descriptor, Context context) override {
        OFX::describeInContext(Plugin::traits, descriptor, servedContext(Plugin::traits, context));
    }
    ImageEffect* createInstance(OfxImageEffectHandle instance, Context context) override {
        return new Plugin(instance, servedContext(Plugin::traits, context));
    }
};

} // namespace OFX
