/* The OpenFX C API: parameters, their properties and their suites. */
#ifndef OPENFX_PARAMS_H
#define OPENFX_PARAMS_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "openfx/core.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OfxParamStruct* OfxParamHandle;
typedef struct OfxParamSetStruct* OfxParamSetHandle;

#define kOfxTypeParameter "OfxTypeParameter"
#define kOfxTypeParameterInstance "OfxTypeParameterInstance"

/* Kinds. */
#define kOfxParamTypeInteger "OfxParamTypeInteger"
#define kOfxParamTypeDouble "OfxParamTypeDouble"
#define kOfxParamTypeBoolean "OfxParamTypeBoolean"
#define kOfxParamTypeChoice "OfxParamTypeChoice"
#define kOfxParamTypeStrChoice "OfxParamTypeStrChoice"
#define kOfxParamTypeRGBA "OfxParamTypeRGBA"
#define kOfxParamTypeRGB "OfxParamTypeRGB"
#define kOfxParamTypeDouble2D "OfxParamTypeDouble2D"
#define kOfxParamTypeInteger2D "OfxParamTypeInteger2D"
#define kOfxParamTypeDouble3D "OfxParamTypeDouble3D"
#define kOfxParamTypeInteger3D "OfxParamTypeInteger3D"
#define kOfxParamTypeString "OfxParamTypeString"
#define kOfxParamTypeCustom "OfxParamTypeCustom"
#define kOfxParamTypeBytes "OfxParamTypeBytes"
#define kOfxParamTypeGroup "OfxParamTypeGroup"
#define kOfxParamTypePage "OfxParamTypePage"
#define kOfxParamTypePushButton "OfxParamTypePushButton"
#define kOfxParamTypeParametric "OfxParamTypeParametric"

/* Value of a bytes parameter. */
typedef struct OfxBytes {
    const unsigned char* data;
    size_t length;
} OfxBytes;

/* What the host's parameters can do. */
#define kOfxParamHostPropSupportsCustomAnimation "OfxParamHostPropSupportsCustomAnimation"
#define kOfxParamHostPropSupportsStringAnimation "OfxParamHostPropSupportsStringAnimation"
#define kOfxParamHostPropSupportsBooleanAnimation "OfxParamHostPropSupportsBooleanAnimation"
#define kOfxParamHostPropSupportsChoiceAnimation "OfxParamHostPropSupportsChoiceAnimation"
#define kOfxParamHostPropSupportsStrChoiceAnimation "OfxParamHostPropSupportsStrChoiceAnimation"
#define kOfxParamHostPropSupportsStrChoice "OfxParamHostPropSupportsStrChoice"
#define kOfxParamHostPropSupportsCustomInteract "OfxParamHostPropSupportsCustomInteract"
#define kOfxParamHostPropSupportsParametricAnimation "OfxParamHostPropSupportsParametricAnimation"
#define kOfxParamHostPropMaxParameters "OfxParamHostPropMaxParameters"
#define kOfxParamHostPropMaxPages "OfxParamHostPropMaxPages"
#define kOfxParamHostPropPageRowColumnCount "OfxParamHostPropPageRowColumnCount"

/* Layout: pages and groups. */
#define kOfxPluginPropParamPageOrder "OfxPluginPropParamPageOrder"
#define kOfxParamPropPageChild "OfxParamPropPageChild"
#define kOfxParamPageSkipRow "OfxParamPageSkipRow"
#define kOfxParamPageSkipColumn "OfxParamPageSkipColumn"
#define kOfxParamPropParent "OfxParamPropParent"
#define kOfxParamPropGroupOpen "OfxParamPropGroupOpen"

/* Custom interacts of a parameter. */
#define kOfxParamPropInteractV1 "OfxParamPropInteractV1"
#define kOfxParamPropInteractSize "OfxParamPropInteractSize"
#define kOfxParamPropInteractSizeAspect "OfxParamPropInteractSizeAspect"
#define kOfxParamPropInteractMinimumSize "OfxParamPropInteractMinimumSize"
#define kOfxParamPropInteractPreferedSize "OfxParamPropInteractPreferedSize"

/* Properties of most kinds. */
#define kOfxParamPropType "OfxParamPropType"
#define kOfxParamPropAnimates "OfxParamPropAnimates"
#define kOfxParamPropCanUndo "OfxParamPropCanUndo"
#define kOfxPropParamSetNeedsSyncing "OfxPropParamSetNeedsSyncing"
#define kOfxParamPropIsAnimating "OfxParamPropIsAnimating"
#define kOfxParamPropIsAutoKeying "OfxParamPropIsAutoKeying"
#define kOfxParamPropPluginMayWrite "OfxParamPropPluginMayWrite"
#define kOfxParamPropPersistant "OfxParamPropPersistant"
#define kOfxParamPropEvaluateOnChange "OfxParamPropEvaluateOnChange"
#define kOfxParamPropSecret "OfxParamPropSecret"
#define kOfxParamPropEnabled "OfxParamPropEnabled"
#define kOfxParamPropDataPtr "OfxParamPropDataPtr"
#define kOfxParamPropScriptName "OfxParamPropScriptName"
#define kOfxParamPropHint "OfxParamPropHint"
#define kOfxParamPropDefault "OfxParamPropDefault"
#define kOfxParamPropCacheInvalidation "OfxParamPropCacheInvalidation"
#define kOfxParamInvalidateValueChange "OfxParamInvalidateValueChange"
#define kOfxParamInvalidateValueChangeToEnd "OfxParamInvalidateValueChangeToEnd"
#define kOfxParamInvalidateAll "OfxParamInvalidateAll"

/* Numbers. */
#define kOfxParamPropMin "OfxParamPropMin"
#define kOfxParamPropMax "OfxParamPropMax"
#define kOfxParamPropDisplayMin "OfxParamPropDisplayMin"
#define kOfxParamPropDisplayMax "OfxParamPropDisplayMax"
#define kOfxParamPropIncrement "OfxParamPropIncrement"
#define kOfxParamPropDigits "OfxParamPropDigits"
#define kOfxParamPropDimensionLabel "OfxParamPropDimensionLabel"
#define kOfxParamPropShowTimeMarker "OfxParamPropShowTimeMarker"
#define kOfxParamPropDoubleType "OfxParamPropDoubleType"
#define kOfxParamDoubleTypePlain "OfxParamDoubleTypePlain"
#define kOfxParamDoubleTypeScale "OfxParamDoubleTypeScale"
#define kOfxParamDoubleTypeAngle "OfxParamDoubleTypeAngle"
#define kOfxParamDoubleTypeTime "OfxParamDoubleTypeTime"
#define kOfxParamDoubleTypeAbsoluteTime "OfxParamDoubleTypeAbsoluteTime"
#define kOfxParamDoubleTypeX "OfxParamDoubleTypeX"
#define kOfxParamDoubleTypeY "OfxParamDoubleTypeY"
#define kOfxParamDoubleTypeXAbsolute "OfxParamDoubleTypeXAbsolute"
#define kOfxParamDoubleTypeYAbsolute "OfxParamDoubleTypeYAbsolute"
#define kOfxParamDoubleTypeXY "OfxParamDoubleTypeXY"
#define kOfxParamDoubleTypeXYAbsolute "OfxParamDoubleTypeXYAbsolute"
#define kOfxParamDoubleTypeNormalisedX "OfxParamDoubleTypeNormalisedX"
#define kOfxParamDoubleTypeNormalisedY "OfxParamDoubleTypeNormalisedY"
#define kOfxParamDoubleTypeNormalisedXAbsolute "OfxParamDoubleTypeNormalisedXAbsolute"
#define kOfxParamDoubleTypeNormalisedYAbsolute "OfxParamDoubleTypeNormalisedYAbsolute"
#define kOfxParamDoubleTypeNormalisedXY "OfxParamDoubleTypeNormalisedXY"
#define kOfxParamDoubleTypeNormalisedXYAbsolute "OfxParamDoubleTypeNormalisedXYAbsolute"
#define kOfxParamPropDefaultCoordinateSystem "OfxParamPropDefaultCoordinateSystem"
#define kOfxParamCoordinatesCanonical "OfxParamCoordinatesCanonical"
#define kOfxParamCoordinatesNormalised "OfxParamCoordinatesNormalised"
#define kOfxParamPropHasHostOverlayHandle "OfxParamPropHasHostOverlayHandle"
#define kOfxParamPropUseHostOverlayHandle "kOfxParamPropUseHostOverlayHandle"

/* Choices. */
#define kOfxParamPropChoiceOption "OfxParamPropChoiceOption"
#define kOfxParamPropChoiceOrder "OfxParamPropChoiceOrder"
#define kOfxParamPropChoiceEnum "OfxParamPropChoiceEnum"

/* Strings. */
#define kOfxParamPropStringMode "OfxParamPropStringMode"
#define kOfxParamPropStringFilePathExists "OfxParamPropStringFilePathExists"
#define kOfxParamStringIsSingleLine "OfxParamStringIsSingleLine"
#define kOfxParamStringIsMultiLine "OfxParamStringIsMultiLine"
#define kOfxParamStringIsFilePath "OfxParamStringIsFilePath"
#define kOfxParamStringIsDirectoryPath "OfxParamStringIsDirectoryPath"
#define kOfxParamStringIsLabel "OfxParamStringIsLabel"
#define kOfxParamStringIsRichTextFormat "OfxParamStringIsRichTextFormat"

/* Custom values and their interpolation. */
#define kOfxParamPropCustomInterpCallbackV1 "OfxParamPropCustomCallbackV1"
#define kOfxParamPropCustomValue "OfxParamPropCustomValue"
#define kOfxParamPropInterpolationTime "OfxParamPropInterpolationTime"
#define kOfxParamPropInterpolationAmount "OfxParamPropInterpolationAmount"
#define kOfxParamInterpType "OfxParamInterpType"
#define kOfxParamInterpTypeConstantStep "OfxParamInterpTypeConstantStep"
#define kOfxParamInterpTypeLinear "OfxParamInterpTypeLinear"
#define kOfxParamInterpTypeSmooth "OfxParamInterpTypeSmooth"
typedef OfxStatus(OfxCustomParamInterpFuncV1)(OfxParamSetHandle instance, OfxPropertySetHandle inArgs,
                                              OfxPropertySetHandle outArgs);

/* The parameter suite. Values pass as variadic arguments: pointers to read, values to write, one per component
   (int for integers, booleans and choices, double for doubles and colours, char* for strings). */
#define kOfxParameterSuite "OfxParameterSuite"
typedef struct OfxParameterSuiteV1 {
    OfxStatus (*paramDefine)(OfxParamSetHandle paramSet, const char* paramType, const char* name,
                             OfxPropertySetHandle* propertySet);
    OfxStatus (*paramGetHandle)(OfxParamSetHandle paramSet, const char* name, OfxParamHandle* param,
                                OfxPropertySetHandle* propertySet);
    OfxStatus (*paramSetGetPropertySet)(OfxParamSetHandle paramSet, OfxPropertySetHandle* propHandle);
    OfxStatus (*paramGetPropertySet)(OfxParamHandle param, OfxPropertySetHandle* propHandle);
    OfxStatus (*paramGetValue)(OfxParamHandle paramHandle, ...);
    OfxStatus (*paramGetValueAtTime)(OfxParamHandle paramHandle, OfxTime time, ...);
    OfxStatus (*paramGetDerivative)(OfxParamHandle paramHandle, OfxTime time, ...);
    OfxStatus (*paramGetIntegral)(OfxParamHandle paramHandle, OfxTime time1, OfxTime time2, ...);
    OfxStatus (*paramSetValue)(OfxParamHandle paramHandle, ...);
    OfxStatus (*paramSetValueAtTime)(OfxParamHandle paramHandle, OfxTime time, ...);
    OfxStatus (*paramGetNumKeys)(OfxParamHandle paramHandle, unsigned int* numberOfKeys);
    OfxStatus (*paramGetKeyTime)(OfxParamHandle paramHandle, unsigned int nthKey, OfxTime* time);
    OfxStatus (*paramGetKeyIndex)(OfxParamHandle paramHandle, OfxTime time, int direction, int* index);
    OfxStatus (*paramDeleteKey)(OfxParamHandle paramHandle, OfxTime time);
    OfxStatus (*paramDeleteAllKeys)(OfxParamHandle paramHandle);
    OfxStatus (*paramCopy)(OfxParamHandle paramTo, OfxParamHandle paramFrom, OfxTime dstOffset,
                           const OfxRangeD* frameRange);
    OfxStatus (*paramEditBegin)(OfxParamSetHandle paramSet, const char* name);
    OfxStatus (*paramEditEnd)(OfxParamSetHandle paramSet);
} OfxParameterSuiteV1;

/* Curves: parametric parameters. */
#define kOfxParamPropParametricDimension "OfxParamPropParametricDimension"
#define kOfxParamPropParametricUIColour "OfxParamPropParametricUIColour"
#define kOfxParamPropParametricInteractBackground "OfxParamPropParametricInteractBackground"
#define kOfxParamPropParametricRange "OfxParamPropParametricRange"
#define kOfxParametricParameterSuite "OfxParametricParameterSuite"
typedef struct OfxParametricParameterSuiteV1 {
    OfxStatus (*parametricParamGetValue)(OfxParamHandle param, int curveIndex, OfxTime time, double parametricPosition,
                                         double* returnValue);
    OfxStatus (*parametricParamGetNControlPoints)(OfxParamHandle param, int curveIndex, double time, int* returnValue);
    OfxStatus (*parametricParamGetNthControlPoint)(OfxParamHandle param, int curveIndex, double time, int nthCtl,
                                                   double* key, double* value);
    OfxStatus (*parametricParamSetNthControlPoint)(OfxParamHandle param, int curveIndex, double time, int nthCtl,
                                                   double key, double value, bool addAnimationKey);
    OfxStatus (*parametricParamAddControlPoint)(OfxParamHandle param, int curveIndex, double time, double key,
                                                double value, bool addAnimationKey);
    OfxStatus (*parametricParamDeleteControlPoint)(OfxParamHandle param, int curveIndex, int nthCtl);
    OfxStatus (*parametricParamDeleteAllControlPoints)(OfxParamHandle param, int curveIndex);
} OfxParametricParameterSuiteV1;

#ifdef __cplusplus
}
#endif

#endif
