/* The OpenFX C API: image effects, their actions, clips and images. */
#ifndef OPENFX_IMAGE_EFFECT_H
#define OPENFX_IMAGE_EFFECT_H

#include "openfx/params.h"

#ifdef __cplusplus
extern "C" {
#endif

#define kOfxImageEffectPluginApi "OfxImageEffectPluginAPI"
#define kOfxImageEffectPluginApiVersion 1

typedef struct OfxImageEffectStruct* OfxImageEffectHandle;
typedef struct OfxImageClipStruct* OfxImageClipHandle;
typedef struct OfxImageMemoryStruct* OfxImageMemoryHandle;

#define kOfxTypeImageEffectHost "OfxTypeImageEffectHost"
#define kOfxTypeImageEffect "OfxTypeImageEffect"
#define kOfxTypeImageEffectInstance "OfxTypeImageEffectInstance"
#define kOfxTypeClip "OfxTypeClip"
#define kOfxTypeImage "OfxTypeImage"

/* A status beyond the common ones: the plug-in cannot take the image's format. */
#define kOfxStatErrImageFormat 1000

/* Components. */
#define kOfxImageComponentNone "OfxImageComponentNone"
#define kOfxImageComponentRGBA "OfxImageComponentRGBA"
#define kOfxImageComponentRGB "OfxImageComponentRGB"
#define kOfxImageComponentAlpha "OfxImageComponentAlpha"
#define kOfxImageComponentYUVA "OfxImageComponentYUVA"

/* Contexts. */
#define kOfxImageEffectContextGenerator "OfxImageEffectContextGenerator"
#define kOfxImageEffectContextFilter "OfxImageEffectContextFilter"
#define kOfxImageEffectContextTransition "OfxImageEffectContextTransition"
#define kOfxImageEffectContextPaint "OfxImageEffectContextPaint"
#define kOfxImageEffectContextGeneral "OfxImageEffectContextGeneral"
#define kOfxImageEffectContextRetimer "OfxImageEffectContextRetimer"

/* Names that the contexts require. */
#define kOfxImageEffectOutputClipName "Output"
#define kOfxImageEffectSimpleSourceClipName "Source"
#define kOfxImageEffectTransitionSourceFromClipName "SourceFrom"
#define kOfxImageEffectTransitionSourceToClipName "SourceTo"
#define kOfxImageEffectTransitionParamName "Transition"
#define kOfxImageEffectRetimerParamName "SourceTime"

/* Actions. */
#define kOfxImageEffectActionDescribeInContext "OfxImageEffectActionDescribeInContext"
#define kOfxImageEffectActionGetRegionOfDefinition "OfxImageEffectActionGetRegionOfDefinition"
#define kOfxImageEffectActionGetRegionsOfInterest "OfxImageEffectActionGetRegionsOfInterest"
#define kOfxImageEffectActionGetTimeDomain "OfxImageEffectActionGetTimeDomain"
#define kOfxImageEffectActionGetFramesNeeded "OfxImageEffectActionGetFramesNeeded"
#define kOfxImageEffectActionGetClipPreferences "OfxImageEffectActionGetClipPreferences"
#define kOfxImageEffectActionIsIdentity "OfxImageEffectActionIsIdentity"
#define kOfxImageEffectActionRender "OfxImageEffectActionRender"
#define kOfxImageEffectActionBeginSequenceRender "OfxImageEffectActionBeginSequenceRender"
#define kOfxImageEffectActionEndSequenceRender "OfxImageEffectActionEndSequenceRender"
#define kOfxImageEffectActionGetOutputColourspace "OfxImageEffectActionGetOutputColourspace"

/* The host. */
#define kOfxImageEffectHostPropIsBackground "OfxImageEffectHostPropIsBackground"
#define kOfxImageEffectHostPropNativeOrigin "OfxImageEffectHostPropNativeOrigin"
#define kOfxHostNativeOriginBottomLeft "kOfxImageEffectHostPropNativeOriginBottomLeft"
#define kOfxHostNativeOriginTopLeft "kOfxImageEffectHostPropNativeOriginTopLeft"
#define kOfxHostNativeOriginCenter "kOfxImageEffectHostPropNativeOriginCenter"
#define kOfxImageEffectPropSetableFrameRate "OfxImageEffectPropSetableFrameRate"
#define kOfxImageEffectPropSetableFielding "OfxImageEffectPropSetableFielding"
#define kOfxImageEffectInstancePropSequentialRender "OfxImageEffectInstancePropSequentialRender"
#define kOfxImageEffectPropSupportsOverlays "OfxImageEffectPropSupportsOverlays"

/* The plug-in. */
#define kOfxImageEffectPropSupportedContexts "OfxImageEffectPropSupportedContexts"
#define kOfxImageEffectPropSupportedPixelDepths "OfxImageEffectPropSupportedPixelDepths"
#define kOfxImageEffectPropSupportedComponents "OfxImageEffectPropSupportedComponents"
#define kOfxImageEffectPluginPropGrouping "OfxImageEffectPluginPropGrouping"
#define kOfxImageEffectPluginPropObsolete "OfxImageEffectPluginPropObsolete"
#define kOfxImageEffectPluginPropSingleInstance "OfxImageEffectPluginPropSingleInstance"
#define kOfxImageEffectPluginPropHostFrameThreading "OfxImageEffectPluginPropHostFrameThreading"
#define kOfxImageEffectPluginPropFieldRenderTwiceAlways "OfxImageEffectPluginPropFieldRenderTwiceAlways"
#define kOfxImageEffectPluginPropOverlayInteractV1 "OfxImageEffectPluginPropOverlayInteractV1"
#define kOfxImageEffectPluginPropOverlayInteractV2 "OfxImageEffectPluginPropOverlayInteractV2"
#define kOfxImageEffectPluginRenderThreadSafety "OfxImageEffectPluginRenderThreadSafety"
#define kOfxImageEffectRenderUnsafe "OfxImageEffectRenderUnsafe"
#define kOfxImageEffectRenderInstanceSafe "OfxImageEffectRenderInstanceSafe"
#define kOfxImageEffectRenderFullySafe "OfxImageEffectRenderFullySafe"
#define kOfxImageEffectPropSupportsMultipleClipDepths "OfxImageEffectPropMultipleClipDepths"
#define kOfxImageEffectPropSupportsMultipleClipPARs "OfxImageEffectPropSupportsMultipleClipPARs"
#define kOfxImageEffectPropSupportsMultiResolution "OfxImageEffectPropSupportsMultiResolution"
#define kOfxImageEffectPropSupportsTiles "OfxImageEffectPropSupportsTiles"
#define kOfxImageEffectPropTemporalClipAccess "OfxImageEffectPropTemporalClipAccess"
#define kOfxImageEffectPropClipPreferencesSlaveParam "OfxImageEffectPropClipPreferencesSlaveParam"
#define kOfxImageEffectPropNoSpatialAwareness "OfxImageEffectPropNoSpatialAwareness"
#define kOfxImageEffectPropBehaviourWhenUnlicensed "OfxImageEffectPropBehaviourWhenUnlicensed"
#define kOfxUnlicensedContinue "OfxUnlicensedContinue"
#define kOfxUnlicensedFail "OfxUnlicensedFail"

/* The instance. */
#define kOfxImageEffectPropContext "OfxImageEffectPropContext"
#define kOfxImageEffectPropPluginHandle "OfxImageEffectPropPluginHandle"
#define kOfxImageEffectPropProjectExtent "OfxImageEffectPropProjectExtent"
#define kOfxImageEffectPropProjectSize "OfxImageEffectPropProjectSize"
#define kOfxImageEffectPropProjectOffset "OfxImageEffectPropProjectOffset"
#define kOfxImageEffectPropProjectPixelAspectRatio "OfxImageEffectPropPixelAspectRatio"
#define kOfxImageEffectInstancePropEffectDuration "OfxImageEffectInstancePropEffectDuration"
#define kOfxImageEffectFrameVarying "OfxImageEffectFrameVarying"
#define kOfxImageEffectPropInAnalysis "OfxImageEffectPropInAnalysis"

/* Clips. */
#define kOfxImageClipPropConnected "OfxImageClipPropConnected"
#define kOfxImageClipPropOptional "OfxImageClipPropOptional"
#define kOfxImageClipPropIsMask "OfxImageClipPropIsMask"
#define kOfxImageClipPropContinuousSamples "OfxImageClipPropContinuousSamples"
#define kOfxImageClipPropUnmappedPixelDepth "OfxImageClipPropUnmappedPixelDepth"
#define kOfxImageClipPropUnmappedComponents "OfxImageClipPropUnmappedComponents"
#define kOfxImageClipPropFieldOrder "OfxImageClipPropFieldOrder"
#define kOfxImageClipPropFieldExtraction "OfxImageClipPropFieldExtraction"
#define kOfxImageEffectPropPixelDepth "OfxImageEffectPropPixelDepth"
#define kOfxImageEffectPropComponents "OfxImageEffectPropComponents"
#define kOfxImageEffectPropFrameRate "OfxImageEffectPropFrameRate"
#define kOfxImageEffectPropUnmappedFrameRate "OfxImageEffectPropUnmappedFrameRate"
#define kOfxImageEffectPropFrameStep "OfxImageEffectPropFrameStep"
#define kOfxImageEffectPropFrameRange "OfxImageEffectPropFrameRange"
#define kOfxImageEffectPropUnmappedFrameRange "OfxImageEffectPropUnmappedFrameRange"
#define kOfxImageEffectPropPreMultiplication "OfxImageEffectPropPreMultiplication"
#define kOfxImageOpaque "OfxImageOpaque"
#define kOfxImagePreMultiplied "OfxImageAlphaPremultiplied"
#define kOfxImageUnPreMultiplied "OfxImageAlphaUnPremultiplied"

/* Images: bounds and region in pixels, row y1 lowest; row bytes may be negative. */
#define kOfxImagePropData "OfxImagePropData"
#define kOfxImagePropBounds "OfxImagePropBounds"
#define kOfxImagePropRegionOfDefinition "OfxImagePropRegionOfDefinition"
#define kOfxImagePropRowBytes "OfxImagePropRowBytes"
#define kOfxImagePropField "OfxImagePropField"
#define kOfxImagePropPixelAspectRatio "OfxImagePropPixelAspectRatio"
#define kOfxImagePropUniqueIdentifier "OfxImagePropUniqueIdentifier"
#define kOfxImageFieldNone "OfxFieldNone"
#define kOfxImageFieldLower "OfxFieldLower"
#define kOfxImageFieldUpper "OfxFieldUpper"
#define kOfxImageFieldBoth "OfxFieldBoth"
#define kOfxImageFieldSingle "OfxFieldSingle"
#define kOfxImageFieldDoubled "OfxFieldDoubled"

/* Action arguments. */
#define kOfxImageEffectPropRenderWindow "OfxImageEffectPropRenderWindow"
#define kOfxImageEffectPropRenderScale "OfxImageEffectPropRenderScale"
#define kOfxImageEffectPropFieldToRender "OfxImageEffectPropFieldToRender"
#define kOfxImageEffectPropRegionOfDefinition "OfxImageEffectPropRegionOfDefinition"
#define kOfxImageEffectPropRegionOfInterest "OfxImageEffectPropRegionOfInterest"
#define kOfxImageEffectPropSequentialRenderStatus "OfxImageEffectPropSequentialRenderStatus"
#define kOfxImageEffectPropInteractiveRenderStatus "OfxImageEffectPropInteractiveRenderStatus"
#define kOfxImageEffectPropRenderQualityDraft "OfxImageEffectPropRenderQualityDraft"
#define kOfxImageEffectPropThumbnailRender "OfxImageEffectPropThumbnailRender"

/* Colour management. */
#define kOfxImageEffectPropColourManagementStyle "OfxImageEffectPropColourManagementStyle"
#define kOfxImageEffectColourManagementNone "OfxImageEffectColourManagementNone"
#define kOfxImageEffectColourManagementBasic "OfxImageEffectColourManagementBasic"
#define kOfxImageEffectColourManagementCore "OfxImageEffectColourManagementCore"
#define kOfxImageEffectColourManagementFull "OfxImageEffectColourManagementFull"
#define kOfxImageEffectColourManagementOCIO "OfxImageEffectColourManagementOCIO"
#define kOfxImageEffectPropColourManagementAvailableConfigs "OfxImageEffectPropColourManagementAvailableConfigs"
#define kOfxImageEffectPropColourManagementConfig "OfxImageEffectPropColourManagementConfig"
#define kOfxImageEffectPropOCIOConfig "OfxImageEffectPropOCIOConfig"
#define kOfxImageEffectPropOCIODisplay "OfxImageEffectPropOCIODisplay"
#define kOfxImageEffectPropOCIOView "OfxImageEffectPropOCIOView"
#define kOfxImageEffectPropDisplayColourspace "OfxImageEffectPropDisplayColourspace"
#define kOfxImageClipPropColourspace "OfxImageClipPropColourspace"
#define kOfxImageClipPropPreferredColourspaces "OfxImageClipPropPreferredColourspaces"

/* The image-effect suite. Every image that clipGetImage hands out is given back with clipReleaseImage. */
#define kOfxImageEffectSuite "OfxImageEffectSuite"
typedef struct OfxImageEffectSuiteV1 {
    OfxStatus (*getPropertySet)(OfxImageEffectHandle imageEffect, OfxPropertySetHandle* propHandle);
    OfxStatus (*getParamSet)(OfxImageEffectHandle imageEffect, OfxParamSetHandle* paramSet);
    OfxStatus (*clipDefine)(OfxImageEffectHandle imageEffect, const char* name, OfxPropertySetHandle* propertySet);
    OfxStatus (*clipGetHandle)(OfxImageEffectHandle imageEffect, const char* name, OfxImageClipHandle* clip,
                               OfxPropertySetHandle* propertySet);
    OfxStatus (*clipGetPropertySet)(OfxImageClipHandle clip, OfxPropertySetHandle* propHandle);
    OfxStatus (*clipGetImage)(OfxImageClipHandle clip, OfxTime time, const OfxRectD* region,
                              OfxPropertySetHandle* imageHandle);
    OfxStatus (*clipReleaseImage)(OfxPropertySetHandle imageHandle);
    OfxStatus (*clipGetRegionOfDefinition)(OfxImageClipHandle clip, OfxTime time, OfxRectD* bounds);
    int (*abort)(OfxImageEffectHandle imageEffect);
    OfxStatus (*imageMemoryAlloc)(OfxImageEffectHandle instanceHandle, size_t nBytes,
                                  OfxImageMemoryHandle* memoryHandle);
    OfxStatus (*imageMemoryFree)(OfxImageMemoryHandle memoryHandle);
    OfxStatus (*imageMemoryLock)(OfxImageMemoryHandle memoryHandle, void** returnedPtr);
    OfxStatus (*imageMemoryUnlock)(OfxImageMemoryHandle memoryHandle);
} OfxImageEffectSuiteV1;

#ifdef __cplusplus
}
#endif

#endif
