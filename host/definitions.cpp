// The properties that the standard gives each object, with their defaults.
#include "host/definitions.h"

#include <cfloat>
#include <initializer_list>
#include <limits>

#include "host/host.h"
#include "host/parameter.h"

namespace host {

namespace {

// A property of fixed dimension: its defaults say type and dimension.
PropertyDefinition ints(const char* name, std::vector<int> values) { return {name, std::move(values)}; }
PropertyDefinition doubles(const char* name, std::vector<double> values) { return {name, std::move(values)}; }
PropertyDefinition text(const char* name, const std::string& value = "") { return {name, std::vector{value}}; }
PropertyDefinition pointer(const char* name, void* value = nullptr) { return {name, std::vector{value}}; }

// A property with any number of values.
template <PropertyType T = std::string>
PropertyDefinition list(const char* name, std::vector<T> values = {}) {
    return {name, std::move(values), true};
}

void define(PropertySet& properties, std::initializer_list<PropertyDefinition> definitions) {
    properties.define(std::span(definitions.begin(), definitions.size()));
}

void defineLabels(PropertySet& properties, const std::string& label) {
    for (const char* name : {kOfxPropLabel, kOfxPropShortLabel, kOfxPropLongLabel})
        properties.define(text(name, label));
}

// How images may be rendered: on the processor, and on no graphics processor.
void defineRenderers(PropertySet& properties) {
    properties.define(text(kOfxImageEffectPropCPURenderSupported, "true"));
    for (const char* name : {kOfxImageEffectPropOpenGLRenderSupported, kOfxImageEffectPropOpenCLSupported,
                             kOfxImageEffectPropOpenCLRenderSupported, kOfxImageEffectPropCudaRenderSupported,
                             kOfxImageEffectPropCudaStreamSupported, kOfxImageEffectPropMetalRenderSupported})
        properties.define(text(name, "false"));
}

void defineColourManagement(PropertySet& properties) {
    define(properties, {text(kOfxImageEffectPropColourManagementStyle, kOfxImageEffectColourManagementNone),
                        list(kOfxImageEffectPropColourManagementAvailableConfigs)});
}

void defineHostParameters(PropertySet& properties) {
    define(properties, {
                           ints(kOfxParamHostPropSupportsCustomAnimation, {1}),
                           ints(kOfxParamHostPropSupportsStringAnimation, {1}),
                           ints(kOfxParamHostPropSupportsBooleanAnimation, {1}),
                           ints(kOfxParamHostPropSupportsChoiceAnimation, {1}),
                           ints(kOfxParamHostPropSupportsStrChoice, {1}),
                           ints(kOfxParamHostPropSupportsStrChoiceAnimation, {1}),
                           ints(kOfxParamHostPropSupportsCustomInteract, {0}),
                           ints(kOfxParamHostPropSupportsParametricAnimation, {0}),
                           ints(kOfxParamHostPropMaxParameters, {-1}), // no limit
                           ints(kOfxParamHostPropMaxPages, {0}),
                           ints(kOfxParamHostPropPageRowColumnCount, {0, 0}),
                       });
}

} // namespace

void defineHost(PropertySet& properties, const Options& options) {
    define(properties,
           {
               list<int>(kOfxPropAPIVersion, {1, 5}),
               text(kOfxPropType, kOfxTypeImageEffectHost),
               text(kOfxPropName, "com.orvixstudioworks.orvix"),
               text(kOfxPropLabel, "Orvix"),
               list<int>(kOfxPropVersion, {1, 0, 0}),
               text(kOfxPropVersionLabel, "1.0.0"),
               pointer(kOfxPropHostOSHandle),
               ints(kOfxImageEffectHostPropIsBackground, {1}),
               text(kOfxImageEffectHostPropNativeOrigin, kOfxHostNativeOriginBottomLeft),
               list(kOfxImageEffectPropSupportedContexts,
                    {kOfxImageEffectContextGenerator, kOfxImageEffectContextFilter, kOfxImageEffectContextTransition,
                     kOfxImageEffectContextGeneral, kOfxImageEffectContextPaint, kOfxImageEffectContextRetimer}),
               list(kOfxImageEffectPropSupportedPixelDepths,
                    {kOfxBitDepthByte, kOfxBitDepthShort, kOfxBitDepthHalf, kOfxBitDepthFloat}),
               list(kOfxImageEffectPropSupportedComponents,
                    {kOfxImageComponentRGBA, kOfxImageComponentRGB, kOfxImageComponentAlpha}),
               ints(kOfxImageEffectPropSupportsOverlays, {0}),
               ints(kOfxImageEffectPropSupportsMultiResolution, {1}),
               ints(kOfxImageEffectPropSupportsTiles, {1}),
               ints(kOfxImageEffectPropTemporalClipAccess, {1}),
               ints(kOfxImageEffectPropSupportsMultipleClipDepths, {0}),
               ints(kOfxImageEffectPropSupportsMultipleClipPARs, {0}),
               ints(kOfxImageEffectPropSetableFrameRate, {0}),
               ints(kOfxImageEffectPropSetableFielding, {0}),
               ints(kOfxImageEffectInstancePropSequentialRender, {1}),
               ints(kOfxImageEffectPropRenderQualityDraft, {1}),
           });
    if (options.extensions)
        properties.define(list(kOfxImageEffectPropPixelOrder, {kOfxImagePixelOrderRGBA, kOfxImagePixelOrderBGRA}));
    defineRenderers(properties);
    defineColourManagement(properties);
    defineHostParameters(properties);
    if (options.openCL) properties.set(kOfxImageEffectPropOpenCLSupported, "true");
}

void defineDescriptor(PropertySet& properties, const std::string& binaryPath) {
    define(properties, {
                           text(kOfxPropType, kOfxTypeImageEffect),
                           text(kOfxPluginPropFilePath, binaryPath),
                           list<int>(kOfxPropVersion, {0}),
                           text(kOfxPropVersionLabel),
                           text(kOfxPropPluginDescription),
                           list(kOfxPropIcon),
                           list(kOfxImageEffectPropSupportedContexts),
                           list(kOfxImageEffectPropSupportedPixelDepths),
                           text(kOfxImageEffectPluginPropGrouping),
                           ints(kOfxImageEffectPluginPropObsolete, {0}),
                           ints(kOfxImageEffectPluginPropSingleInstance, {0}),
                           text(kOfxImageEffectPluginRenderThreadSafety, kOfxImageEffectRenderInstanceSafe),
                           ints(kOfxImageEffectPluginPropHostFrameThreading, {1}),
                           ints(kOfxImageEffectPluginPropFieldRenderTwiceAlways, {1}),
                           pointer(kOfxImageEffectPluginPropOverlayInteractV1),
                           pointer(kOfxImageEffectPluginPropOverlayInteractV2),
                           ints(kOfxImageEffectPropSupportsMultiResolution, {1}),
                           ints(kOfxImageEffectPropSupportsTiles, {1}),
                           ints(kOfxImageEffectPropTemporalClipAccess, {0}),
                           ints(kOfxImageEffectPropSupportsMultipleClipDepths, {0}),
                           ints(kOfxImageEffectPropSupportsMultipleClipPARs, {0}),
                           ints(kOfxImageEffectInstancePropSequentialRender, {0}),
                           list(kOfxImageEffectPropClipPreferencesSlaveParam),
                           text(kOfxImageEffectPropNoSpatialAwareness, "false"),
                           text(kOfxImageEffectPropBehaviourWhenUnlicensed, kOfxUnlicensedContinue),
                           list(kOfxOpenGLPropPixelDepth),
                       });
    defineLabels(properties, "");
    defineRenderers(properties);
    defineColourManagement(properties);
}

void defineInstance(PropertySet& properties, const std::string& context, const Options& options) {
    const OfxPointD size = options.projectSize, offset = options.projectOffset;
    define(properties,
           {
               text(kOfxPropType, kOfxTypeImageEffectInstance),
               text(kOfxImageEffectPropContext, context),
               pointer(kOfxPropInstanceData),
               pointer(kOfxImageEffectPropPluginHandle),
               doubles(kOfxImageEffectPropProjectSize, {size.x, size.y}),
               doubles(kOfxImageEffectPropProjectOffset, {offset.x, offset.y}),
               doubles(kOfxImageEffectPropProjectExtent, {offset.x + size.x, offset.y + size.y}),
               doubles(kOfxImageEffectPropProjectPixelAspectRatio, {options.pixelAspect}),
               doubles(kOfxImageEffectInstancePropEffectDuration, {options.frames.max - options.frames.min + 1}),
               ints(kOfxImageEffectInstancePropSequentialRender, {0}),
               doubles(kOfxImageEffectPropFrameRate, {options.frameRate}),
               ints(kOfxPropIsInteractive, {0}),
               ints(kOfxImageEffectPropInAnalysis, {0}),
               ints(kOfxImageEffectPropSupportsTiles, {1}),
               text(kOfxImageEffectPropColourManagementConfig),
               text(kOfxImageEffectPropOCIOConfig),
               text(kOfxImageEffectPropOCIODisplay),
               text(kOfxImageEffectPropOCIOView),
               text(kOfxImageEffectPropDisplayColourspace),
           });
    defineRenderers(properties);
    properties.define(text(kOfxImageEffectPropColourManagementStyle, kOfxImageEffectColourManagementNone));
}

void defineClip(PropertySet& properties, const std::string& name) {
    define(properties, {
                           text(kOfxPropType, kOfxTypeClip),
                           text(kOfxPropName, name),
                           list(kOfxImageEffectPropSupportedComponents),
                           ints(kOfxImageEffectPropTemporalClipAccess, {0}),
                           ints(kOfxImageClipPropOptional, {0}),
                           ints(kOfxImageClipPropIsMask, {0}),
                           text(kOfxImageClipPropFieldExtraction, kOfxImageFieldDoubled),
                           ints(kOfxImageEffectPropSupportsTiles, {1}),
                       });
    defineLabels(properties, name);
}

void defineClipInstance(PropertySet& properties, const Options& options) {
    const std::vector<double> frames{options.frames.min, options.frames.max};
    define(properties, {
                           text(kOfxImageEffectPropPixelDepth, kOfxBitDepthNone),
                           text(kOfxImageEffectPropComponents, kOfxImageComponentNone),
                           text(kOfxImageClipPropUnmappedPixelDepth, kOfxBitDepthNone),
                           text(kOfxImageClipPropUnmappedComponents, kOfxImageComponentNone),
                           text(kOfxImageEffectPropPreMultiplication, kOfxImagePreMultiplied),
                           doubles(kOfxImagePropPixelAspectRatio, {options.pixelAspect}),
                           doubles(kOfxImageEffectPropFrameRate, {options.frameRate}),
                           doubles(kOfxImageEffectPropUnmappedFrameRate, {options.frameRate}),
                           doubles(kOfxImageEffectPropFrameRange, frames),
                           doubles(kOfxImageEffectPropUnmappedFrameRange, frames),
                           text(kOfxImageClipPropFieldOrder, kOfxImageFieldNone),
                           ints(kOfxImageClipPropConnected, {0}),
                           ints(kOfxImageClipPropContinuousSamples, {0}),
                           text(kOfxImageClipPropColourspace),
                           list(kOfxImageClipPropPreferredColourspaces),
                       });
    if (options.extensions) properties.define(text(kOfxImageEffectPropPixelOrder, kOfxImagePixelOrderRGBA));
}

void defineParameterSet(PropertySet& properties) {
    define(properties, {list(kOfxPluginPropParamPageOrder), ints(kOfxPropParamSetNeedsSyncing, {0})});
}

namespace {

void defineNumber(PropertySet& properties, const Kind& kind) {
    const auto dimension = static_cast<std::size_t>(kind.components);
    const std::string type = kind.type;
    const bool isColour = type == kOfxParamTypeRGB || type == kOfxParamTypeRGBA;
    if (kind.value == ValueType::Integer) {
        for (const char* name : {kOfxParamPropMin, kOfxParamPropDisplayMin})
            properties.define(ints(name, std::vector(dimension, std::numeric_limits<int>::min())));
        for (const char* name : {kOfxParamPropMax, kOfxParamPropDisplayMax})
            properties.define(ints(name, std::vector(dimension, std::numeric_limits<int>::max())));
    } else {
        properties.define(doubles(kOfxParamPropMin, std::vector(dimension, -DBL_MAX)));
        properties.define(doubles(kOfxParamPropMax, std::vector(dimension, DBL_MAX)));
        properties.define(doubles(kOfxParamPropDisplayMin, std::vector(dimension, isColour ? 0 : -DBL_MAX)));
        properties.define(doubles(kOfxParamPropDisplayMax, std::vector(dimension, isColour ? 1 : DBL_MAX)));
        define(properties, {doubles(kOfxParamPropIncrement, {1}), ints(kOfxParamPropDigits, {2})});
    }
    if (dimension > 1)
        for (std::size_t i = 0; i < dimension; ++i) {
            const std::string label(1, (isColour ? "rgba" : "xyz")[i]);
            if (i == 0)
                properties.define(PropertyDefinition{kOfxParamPropDimensionLabel, std::vector(dimension, label)});
            properties.setAt(kOfxParamPropDimensionLabel, static_cast<int>(i), label);
        }
    if (kind.value == ValueType::Double && !isColour)
        define(properties, {text(kOfxParamPropDoubleType, kOfxParamDoubleTypePlain),
                            text(kOfxParamPropDefaultCoordinateSystem, kOfxParamCoordinatesCanonical),
                            ints(kOfxParamPropShowTimeMarker, {0})});
}

void defineValue(PropertySet& properties, const Kind& kind) {
    const auto dimension = static_cast<std::size_t>(kind.components);
    switch (kind.value) {
        case ValueType::None:
            if (kind.type != std::string(kOfxParamTypeParametric)) return;
            break; // a value too, but one that only its own suite reaches
        case ValueType::Integer:
            properties.define(ints(kOfxParamPropDefault, std::vector(dimension, 0)));
            break;
        case ValueType::Double:
            properties.define(doubles(kOfxParamPropDefault, std::vector(dimension, 0.0)));
            break;
        case ValueType::String:
            properties.define(text(kOfxParamPropDefault));
            break;
        case ValueType::Bytes:
            properties.define(pointer(kOfxParamPropDefault));
            break;
    }
    define(properties, {
                           ints(kOfxParamPropAnimates, {kind.animates ? 1 : 0}),
                           ints(kOfxParamPropIsAnimating, {0}),
                           ints(kOfxParamPropIsAutoKeying, {0}),
                           ints(kOfxParamPropPersistant, {1}),
                           ints(kOfxParamPropEvaluateOnChange, {1}),
                           ints(kOfxParamPropPluginMayWrite, {0}),
                           ints(kOfxParamPropCanUndo, {1}),
                           text(kOfxParamPropCacheInvalidation, kOfxParamInvalidateValueChange),
                       });
}

// What only this kind has.
void defineKind(PropertySet& properties, const std::string& type) {
    if (type == kOfxParamTypeChoice || type == kOfxParamTypeStrChoice)
        define(properties, {list(kOfxParamPropChoiceOption), list<int>(kOfxParamPropChoiceOrder)});
    if (type == kOfxParamTypeStrChoice) properties.define(list(kOfxParamPropChoiceEnum));
    if (type == kOfxParamTypeString)
        define(properties, {text(kOfxParamPropStringMode, kOfxParamStringIsSingleLine),
                            ints(kOfxParamPropStringFilePathExists, {1})});
    if (type == kOfxParamTypeCustom) properties.define(pointer(kOfxParamPropCustomInterpCallbackV1));
    if (type == kOfxParamTypePage) properties.define(list(kOfxParamPropPageChild));
    if (type == kOfxParamTypeGroup) properties.define(ints(kOfxParamPropGroupOpen, {1}));
    if (type == kOfxParamTypeParametric)
        define(properties,
               {ints(kOfxParamPropParametricDimension, {1}), list<double>(kOfxParamPropParametricUIColour),
                pointer(kOfxParamPropParametricInteractBackground), doubles(kOfxParamPropParametricRange, {0, 1})});
}

} // namespace

void defineParameter(PropertySet& properties, const Kind& kind, const std::string& name) {
    const std::string type = kind.type;
    define(properties, {
                           text(kOfxPropType, kOfxTypeParameter),
                           text(kOfxPropName, name),
                           text(kOfxParamPropType, type),
                           text(kOfxParamPropScriptName, name),
                           text(kOfxParamPropHint),
                           text(kOfxParamPropParent),
                           ints(kOfxParamPropSecret, {0}),
                           ints(kOfxParamPropEnabled, {1}),
                           pointer(kOfxParamPropDataPtr),
                           PropertyDefinition{kOfxPropIcon, std::vector<std::string>(2)},
                       });
    defineLabels(properties, name);
    if (type != kOfxParamTypeGroup && type != kOfxParamTypePage)
        define(properties, {
                               pointer(kOfxParamPropInteractV1),
                               doubles(kOfxParamPropInteractSize, {0, 0}),
                               doubles(kOfxParamPropInteractSizeAspect, {1}),
                               doubles(kOfxParamPropInteractMinimumSize, {10, 10}),
                               ints(kOfxParamPropInteractPreferedSize, {10, 10}),
                               ints(kOfxParamPropHasHostOverlayHandle, {0}),
                               ints(kOfxParamPropUseHostOverlayHandle, {0}),
                           });
    defineValue(properties, kind);
    if (kind.value == ValueType::Integer || kind.value == ValueType::Double)
        if (type != kOfxParamTypeBoolean && type != kOfxParamTypeChoice) defineNumber(properties, kind);
    defineKind(properties, type);
}

} // namespace host
