/* The OpenFX C API: the suites beside properties, parameters and image effects: memory, threads, messages, progress,
   time line, dialogs, interacts and drawing. */
#ifndef OPENFX_SUITES_H
#define OPENFX_SUITES_H

#include "openfx/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Memory. */
#define kOfxMemorySuite "OfxMemorySuite"
typedef struct OfxMemorySuiteV1 {
    OfxStatus (*memoryAlloc)(void* handle, size_t nBytes, void** allocatedData);
    OfxStatus (*memoryFree)(void* allocatedData);
} OfxMemorySuiteV1;

/* Threads: the function runs once for each index below the thread count; calls do not nest. */
typedef struct OfxMutex* OfxMutexHandle;
typedef void(OfxThreadFunctionV1)(unsigned int threadIndex, unsigned int threadMax, void* customArg);

#define kOfxMultiThreadSuite "OfxMultiThreadSuite"
typedef struct OfxMultiThreadSuiteV1 {
    OfxStatus (*multiThread)(OfxThreadFunctionV1 func, unsigned int nThreads, void* customArg);
    OfxStatus (*multiThreadNumCPUs)(unsigned int* nCPUs);
    OfxStatus (*multiThreadIndex)(unsigned int* threadIndex);
    int (*multiThreadIsSpawnedThread)(void);
    OfxStatus (*mutexCreate)(OfxMutexHandle* mutex, int lockCount);
    OfxStatus (*mutexDestroy)(const OfxMutexHandle mutex);
    OfxStatus (*mutexLock)(const OfxMutexHandle mutex);
    OfxStatus (*mutexUnLock)(const OfxMutexHandle mutex);
    OfxStatus (*mutexTryLock)(const OfxMutexHandle mutex);
} OfxMultiThreadSuiteV1;

/* Messages: printf formats. Version 2 adds a message that stays on the effect until cleared. */
#define kOfxMessageSuite "OfxMessageSuite"
#define kOfxMessageFatal "OfxMessageFatal"
#define kOfxMessageError "OfxMessageError"
#define kOfxMessageWarning "OfxMessageWarning"
#define kOfxMessageMessage "OfxMessageMessage"
#define kOfxMessageLog "OfxMessageLog"
#define kOfxMessageQuestion "OfxMessageQuestion"
typedef struct OfxMessageSuiteV1 {
    OfxStatus (*message)(void* handle, const char* messageType, const char* messageId, const char* format, ...);
} OfxMessageSuiteV1;

typedef struct OfxMessageSuiteV2 {
    OfxStatus (*message)(void* handle, const char* messageType, const char* messageId, const char* format, ...);
    OfxStatus (*setPersistentMessage)(void* handle, const char* messageType, const char* messageId, const char* format,
                                      ...);
    OfxStatus (*clearPersistentMessage)(void* handle);
} OfxMessageSuiteV2;

/* Progress, 0..1. An update that answers kOfxStatReplyNo asks the plug-in to stop. */
#define kOfxProgressSuite "OfxProgressSuite"
typedef struct OfxProgressSuiteV1 {
    OfxStatus (*progressStart)(void* effectInstance, const char* label);
    OfxStatus (*progressUpdate)(void* effectInstance, double progress);
    OfxStatus (*progressEnd)(void* effectInstance);
} OfxProgressSuiteV1;

typedef struct OfxProgressSuiteV2 {
    OfxStatus (*progressStart)(void* effectInstance, const char* message, const char* messageid);
    OfxStatus (*progressUpdate)(void* effectInstance, double progress);
    OfxStatus (*progressEnd)(void* effectInstance);
} OfxProgressSuiteV2;

/* Time line, in frames. */
#define kOfxTimeLineSuite "OfxTimeLineSuite"
typedef struct OfxTimeLineSuiteV1 {
    OfxStatus (*getTime)(void* instance, double* time);
    OfxStatus (*gotoTime)(void* instance, double time);
    OfxStatus (*getTimeBounds)(void* instance, double* firstTime, double* lastTime);
} OfxTimeLineSuiteV1;

/* Dialogs: the host answers a request with kOfxActionDialog on its user-interface thread. */
#define kOfxDialogSuite "OfxDialogSuite"
#define kOfxActionDialog "OfxActionDialog"
typedef struct OfxDialogSuiteV1 {
    OfxStatus (*RequestDialog)(void* user_data);
    OfxStatus (*NotifyRedrawPending)(void);
} OfxDialogSuiteV1;

/* Interacts. */
typedef struct OfxInteract* OfxInteractHandle;

#define kOfxActionDescribeInteract kOfxActionDescribe
#define kOfxActionCreateInstanceInteract kOfxActionCreateInstance
#define kOfxActionDestroyInstanceInteract kOfxActionDestroyInstance
#define kOfxInteractActionDraw "OfxInteractActionDraw"
#define kOfxInteractActionPenMotion "OfxInteractActionPenMotion"
#define kOfxInteractActionPenDown "OfxInteractActionPenDown"
#define kOfxInteractActionPenUp "OfxInteractActionPenUp"
#define kOfxInteractActionKeyDown "OfxInteractActionKeyDown"
#define kOfxInteractActionKeyUp "OfxInteractActionKeyUp"
#define kOfxInteractActionKeyRepeat "OfxInteractActionKeyRepeat"
#define kOfxInteractActionGainFocus "OfxInteractActionGainFocus"
#define kOfxInteractActionLoseFocus "OfxInteractActionLoseFocus"
#define kOfxInteractPropSlaveToParam "OfxInteractPropSlaveToParam"
#define kOfxInteractPropPixelScale "OfxInteractPropPixelScale"
#define kOfxInteractPropBackgroundColour "OfxInteractPropBackgroundColour"
#define kOfxInteractPropSuggestedColour "OfxInteractPropSuggestedColour"
#define kOfxInteractPropPenPosition "OfxInteractPropPenPosition"
#define kOfxInteractPropPenViewportPosition "OfxInteractPropPenViewportPosition"
#define kOfxInteractPropPenPressure "OfxInteractPropPenPressure"
#define kOfxInteractPropBitDepth "OfxInteractPropBitDepth"
#define kOfxInteractPropHasAlpha "OfxInteractPropHasAlpha"
#define kOfxInteractPropViewportSize "OfxInteractPropViewport"
#define kOfxInteractPropDrawContext "OfxInteractPropDrawContext"

#define kOfxInteractSuite "OfxInteractSuite"
typedef struct OfxInteractSuiteV1 {
    OfxStatus (*interactSwapBuffers)(OfxInteractHandle interactInstance);
    OfxStatus (*interactRedraw)(OfxInteractHandle interactInstance);
    OfxStatus (*interactGetPropertySet)(OfxInteractHandle interactInstance, OfxPropertySetHandle* property);
} OfxInteractSuiteV1;

/* Pixel records, in memory order. */
typedef struct OfxRGBAColourB {
    unsigned char r, g, b, a;
} OfxRGBAColourB;
typedef struct OfxRGBAColourS {
    unsigned short r, g, b, a;
} OfxRGBAColourS;
typedef struct OfxRGBAColourF {
    float r, g, b, a;
} OfxRGBAColourF;
typedef struct OfxRGBAColourD {
    double r, g, b, a;
} OfxRGBAColourD;
typedef struct OfxRGBColourB {
    unsigned char r, g, b;
} OfxRGBColourB;
typedef struct OfxRGBColourS {
    unsigned short r, g, b;
} OfxRGBColourS;
typedef struct OfxRGBColourF {
    float r, g, b;
} OfxRGBColourF;
typedef struct OfxRGBColourD {
    double r, g, b;
} OfxRGBColourD;

/* Drawing in an interact. */
typedef struct OfxDrawContext* OfxDrawContextHandle;

typedef enum OfxStandardColour {
    kOfxStandardColourOverlayBackground,
    kOfxStandardColourOverlayActive,
    kOfxStandardColourOverlaySelected,
    kOfxStandardColourOverlayDeselected,
    kOfxStandardColourOverlayMarqueeFG,
    kOfxStandardColourOverlayMarqueeBG,
    kOfxStandardColourOverlayText
} OfxStandardColour;

typedef enum OfxDrawLineStipplePattern {
    kOfxDrawLineStipplePatternSolid,
    kOfxDrawLineStipplePatternDot,
    kOfxDrawLineStipplePatternDash,
    kOfxDrawLineStipplePatternAltDash,
    kOfxDrawLineStipplePatternDotDash
} OfxDrawLineStipplePattern;

typedef enum OfxDrawPrimitive {
    kOfxDrawPrimitiveLines,
    kOfxDrawPrimitiveLineStrip,
    kOfxDrawPrimitiveLineLoop,
    kOfxDrawPrimitiveRectangle,
    kOfxDrawPrimitivePolygon,
    kOfxDrawPrimitiveEllipse
} OfxDrawPrimitive;

typedef enum OfxDrawTextAlignment {
    kOfxDrawTextAlignmentLeft = 0x0001,
    kOfxDrawTextAlignmentRight = 0x0002,
    kOfxDrawTextAlignmentTop = 0x0004,
    kOfxDrawTextAlignmentBottom = 0x0008,
    kOfxDrawTextAlignmentBaseline = 0x0010,
    kOfxDrawTextAlignmentCenterH = kOfxDrawTextAlignmentLeft | kOfxDrawTextAlignmentRight,
    kOfxDrawTextAlignmentCenterV = kOfxDrawTextAlignmentTop | kOfxDrawTextAlignmentBaseline
} OfxDrawTextAlignment;

#define kOfxDrawSuite "OfxDrawSuite"
typedef struct OfxDrawSuiteV1 {
    OfxStatus (*getColour)(OfxDrawContextHandle context, OfxStandardColour std_colour, OfxRGBAColourF* colour);
    OfxStatus (*setColour)(OfxDrawContextHandle context, const OfxRGBAColourF* colour);
    OfxStatus (*setLineWidth)(OfxDrawContextHandle context, float width);
    OfxStatus (*setLineStipple)(OfxDrawContextHandle context, OfxDrawLineStipplePattern pattern);
    OfxStatus (*draw)(OfxDrawContextHandle context, OfxDrawPrimitive primitive, const OfxPointD* points,
                      int point_count);
    OfxStatus (*drawText)(OfxDrawContextHandle context, const char* text, const OfxPointD* pos, int alignment);
} OfxDrawSuiteV1;

#ifdef __cplusplus
}
#endif

#endif
