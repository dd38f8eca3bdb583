// The layouts of the C API: plug-ins and hosts that other compilers built read the same memory.
#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <type_traits>

#include "openfx/openfx.h"

extern "C" const size_t kSizesInC[10];

namespace {

// A suite is nothing but function pointers, in the published order.
template <class Suite>
constexpr bool isSuite(std::initializer_list<std::size_t> offsets) {
    std::size_t expected = 0;
    for (const std::size_t offset : offsets) {
        if (offset != expected) return false;
        expected += sizeof(void*);
    }
    return sizeof(Suite) == expected && std::is_standard_layout_v<Suite>;
}

#define AT(member) offsetof(Suite, member)

struct PropertySuite {
    using Suite = OfxPropertySuiteV1;
    static_assert(isSuite<Suite>({AT(propSetPointer), AT(propSetString), AT(propSetDouble), AT(propSetInt),
                                  AT(propSetPointerN), AT(propSetStringN), AT(propSetDoubleN), AT(propSetIntN),
                                  AT(propGetPointer), AT(propGetString), AT(propGetDouble), AT(propGetInt),
                                  AT(propGetPointerN), AT(propGetStringN), AT(propGetDoubleN), AT(propGetIntN),
                                  AT(propReset), AT(propGetDimension)}));
};
struct ParameterSuite {
    using Suite = OfxParameterSuiteV1;
    static_assert(isSuite<Suite>({AT(paramDefine), AT(paramGetHandle), AT(paramSetGetPropertySet),
                                  AT(paramGetPropertySet), AT(paramGetValue), AT(paramGetValueAtTime),
                                  AT(paramGetDerivative), AT(paramGetIntegral), AT(paramSetValue),
                                  AT(paramSetValueAtTime), AT(paramGetNumKeys), AT(paramGetKeyTime),
                                  AT(paramGetKeyIndex), AT(paramDeleteKey), AT(paramDeleteAllKeys), AT(paramCopy),
                                  AT(paramEditBegin), AT(paramEditEnd)}));
};
struct ParametricSuite {
    using Suite = OfxParametricParameterSuiteV1;
    static_assert(isSuite<Suite>({AT(parametricParamGetValue), AT(parametricParamGetNControlPoints),
                                  AT(parametricParamGetNthControlPoint), AT(parametricParamSetNthControlPoint),
                                  AT(parametricParamAddControlPoint), AT(parametricParamDeleteControlPoint),
                                  AT(parametricParamDeleteAllControlPoints)}));
};
struct ImageEffectSuite {
    using Suite = OfxImageEffectSuiteV1;
    static_assert(isSuite<Suite>({AT(getPropertySet), AT(getParamSet), AT(clipDefine), AT(clipGetHandle),
                                  AT(clipGetPropertySet), AT(clipGetImage), AT(clipReleaseImage),
                                  AT(clipGetRegionOfDefinition), AT(abort), AT(imageMemoryAlloc), AT(imageMemoryFree),
                                  AT(imageMemoryLock), AT(imageMemoryUnlock)}));
};
struct MultiThreadSuite {
    using Suite = OfxMultiThreadSuiteV1;
    static_assert(isSuite<Suite>({AT(multiThread), AT(multiThreadNumCPUs), AT(multiThreadIndex),
                                  AT(multiThreadIsSpawnedThread), AT(mutexCreate), AT(mutexDestroy), AT(mutexLock),
                                  AT(mutexUnLock), AT(mutexTryLock)}));
};
struct MessageSuite {
    using Suite = OfxMessageSuiteV2;
    static_assert(isSuite<Suite>({AT(message), AT(setPersistentMessage), AT(clearPersistentMessage)}));
};
struct ProgressSuite {
    using Suite = OfxProgressSuiteV1;
    static_assert(isSuite<Suite>({AT(progressStart), AT(progressUpdate), AT(progressEnd)}));
};
struct TimeLineSuite {
    using Suite = OfxTimeLineSuiteV1;
    static_assert(isSuite<Suite>({AT(getTime), AT(gotoTime), AT(getTimeBounds)}));
};
struct MemorySuite {
    using Suite = OfxMemorySuiteV1;
    static_assert(isSuite<Suite>({AT(memoryAlloc), AT(memoryFree)}));
};
struct InteractSuite {
    using Suite = OfxInteractSuiteV1;
    static_assert(isSuite<Suite>({AT(interactSwapBuffers), AT(interactRedraw), AT(interactGetPropertySet)}));
};

// The records that are not all pointers, on machines of 64 bits.
static_assert(sizeof(OfxHost) == 16 && offsetof(OfxHost, fetchSuite) == 8);
static_assert(sizeof(OfxPlugin) == 48);
static_assert(offsetof(OfxPlugin, apiVersion) == 8 && offsetof(OfxPlugin, pluginIdentifier) == 16);
static_assert(offsetof(OfxPlugin, pluginVersionMajor) == 24 && offsetof(OfxPlugin, pluginVersionMinor) == 28);
static_assert(offsetof(OfxPlugin, setHost) == 32 && offsetof(OfxPlugin, mainEntry) == 40);
static_assert(sizeof(OfxRectI) == 16 && offsetof(OfxRectI, y1) == 4 && offsetof(OfxRectI, x2) == 8);
static_assert(sizeof(OfxRectD) == 32 && offsetof(OfxRectD, y1) == 8 && offsetof(OfxRectD, x2) == 16);
static_assert(sizeof(OfxPointD) == 16 && sizeof(OfxPointI) == 8 && sizeof(OfxRangeD) == 16 && sizeof(OfxRangeI) == 8);
static_assert(sizeof(OfxBytes) == 16 && offsetof(OfxBytes, length) == 8);
static_assert(sizeof(OfxStatus) == 4 && std::is_same_v<OfxTime, double>);

TEST(OpenFX, RecordsAreTheSameInCAndInCpp) {
    const std::size_t inCpp[] = {sizeof(OfxHost),
                                 sizeof(OfxPlugin),
                                 sizeof(OfxPropertySuiteV1),
                                 sizeof(OfxParameterSuiteV1),
                                 sizeof(OfxParametricParameterSuiteV1),
                                 sizeof(OfxImageEffectSuiteV1),
                                 sizeof(OfxMultiThreadSuiteV1),
                                 sizeof(OfxBytes),
                                 sizeof(OfxRectI),
                                 sizeof(OfxRectD)};
    for (std::size_t i = 0; i < std::size(inCpp); ++i) EXPECT_EQ(kSizesInC[i], inCpp[i]) << i;
}

// A few whose values do not follow from their names.
TEST(OpenFX, OddValuesAreThePublishedOnes) {
    EXPECT_STREQ(kOfxImagePreMultiplied, "OfxImageAlphaPremultiplied");
    EXPECT_STREQ(kOfxImageEffectPropSupportsMultipleClipDepths, "OfxImageEffectPropMultipleClipDepths");
    EXPECT_STREQ(kOfxImageEffectPropProjectPixelAspectRatio, "OfxImageEffectPropPixelAspectRatio");
    EXPECT_STREQ(kOfxHostNativeOriginBottomLeft, "kOfxImageEffectHostPropNativeOriginBottomLeft");
    EXPECT_STREQ(kOfxParamPropCustomInterpCallbackV1, "OfxParamPropCustomCallbackV1");
    EXPECT_STREQ(kOfxParamPropUseHostOverlayHandle, "kOfxParamPropUseHostOverlayHandle");
    EXPECT_STREQ(kOfxActionOpenGLContextDetached, "kOfxActionOpenGLContextDetached");
    EXPECT_EQ(kOfxStatReplyDefault, 14);
    EXPECT_EQ(kOfxStatErrImageFormat, 1000);
    EXPECT_EQ(kOfxFlagInfiniteMin, -2147483648LL);
}

} // namespace
