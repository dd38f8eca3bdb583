// Traits become descriptor properties, clips and parameters.
#include "ofx/traits.h"

#include <algorithm>

#include "ofx/exception.h"
#include "ofx/suites.h"

namespace OFX {
namespace {

constexpr const char* kFilterClips[] = {kOfxImageEffectSimpleSourceClipName};
constexpr const char* kTransitionClips[] = {kOfxImageEffectTransitionSourceFromClipName,
                                            kOfxImageEffectTransitionSourceToClipName};
constexpr Depth kDepths[] = {Depth::Byte, Depth::Float, Depth::ByteBGR, Depth::FloatBGR};

PropertySet propertiesOf(OfxImageEffectHandle effect) {
    OfxPropertySetHandle properties = nullptr;
    Exception::throwUnlessOK(suites().imageEffect->getPropertySet(effect, &properties), "getPropertySet");
    return PropertySet(properties);
}

void defineClip(OfxImageEffectHandle descriptor, const char* name) {
    OfxPropertySetHandle properties = nullptr;
    Exception::throwUnlessOK(suites().imageEffect->clipDefine(descriptor, name, &properties), "clipDefine");
    const PropertySet clip(properties);
    clip.set(kOfxImageEffectPropSupportedComponents, toString(Components::RGBA));
    clip.set(kOfxImageEffectPropSupportsTiles, false);
    clip.set(kOfxImageClipPropFieldExtraction, toString(FieldExtraction::Single));
}

} // namespace

std::span<const char* const> sourceClips(Context context) {
    if (context == Context::Filter) return kFilterClips;
    if (context == Context::Transition) return kTransitionClips;
    return {};
}

Context servedContext(const EffectTraits& traits, Context requested) {
    const bool declared = std::ranges::find(traits.contexts, requested) != traits.contexts.end();
    return declared ? requested : traits.contexts.front();
}

void describe(const EffectTraits& traits, OfxImageEffectHandle descriptor) {
    const PropertySet p = propertiesOf(descriptor);
    p.set(kOfxPropLabel, traits.label);
    p.set(kOfxPropShortLabel, traits.label);
    p.set(kOfxPropLongLabel, traits.label);
    p.set(kOfxImageEffectPluginPropGrouping, "Orvix");

    // Written from index 0, whatever a host that describes twice may already hold there.
    int index = 0;
    for (const Context context : traits.contexts)
        p.set(kOfxImageEffectPropSupportedContexts, toString(context), index++);
    index = 0;
    for (const Depth depth : kDepths) p.set(kOfxImageEffectPropSupportedPixelDepths, toString(depth), index++);

    p.set(kOfxImageEffectPluginPropSingleInstance, false);
    p.set(kOfxImageEffectPluginPropHostFrameThreading, false);
    p.set(kOfxImageEffectPropSupportsMultiResolution, true);
    p.set(kOfxImageEffectPropSupportsTiles, true);
    p.set(kOfxImageEffectPropTemporalClipAccess, false);
    p.set(kOfxImageEffectPluginPropFieldRenderTwiceAlways, false);
    p.set(kOfxImageEffectPropSupportsMultipleClipPARs, false);

    p.set(kOfxImageEffectPropHelpFile, "tessel1.ofx.chm");
    p.set(kOfxImageEffectPropHelpContextID, traits.helpContext);
    const bool openCL = traits.program != nullptr && hostCompile() != nullptr;
    p.set(kOfxImageEffectPropOpenCLSupported, openCL ? "true" : "false");
}

void describeInContext(const EffectTraits& traits, OfxImageEffectHandle descriptor, Context context) {
    defineClip(descriptor, kOfxImageEffectOutputClipName);
    for (const char* clip : sourceClips(context)) defineClip(descriptor, clip);

    OfxParamSetHandle params = nullptr;
    Exception::throwUnlessOK(suites().imageEffect->getParamSet(descriptor, &params), "getParamSet");
    defineParams(params, traits.params, traits.childrenOnPage);

    if (traits.upliftGuid[0] != '\0') {
        propertiesOf(descriptor).set(kOfxImageEffectPropOrvixUpliftGUID, traits.upliftGuid);
    }
}

OpenCL::Compile hostCompile() {
    const auto* suite = suites().openCLProgram;
    return suite != nullptr ? suite->compileProgram : nullptr;
}

} // namespace OFX
