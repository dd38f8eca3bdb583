// Hosts that lack suites, know fewer properties, give no images or no memory, or fail at what they are asked.
#include <algorithm>
#include <atomic>

#include "tests/support.h"

namespace {

using namespace test;

INSTANTIATE_TEST_SUITE_P(Suites, EveryEffect, testing::ValuesIn(builtEffects()), effectName);

// ---- missing suites

constexpr const char* kOptionalSuites[] = {
    kOfxMemorySuite,   kOfxMultiThreadSuite,        kOfxMessageSuite, kOfxProgressSuite, kOfxTimeLineSuite,
    kOfxInteractSuite, kOfxParametricParameterSuite};
constexpr const char* kNeededSuites[] = {kOfxImageEffectSuite, kOfxPropertySuite, kOfxParameterSuite};

TEST_P(EveryEffect, DoesWithoutOptionalSuites) {
    const auto expected = painted();
    for (const char* missing : kOptionalSuites) {
        EXPECT_TRUE(samePixels(*painted(withSuite(missing, nullptr)), *expected)) << missing;
    }
    host::Options options;
    options.suiteFilter = [](const std::string& name, int, const void* ours) {
        return std::ranges::count(kNeededSuites, name) == 1 ? ours : nullptr;
    };
    EXPECT_TRUE(samePixels(*painted(options), *expected));
}

TEST_P(EveryEffect, RefusesToLoadWithoutTheNeededSuites) {
    for (const char* missing : kNeededSuites) {
        Session session(withSuite(missing, nullptr));
        OfxPlugin& plugin = session.plugin(GetParam()).record();
        plugin.setHost(session.host.record());
        EXPECT_EQ(plugin.mainEntry(kOfxActionLoad, nullptr, nullptr, nullptr), kOfxStatErrMissingHostFeature)
            << missing;
    }
    EXPECT_FALSE(samePixels(*painted(), *blank(kBytes, kBounds))) << "and loads again when they are back";
}

TEST_P(EveryEffect, AsksForNothingThatSomeHostsBreakOn) {
    OfxPropertySuiteV1 suite = host::kPropertySuite; // these are missing or panic
    suite.propReset = nullptr;
    suite.propGetDimension = nullptr;
    suite.propGetStringN = nullptr;
    suite.propGetPointerN = nullptr;
    suite.propGetIntN = nullptr;
    std::atomic<int> newer = 0;
    host::Options options = oneThread();
    options.suiteFilter = [&](const std::string& name, int version, const void* ours) -> const void* {
        newer += version != 1;
        return name == kOfxPropertySuite ? &suite : ours;
    };
    EXPECT_TRUE(samePixels(*painted(options), *painted()));
    EXPECT_EQ(newer, 0) << "version 2 of the message suite ends some hosts";
}

// ---- hosts that know less than ours

// Every property that not all hosts tell reads as absent, with the status that the test wants.
struct Forgetful {
    static inline OfxStatus status = kOfxStatErrUnknown;
    static inline const OfxPropertySuiteV1& ours = host::kPropertySuite;

    static bool knows(const char* name) {
        for (const char* standard :
             {kOfxPropTime, kOfxImageEffectPropRenderWindow, kOfxPropInstanceData, kOfxImagePropBounds,
              kOfxImagePropData, kOfxImagePropRowBytes, kOfxImageEffectPropPixelDepth, kOfxImageEffectPropComponents,
              kOfxPropType, kOfxPropName})
            if (name == std::string(standard)) return true;
        return false;
    }
    static OfxStatus getInt(OfxPropertySetHandle set, const char* name, int index, int* value) {
        return knows(name) ? ours.propGetInt(set, name, index, value) : status;
    }
    static OfxStatus getDouble(OfxPropertySetHandle set, const char* name, int index, double* value) {
        return knows(name) ? ours.propGetDouble(set, name, index, value) : status;
    }
    static OfxStatus getString(OfxPropertySetHandle set, const char* name, int index, char** value) {
        return knows(name) ? ours.propGetString(set, name, index, value) : status;
    }
    static OfxStatus getPointer(OfxPropertySetHandle set, const char* name, int index, void** value) {
        return knows(name) ? ours.propGetPointer(set, name, index, value) : status;
    }
};

TEST_P(EveryEffect, TakesAnyStatusOfAnOptionalPropertyForItsAbsence) {
    OfxPropertySuiteV1 suite = host::kPropertySuite;
    suite.propGetInt = Forgetful::getInt;
    suite.propGetDouble = Forgetful::getDouble;
    suite.propGetString = Forgetful::getString;
    suite.propGetPointer = Forgetful::getPointer;
    const auto expected = painted();
    for (const OfxStatus status : {kOfxStatErrUnknown, kOfxStatErrBadHandle, kOfxStatErrValue, kOfxStatErrBadIndex,
                                   kOfxStatFailed, kOfxStatReplyDefault}) {
        Forgetful::status = status;
        EXPECT_TRUE(samePixels(*painted(withSuite(kOfxPropertySuite, &suite)), *expected)) << status;
    }
}

// ---- images, counted on their way out and back

constexpr OfxStatus kOKWithoutImage = -1; // what some hosts answer

struct Images {
    static inline std::atomic<int> fetched = 0, released = 0;
    static inline OfxStatus status = kOfxStatOK; // of input clips
    static inline OfxStatus outputStatus = kOfxStatOK;

    static OfxStatus get(OfxImageClipHandle clip, OfxTime time, const OfxRectD* region, OfxPropertySetHandle* image) {
        const bool isOutput = host::Clip::from(clip)->isOutput();
        *image = nullptr;
        const OfxStatus wanted = isOutput ? outputStatus : status;
        if (wanted != kOfxStatOK) return wanted == kOKWithoutImage ? kOfxStatOK : wanted;
        const OfxStatus answer = host::kImageEffectSuite.clipGetImage(clip, time, region, image);
        fetched += answer == kOfxStatOK;
        return answer;
    }
    static OfxStatus release(OfxPropertySetHandle image) {
        ++released;
        return host::kImageEffectSuite.clipReleaseImage(image);
    }
    static OfxImageEffectSuiteV1 suite() {
        OfxImageEffectSuiteV1 counting = host::kImageEffectSuite;
        counting.clipGetImage = get;
        counting.clipReleaseImage = release;
        fetched = released = 0;
        status = outputStatus = kOfxStatOK;
        return counting;
    }
    static void expectAllBack(const char* path) {
        EXPECT_EQ(fetched, released) << path;
        fetched = released = 0;
    }
};

TEST_P(EveryEffect, ReleasesEveryImageOnceOnEveryPath) {
    const OfxImageEffectSuiteV1 suite = Images::suite();
    host::Options options = withSuite(kOfxImageEffectSuite, &suite);
    bool abort = false;
    options.abort = [&abort] { return abort; };
    Session session(options);
    for (const Depth depth : {Depth::Byte, Depth::Short, Depth::Half, Depth::Float})
        for (const Components components : {Components::RGBA, Components::RGB, Components::Alpha}) {
            const Format format{depth, components};
            const auto instance = session.make(GetParam());
            for (const auto& clip : instance->clips())
                if (!clip->isOutput()) clip->connect(blank(format, kBounds));
            EXPECT_EQ(render(*instance, blank(format, kBounds), kBounds), kOfxStatOK);
            EXPECT_GT(Images::fetched, 0) << "some hosts end at a render that does not fetch its output";
            Images::expectAllBack("rendered");
        }
    const auto instance = ready(session);
    const auto image = blank(kBytes, kBounds);
    render(*instance, image, {5, 5, 5, 9});
    Images::expectAllBack("an empty window");
    abort = true;
    render(*instance, image, kBounds);
    Images::expectAllBack("aborted");
    abort = false;
    Images::outputStatus = kOfxStatFailed;
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    Images::expectAllBack("no output");
    Images::outputStatus = kOfxStatOK;
    if (!instance->findClip("Source")) return;
    Images::status = kOfxStatFailed;
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    Images::expectAllBack("no source");
    Images::status = kOfxStatOK;
    instance->clip("Source").connect(picture(kFloats, kBounds));
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    Images::expectAllBack("a source of another depth");
}

TEST_P(EveryEffect, FailsWhereAnImageCannotBeHad) {
    OfxImageEffectSuiteV1 suite = Images::suite();
    Session session(withSuite(kOfxImageEffectSuite, &suite));
    const auto instance = ready(session);
    const auto image = blank(kBytes, kBounds);
    for (const OfxStatus status : {kOfxStatFailed, kOfxStatErrBadHandle, kOfxStatReplyDefault, kOKWithoutImage}) {
        Images::outputStatus = status;
        EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed) << status;
    }
    Images::outputStatus = kOfxStatErrMemory;
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatErrMemory);
    Images::outputStatus = kOfxStatOK;
    if (instance->findClip("Source")) {
        Images::status = kOfxStatFailed;
        EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
        Images::status = kOfxStatOK;
        instance->clip("Source").disconnect();
        EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    }
    EXPECT_TRUE(untouchedOutside(*image, {}));
}

// ---- parameters that cannot be read

struct Parameters {
    static inline OfxStatus status = kOfxStatOK;
    static OfxStatus get(OfxParamHandle, OfxTime, ...) { return status; }
};

TEST_P(EveryEffect, FailsWhereParametersCannotBeRead) {
    OfxParameterSuiteV1 suite = host::kParameterSuite;
    suite.paramGetValueAtTime = Parameters::get;
    const OfxImageEffectSuiteV1 images = Images::suite();
    host::Options options;
    options.suiteFilter = [&](const std::string& name, int, const void* ours) -> const void* {
        return name == kOfxParameterSuite ? &suite : name == kOfxImageEffectSuite ? &images : ours;
    };
    Session session(options);
    const auto instance = ready(session);
    for (const OfxStatus status : {kOfxStatFailed, kOfxStatErrMissingHostFeature, kOfxStatErrMemory}) {
        Parameters::status = status;
        const auto image = blank(kBytes, kBounds);
        EXPECT_EQ(render(*instance, image, kBounds), status);
        EXPECT_TRUE(untouchedOutside(*image, {}));
        Images::expectAllBack("unreadable parameters");
    }
}

// ---- handles that some hosts do not have

struct Handles {
    static inline OfxStatus status = kOfxStatOK; // and nothing handed out
    static OfxStatus clip(OfxImageEffectHandle, const char*, OfxImageClipHandle*, OfxPropertySetHandle*) {
        return status;
    }
    static OfxStatus parameter(OfxParamSetHandle, const char*, OfxParamHandle*, OfxPropertySetHandle*) {
        return status;
    }
};

TEST_P(EveryEffect, IsNotCreatedWithoutItsClipsAndParameters) {
    OfxImageEffectSuiteV1 clips = host::kImageEffectSuite;
    clips.clipGetHandle = Handles::clip;
    OfxParameterSuiteV1 parameters = host::kParameterSuite;
    parameters.paramGetHandle = Handles::parameter;
    for (const auto& [name, suite] : {std::pair<const char*, const void*>{kOfxImageEffectSuite, &clips},
                                      std::pair<const char*, const void*>{kOfxParameterSuite, &parameters}})
        for (const OfxStatus status : {kOfxStatOK, kOfxStatErrBadHandle, kOfxStatErrUnknown}) {
            Handles::status = status;
            Session session(withSuite(name, suite));
            host::Plugin& plugin = session.plugin(GetParam());
            Instance instance(plugin, plugin.describeInContext(plugin.contexts().front()));
            instance.create();
            EXPECT_FALSE(instance.isCreated()) << name << " " << status;
            EXPECT_NE(render(instance, blank(kBytes, kBounds), kBounds), kOfxStatOK);
        }
}

// ---- memory that ends

struct NoMemory {
    static OfxStatus alloc(void*, size_t, void**) { return kOfxStatErrMemory; }
    static OfxStatus free(void*) { return kOfxStatErrBadHandle; }
};

// Effects that need temporary pictures write nothing at all, the others do not ask for memory.
TEST_P(EveryEffect, RendersWholePicturesOrNoneWhereTheHostHasNoMemoryToGive) {
    const OfxMemorySuiteV1 suite = {NoMemory::alloc, NoMemory::free};
    const auto image = painted(withSuite(kOfxMemorySuite, &suite));
    if (!untouchedOutside(*image, {0, 0, 0, 0})) {
        EXPECT_TRUE(samePixels(*image, *painted()));
    }
}

} // namespace
