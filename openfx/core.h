/* The OpenFX C API, version 1.5: the plug-in and host records, status codes, geometry, actions and properties that
   every OpenFX API shares, and the property suite. Names, values and layouts are those of the published standard;
   key symbols and the names of the standard's native colour spaces are left out, since nothing here uses them. */
#ifndef OPENFX_CORE_H
#define OPENFX_CORE_H

#include <limits.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define OfxExport extern __declspec(dllexport)
#elif defined(__GNUC__)
#define OfxExport extern __attribute__((visibility("default")))
#else
#define OfxExport extern
#endif

/* Opaque objects of the host. */
typedef struct OfxPropertySetStruct* OfxPropertySetHandle;

/* Result of an action or a suite call: one of the kOfxStat... values below. */
typedef int OfxStatus;

#define kOfxStatOK 0
#define kOfxStatFailed 1
#define kOfxStatErrFatal 2
#define kOfxStatErrUnknown 3
#define kOfxStatErrMissingHostFeature 4
#define kOfxStatErrUnsupported 5
#define kOfxStatErrExists 6
#define kOfxStatErrFormat 7
#define kOfxStatErrMemory 8
#define kOfxStatErrBadHandle 9
#define kOfxStatErrBadIndex 10
#define kOfxStatErrValue 11
#define kOfxStatReplyYes 12
#define kOfxStatReplyNo 13
#define kOfxStatReplyDefault 14
#define kOfxStatUnlicensed 15

/* What the host hands to a plug-in: its own properties, and suites by name and version (null when unknown). */
typedef struct OfxHost {
    OfxPropertySetHandle host;
    const void* (*fetchSuite)(OfxPropertySetHandle host, const char* suiteName, int suiteVersion);
} OfxHost;

typedef OfxStatus(OfxPluginEntryPoint)(const char* action, const void* handle, OfxPropertySetHandle inArgs,
                                       OfxPropertySetHandle outArgs);

/* One plug-in of a binary, as the binary hands it to the host. */
typedef struct OfxPlugin {
    const char* pluginApi;
    int apiVersion;
    const char* pluginIdentifier;
    unsigned int pluginVersionMajor;
    unsigned int pluginVersionMinor;
    void (*setHost)(OfxHost* host);
    OfxPluginEntryPoint* mainEntry;
} OfxPlugin;

/* The functions that a binary exports. OfxSetHost is optional and comes first. */
OfxExport OfxPlugin* OfxGetPlugin(int nth);
OfxExport int OfxGetNumberOfPlugins(void);
OfxExport OfxStatus OfxSetHost(const OfxHost* host);

/* Actions of every API. */
#define kOfxActionLoad "OfxActionLoad"
#define kOfxActionDescribe "OfxActionDescribe"
#define kOfxActionUnload "OfxActionUnload"
#define kOfxActionPurgeCaches "OfxActionPurgeCaches"
#define kOfxActionSyncPrivateData "OfxActionSyncPrivateData"
#define kOfxActionCreateInstance "OfxActionCreateInstance"
#define kOfxActionDestroyInstance "OfxActionDestroyInstance"
#define kOfxActionInstanceChanged "OfxActionInstanceChanged"
#define kOfxActionBeginInstanceChanged "OfxActionBeginInstanceChanged"
#define kOfxActionEndInstanceChanged "OfxActionEndInstanceChanged"
#define kOfxActionBeginInstanceEdit "OfxActionBeginInstanceEdit"
#define kOfxActionEndInstanceEdit "OfxActionEndInstanceEdit"

/* Properties of every API. */
#define kOfxPropAPIVersion "OfxPropAPIVersion"
#define kOfxPropTime "OfxPropTime"
#define kOfxPropIsInteractive "OfxPropIsInteractive"
#define kOfxPluginPropFilePath "OfxPluginPropFilePath"
#define kOfxPropInstanceData "OfxPropInstanceData"
#define kOfxPropType "OfxPropType"
#define kOfxPropName "OfxPropName"
#define kOfxPropVersion "OfxPropVersion"
#define kOfxPropVersionLabel "OfxPropVersionLabel"
#define kOfxPropPluginDescription "OfxPropPluginDescription"
#define kOfxPropLabel "OfxPropLabel"
#define kOfxPropIcon "OfxPropIcon"
#define kOfxPropShortLabel "OfxPropShortLabel"
#define kOfxPropLongLabel "OfxPropLongLabel"
#define kOfxPropChangeReason "OfxPropChangeReason"
#define kOfxPropEffectInstance "OfxPropEffectInstance"
#define kOfxPropHostOSHandle "OfxPropHostOSHandle"

/* Values of kOfxPropChangeReason. */
#define kOfxChangeUserEdited "OfxChangeUserEdited"
#define kOfxChangePluginEdited "OfxChangePluginEdited"
#define kOfxChangeTime "OfxChangeTime"

/* Time in frames; ranges are inclusive; rectangles are half-open, y upwards. */
typedef double OfxTime;
typedef struct OfxRangeI {
    int min, max;
} OfxRangeI;
typedef struct OfxRangeD {
    double min, max;
} OfxRangeD;
typedef struct OfxPointI {
    int x, y;
} OfxPointI;
typedef struct OfxPointD {
    double x, y;
} OfxPointD;
typedef struct OfxRectI {
    int x1, y1, x2, y2;
} OfxRectI;
typedef struct OfxRectD {
    double x1, y1, x2, y2;
} OfxRectD;

/* Sides of an unbounded rectangle. */
#define kOfxFlagInfiniteMax INT_MAX
#define kOfxFlagInfiniteMin INT_MIN

/* Component depths: none, 8 and 16 bits unsigned, 16 and 32 bits floating point. */
#define kOfxBitDepthNone "OfxBitDepthNone"
#define kOfxBitDepthByte "OfxBitDepthByte"
#define kOfxBitDepthShort "OfxBitDepthShort"
#define kOfxBitDepthHalf "OfxBitDepthHalf"
#define kOfxBitDepthFloat "OfxBitDepthFloat"

/* The property suite. A set maps a name to a list of values of one type; a call with an index beyond the list
   answers kOfxStatErrBadIndex, one with another type kOfxStatErrValue or kOfxStatErrUnknown. */
#define kOfxPropertySuite "OfxPropertySuite"
typedef struct OfxPropertySuiteV1 {
    OfxStatus (*propSetPointer)(OfxPropertySetHandle properties, const char* property, int index, void* value);
    OfxStatus (*propSetString)(OfxPropertySetHandle properties, const char* property, int index, const char* value);
    OfxStatus (*propSetDouble)(OfxPropertySetHandle properties, const char* property, int index, double value);
    OfxStatus (*propSetInt)(OfxPropertySetHandle properties, const char* property, int index, int value);
    OfxStatus (*propSetPointerN)(OfxPropertySetHandle properties, const char* property, int count, void* const* value);
    OfxStatus (*propSetStringN)(OfxPropertySetHandle properties, const char* property, int count,
                                const char* const* value);
    OfxStatus (*propSetDoubleN)(OfxPropertySetHandle properties, const char* property, int count, const double* value);
    OfxStatus (*propSetIntN)(OfxPropertySetHandle properties, const char* property, int count, const int* value);
    OfxStatus (*propGetPointer)(OfxPropertySetHandle properties, const char* property, int index, void** value);
    OfxStatus (*propGetString)(OfxPropertySetHandle properties, const char* property, int index, char** value);
    OfxStatus (*propGetDouble)(OfxPropertySetHandle properties, const char* property, int index, double* value);
    OfxStatus (*propGetInt)(OfxPropertySetHandle properties, const char* property, int index, int* value);
    OfxStatus (*propGetPointerN)(OfxPropertySetHandle properties, const char* property, int count, void** value);
    OfxStatus (*propGetStringN)(OfxPropertySetHandle properties, const char* property, int count, char** value);
    OfxStatus (*propGetDoubleN)(OfxPropertySetHandle properties, const char* property, int count, double* value);
    OfxStatus (*propGetIntN)(OfxPropertySetHandle properties, const char* property, int count, int* value);
    OfxStatus (*propReset)(OfxPropertySetHandle properties, const char* property);
    OfxStatus (*propGetDimension)(OfxPropertySetHandle properties, const char* property, int* count);
} OfxPropertySuiteV1;

#ifdef __cplusplus
}
#endif

#endif
