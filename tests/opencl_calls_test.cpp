// What effects ask of OpenCL: arguments, work sizes, life cycles and failures, against a library that records calls.
#include <dlfcn.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

#include "host/opencl.h"
#include "opencl/temporary_image.h"
#include "opencl/work_sizes.h"
#include "tests/fake_opencl.h"
#include "tests/transition_support.h"

namespace test {
namespace {

fake::Library& library() {
    static fake::Library& found = *[] {
        void* handle = dlopen("libOpenCL.so.1", RTLD_NOW); // found first through the search path that the test is given
        auto* get = handle ? reinterpret_cast<fake::Library* (*)()>(dlsym(handle, "fakeLibrary")) : nullptr;
        if (!get)
            throw std::runtime_error("run this test through ctest: the library that records calls is not in place");
        return get();
    }();
    return found;
}

class OpenCLCalls : public testing::Test {
protected:
    void SetUp() override {
        library() = {};
        device_ = std::make_shared<host::OpenCLDevice>();
    }
    void TearDown() override {
        device_.reset();
        EXPECT_EQ(library().kernels, 0);
        EXPECT_EQ(library().programs, 0);
        EXPECT_EQ(library().images, 0);
    }
    host::Options options() const {
        host::Options options = oneThread();
        options.openCL = device_;
        return options;
    }

private:
    std::shared_ptr<host::OpenCLDevice> device_;
};

OfxStatus render(Instance& instance, OfxRectI bounds, Format format = kBytes) {
    host::RenderRequest request;
    request.output = blank(format, bounds);
    request.openCL = true;
    return instance.render(request);
}

std::vector<fake::Call> callsOf(const std::string& name) {
    std::vector<fake::Call> found;
    for (const fake::Call& call : library().calls)
        if (call.name == name) found.push_back(call);
    return found;
}

template <class T>
std::vector<T> valueOf(const fake::Call& call) {
    std::vector<T> values(call.value.size() / sizeof(T));
    std::memcpy(values.data(), call.value.data(), call.value.size());
    return values;
}

std::vector<std::size_t> sizes(const std::vector<fake::Call>& arguments) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        EXPECT_EQ(arguments[i].numbers[0], i);
        result.push_back(arguments[i].numbers[1]);
    }
    return result;
}

constexpr OfxRectI kHD{0, 0, 1920, 1080};

TEST_F(OpenCLCalls, CheckerboardSetsItsArgumentsInOrder) {
    Session session(options());
    const auto instance = session.make(kCheckerboard, {{"EdgeBlendingHorizontal", {0.5}},
                                                       {"GridOffsetX", {0.25}},
                                                       {"GridOffsetY", {0.5}},
                                                       {"Color1", {1, 0.5, 0, 0.5}}});
    ASSERT_EQ(render(*instance, kHD, kFloats), kOfxStatOK);
    const auto arguments = callsOf("clSetKernelArg");
    ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 8, 8, 8, 8, 16, 16}));
    using Floats = std::vector<float>;
    EXPECT_EQ(valueOf<int>(arguments[1]), (std::vector{1920, 1080}));
    EXPECT_EQ(valueOf<float>(arguments[2]), (Floats{192, 192}));
    EXPECT_EQ(valueOf<float>(arguments[3]), (Floats{48, 48}));
    EXPECT_EQ(valueOf<float>(arguments[4]), (Floats{0.5f / 48, 0.5f / 48}));
    EXPECT_EQ(valueOf<float>(arguments[5]), (Floats{480, 540}));
    EXPECT_EQ(valueOf<float>(arguments[6]), (Floats{1, 1, 1, 1}));
    EXPECT_EQ(valueOf<float>(arguments[7]), (Floats{0.5f, 0.25f, 0, 0.5f}));
}

TEST_F(OpenCLCalls, BrightnessAndContrastSetsItsArgumentsInOrder) {
    Session session(options());
    const auto instance =
        session.make(kBrightness, {{"Brightness", {0.25}}, {"Contrast", {-0.5}}, {"ContrastCenter", {0.75}}});
    instance->clip("Source").connect(picture(kBytes, kHD));
    ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
    const auto arguments = callsOf("clSetKernelArg");
    ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 4, 4, 16}));
    EXPECT_NE(arguments[0].value, arguments[1].value); // source and destination
    EXPECT_EQ(valueOf<int>(arguments[2]), std::vector{1920});
    EXPECT_EQ(valueOf<int>(arguments[3]), std::vector{1080});
    EXPECT_EQ(valueOf<float>(arguments[4]), (std::vector<float>{0.25f, -0.5f, 0.75f, 0}));
}

TEST_F(OpenCLCalls, ColorCorrectorSetsItsArgumentsInOrder) {
    Session session(options());
    const auto instance = session.make(kCorrector, {{"Low", {10, 0.25}},
                                                    {"Mid", {20, 0.5}},
                                                    {"High", {30, 0.75}},
                                                    {"Gamma", {0.5}},
                                                    {"Gain", {1.5}},
                                                    {"Offset", {51}}});
    instance->clip("Source").connect(picture(kBytes, kHD));
    ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
    const auto arguments = callsOf("clSetKernelArg");
    ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 64, 4, 4, 4, 4, 4, 4}));
    EXPECT_NE(arguments[0].value, arguments[1].value); // source and destination
    const auto block = valueOf<float>(arguments[2]);
    // Gamma 0.5 gives the exponent 2; the rest of the curve follows from that.
    const double t = std::pow(0.5, -0.9418051973077521) * 0.03818376618407356, s = std::pow(0.5, 1.8836103946155043);
    const double q = std::sqrt(s * t), a = (t - q) / (q - 1);
    const double expected[] = {10, 0.25, 20, 0.5, 30, 0.75, 0.2, 0, 1.5, 1, 2, t, a, s, 1 / (a + 1), 0};
    for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(block[i], expected[i], 1e-6) << i;
    const int integers[] = {1, 0, 1, 5, 1920, 1080}; // tone, saturation, wheels, all three as bits, the size
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(valueOf<int>(arguments[i + 3]), std::vector{integers[i]}) << i;
}

TEST_F(OpenCLCalls, LevelsHaveAKernelPerDepthAndChannel) {
    Session session(options());
    const auto instance = session.make(kLevels, {{"InputStart", {0.25}}, {"OutputStart", {1}}, {"OutputEnd", {0.5}}});
    EXPECT_EQ(callsOf("clCreateKernel").size(), 10u);
    instance->clip("Source").connect(picture(kBytes, kHD));
    ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
    const auto arguments = callsOf("clSetKernelArg");
    ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 4, 4, 16, 32}));
    EXPECT_EQ(valueOf<int>(arguments[2]), std::vector{1920});
    EXPECT_EQ(valueOf<int>(arguments[3]), std::vector{1080});
    EXPECT_EQ(valueOf<float>(arguments[4]), (std::vector<float>{0.25f, 1 / 0.75f, 1, -0.5f}));
}

// The calls of one render between two pictures; the first three arguments are the images.
std::vector<fake::Call> argumentsOf(Session& session, const std::string& effect, const Settings& settings) {
    Between pictures(session, effect, kFloats, kHD, 2);
    pictures.at(0.25, settings, true);
    auto arguments = callsOf("clSetKernelArg");
    EXPECT_NE(arguments.at(0).value, arguments.at(1).value);
    EXPECT_NE(arguments.at(1).value, arguments.at(2).value);
    return arguments;
}

TEST_F(OpenCLCalls, DissolveSetsItsArgumentsInOrder) {
    const Settings settings = {{"ColorBleedSpeedRed", {0.125}},
                               {"ColorBleedSpeedAlpha", {0.5}},
                               {"ColorMorphSpeedGreen", {0.25}},
                               {"FadeThroughColor", {1, 0.5, 0.25, 0.75}}};
    const std::map<int, std::vector<float>> blocks = {
        {0, {0, 0, 0, 0}}, {3, {0.125f, 0, 0, 0.5f}}, {4, {0, 0.25f, 0, 0}}, {8, {1, 0.5f, 0.25f, 0.75f}}};
    for (const auto& [mode, block] : blocks) {
        library() = {};
        Session session(options());
        Settings all = settings;
        all["Type"] = {mode * 1.0};
        const auto arguments = argumentsOf(session, kDissolve, all);
        ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 8, 4, 4, 4, 4, 4, 4, 16}));
        const std::vector<int> numbers = {1920, 1080, mode, 0};
        for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(valueOf<int>(arguments[3 + i]), std::vector{numbers[i]});
        EXPECT_EQ(valueOf<float>(arguments[7]), std::vector{0.25f});
        EXPECT_EQ(valueOf<float>(arguments[8]), std::vector{1.0f});
        EXPECT_EQ(valueOf<float>(arguments[9]), block) << mode;
    }
}

TEST_F(OpenCLCalls, WipesSetTheirArgumentsInOrder) {
    {
        Session session(options());
        const auto arguments = argumentsOf(session, kLinearWipe, {{"Angle", {90}}, {"Feather", {0.5}}});
        ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 8, 4, 4, 32}));
        EXPECT_EQ(valueOf<int>(arguments[3]), std::vector{1920});
        // Edge, aspect, steps, offset, 1 / length, half of the feather, 1 / its width.
        EXPECT_EQ(valueOf<float>(arguments[5]), (std::vector<float>{0.1875f, 2, 0, -0.5f, 0, 1 / 539.5f, 0.125f, 4}));
    }
    library() = {};
    Session session(options());
    const auto arguments = argumentsOf(session, kClockWipe, {{"Direction", {1}}, {"FeatherAngle", {45}}});
    ASSERT_EQ(sizes(arguments), (std::vector<std::size_t>{8, 8, 8, 4, 4, 4, 4, 8, 4}));
    EXPECT_EQ(valueOf<int>(arguments[5]), std::vector{1});
    EXPECT_EQ(valueOf<float>(arguments[6]), std::vector{0.25f});
    EXPECT_EQ(valueOf<float>(arguments[7]), (std::vector<float>{1, 0.5f}));
    EXPECT_EQ(valueOf<float>(arguments[8]), std::vector{45.0f});
}

// Lines in both directions first, each without a local size; then all pixels. Whatever fails, no image is left.
TEST_F(OpenCLCalls, FlashBlursInPassesAndKeepsNoImages) {
    Session session(options());
    const auto instance =
        session.make(kFlash, {{"Transition", {0.25}}, {"HorizontalDiffusion", {0.5}}, {"VerticalDiffusion", {0.5}}});
    for (const char* clip : {"SourceFrom", "SourceTo"}) instance->clip(clip).connect(picture(kBytes, kHD));
    library().calls.clear();
    ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
    EXPECT_EQ(callsOf("clCreateImage2D").size(), 3u + 4u); // the host's three, and four between the passes
    const auto passes = callsOf("clEnqueueNDRangeKernel");
    ASSERT_EQ(passes.size(), 3u);
    EXPECT_EQ(passes[0].numbers, (std::vector<std::size_t>{1, 2 * 1920}));
    EXPECT_EQ(passes[1].numbers, (std::vector<std::size_t>{1, 2 * 1080}));
    EXPECT_EQ(passes[2].numbers[0], 2u);
    const int lent = library().images; // the host's own
    for (const char* failing : {"clGetImageInfo", "clCreateImage2D", "clSetKernelArg", "clEnqueueNDRangeKernel"})
        for (int after = 0; after < 3; ++after) {
            library().failing = failing, library().failAfter = after;
            EXPECT_EQ(render(*instance, kHD), kOfxStatFailed) << failing;
            EXPECT_EQ(library().images, lent) << failing;
        }
    library().failing.clear();
}

TEST_F(OpenCLCalls, ChromaKeyerSetsItsArgumentsInOrder) {
    Session session(options());
    const auto instance = session.make(kKeyer, {{"color", {0, 1, 0}}, {"LowThreshold", {0.25}}, {"ShowMaskOnly", {1}}});
    instance->clip("Source").connect(picture(kBytes, kHD));
    ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
    const auto hard = callsOf("clSetKernelArg");
    ASSERT_EQ(sizes(hard), (std::vector<std::size_t>{8, 8, 4, 4, 4, 16, 16}));
    EXPECT_EQ(valueOf<int>(hard[4]), std::vector{1});
    EXPECT_EQ(valueOf<float>(hard[5]), (std::vector<float>{0, 1, 0, 0.25f}));
    EXPECT_EQ(valueOf<float>(hard[6]), (std::vector<float>{1, 1 / 3.0f, 1, 0.5f}));

    library().calls.clear();
    set(*instance, {{"BlurAmount", {0.1}}});
    ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
    std::vector<std::size_t> all;
    for (const fake::Call& call : callsOf("clSetKernelArg")) all.push_back(call.numbers[1]);
    EXPECT_EQ(all, (std::vector<std::size_t>{8, 8, 8, 32, 32, 32, 32, 32, 4,  4, 16, 16, // columns
                                             8, 8, 8, 8,  32, 32, 32, 32, 32, 4, 4,      // rows
                                             8, 8, 8, 8,  4,  4,  16}));                 // all pixels
    const auto passes = callsOf("clEnqueueNDRangeKernel");
    ASSERT_EQ(passes.size(), 3u);
    EXPECT_EQ(passes[0].numbers, (std::vector<std::size_t>{1, 2 * 1920}));
    EXPECT_EQ(passes[1].numbers, (std::vector<std::size_t>{1, 2 * 1080}));
    const int lent = library().images;
    for (const char* failing : {"clCreateImage2D", "clSetKernelArg", "clEnqueueNDRangeKernel"})
        for (const int after : {2, 5, 12, 25}) {
            library().failing = failing, library().failAfter = after;
            if (render(*instance, kHD) == kOfxStatOK) continue; // not so many calls
            EXPECT_EQ(library().images, lent) << failing;
        }
    library().failing.clear();
}

TEST_F(OpenCLCalls, WorkSizesFollowTheDeviceAndTheKernel) {
    struct Case {
        std::size_t group, items0, items1, kernel, compiled0, compiled1, multiple;
        std::vector<std::size_t> enqueued; // dimensions, global, local
    };
    const std::vector<Case> cases = {
        {256, 1024, 1024, 0, 0, 0, 0, {2, 1920, 1088, 16, 16}},
        {4096, 4096, 4096, 4096, 0, 0, 8, {2, 1920, 1088, 64, 64}},
        {1024, 1024, 1024, 128, 0, 0, 32, {2, 1920, 1080, 16, 8}}, // the kernel allows less than the device
        {1000, 1024, 1024, 0, 0, 0, 4, {2, 1920, 1085, 32, 31}},   // 32 x 16 fits, and grows as far as it may
        {1024, 1024, 1024, 0, 8, 4, 32, {2, 1920, 1080, 8, 4}},    // fixed by the kernel
        {256, 1024, 4, 0, 0, 0, 0, {2, 1920, 1080, 8, 4}},         // a narrow device
        {256, 0, 0, 0, 0, 0, 0, {2, 1920, 1080}},                  // unknown: no local size, nothing rounded
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        library() = {};
        library().groupLimit = c.group, library().itemSizes[0] = c.items0, library().itemSizes[1] = c.items1;
        library().kernelLimit = c.kernel, library().multiple = c.multiple;
        library().compiled[0] = c.compiled0, library().compiled[1] = c.compiled1, library().compiled[2] = 1;
        if (c.compiled0 == 0) library().compiled[2] = 0;
        Session session(options());
        const auto instance = session.make(kCheckerboard);
        ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
        EXPECT_EQ(callsOf("clEnqueueNDRangeKernel").front().numbers, c.enqueued) << i;
        // The choice is kept.
        const std::size_t asked = callsOf("clGetKernelWorkGroupInfo").size();
        ASSERT_EQ(render(*instance, kHD), kOfxStatOK);
        EXPECT_EQ(callsOf("clGetKernelWorkGroupInfo").size(), asked);
        EXPECT_EQ(callsOf("clEnqueueNDRangeKernel").back().numbers, c.enqueued) << i;
    }
}

TEST_F(OpenCLCalls, EveryFailingCallFailsTheRenderAndNothingFallsBack) {
    for (const auto& [failing, after] : std::vector<std::pair<const char*, int>>{
             {"clSetKernelArg", 0}, {"clSetKernelArg", 2}, {"clSetKernelArg", 7}, {"clEnqueueNDRangeKernel", 0}}) {
        Session session(options());
        const auto instance = session.make(kCheckerboard);
        library().calls.clear();
        library().failing = failing, library().failAfter = after;
        EXPECT_EQ(render(*instance, kHD), kOfxStatFailed) << failing;
        if (std::string(failing) == "clSetKernelArg") {
            EXPECT_EQ(callsOf("clSetKernelArg").size(), static_cast<std::size_t>(after + 1)); // the first failure stops
            EXPECT_TRUE(callsOf("clEnqueueNDRangeKernel").empty());
        }
        EXPECT_TRUE(callsOf("clEnqueueReadImage").empty());
        library().failing.clear();
        EXPECT_EQ(render(*instance, kHD), kOfxStatOK) << "after " << failing;
    }
}

TEST_F(OpenCLCalls, QueriesThatFailLeaveTheLocalSizeToTheDevice) {
    library().failing = "clGetCommandQueueInfo";
    Session session(options());
    ASSERT_EQ(render(*session.make(kCheckerboard), kHD), kOfxStatOK);
    EXPECT_EQ(callsOf("clEnqueueNDRangeKernel").front().numbers, (std::vector<std::size_t>{2, 1920, 1080}));
}

TEST_F(OpenCLCalls, ProgramsAreBuiltOnceAndReleasedAtUnloadKernelsFirst) {
    {
        Session session(options());
        session.plugin(kCheckerboard).load();
        EXPECT_EQ(callsOf("clCreateProgramWithSource").size(), 1u);
        const auto first = session.make(kCheckerboard), second = session.make(kCheckerboard);
        EXPECT_EQ(callsOf("clCreateProgramWithSource").size(), 1u);
        EXPECT_EQ(callsOf("clCreateKernel").size(), 1u);
        EXPECT_TRUE(callsOf("clReleaseKernel").empty());
    }
    ASSERT_EQ(callsOf("clReleaseProgram").size(), 1u);
    EXPECT_EQ(library().calls[library().calls.size() - 2].name, "clReleaseKernel");
    EXPECT_EQ(library().calls.back().name, "clReleaseProgram");
}

// A program suite of the test's own, which notes the flags and answers as told.
std::vector<int> flags;
bool leaveOut = false;
OfxStatus refusal = kOfxStatOK;
const OfxOpenCLProgramSuiteV1* hostsOwn = nullptr;

OfxStatus compileNoted(const char* source, int optional, void* program) {
    flags.push_back(optional);
    EXPECT_NE(std::strstr(source, "k273207df0 ("), nullptr); // words with blanks between them
    EXPECT_EQ(std::strchr(source, '\n'), nullptr);
    if (refusal != kOfxStatOK) return refusal;
    return leaveOut && optional ? kOfxStatOK : hostsOwn->compileProgram(source, optional, program);
}
const OfxOpenCLProgramSuiteV1 kNoting = {compileNoted};

host::Options noting(host::Options options) {
    flags.clear();
    options.suiteFilter = [](const char* suite, int, const void* ours) -> const void* {
        if (std::string_view(suite) != kOfxOpenCLProgramSuite) return ours;
        hostsOwn = static_cast<const OfxOpenCLProgramSuiteV1*>(ours);
        return &kNoting;
    };
    return options;
}

TEST_F(OpenCLCalls, ALeftOutOptionalProgramIsBuiltByTheInstance) {
    leaveOut = true, refusal = kOfxStatOK;
    Session session(noting(options()));
    session.plugin(kCheckerboard).load();
    EXPECT_EQ(flags, std::vector{1});
    EXPECT_EQ(library().kernels, 0); // OK with a null program is no success
    const auto instance = session.make(kCheckerboard);
    EXPECT_EQ(flags, (std::vector{1, 0}));
    EXPECT_EQ(library().kernels, 1);
    EXPECT_EQ(render(*instance, kHD), kOfxStatOK);
}

TEST_F(OpenCLCalls, AFailedBuildLeavesTheCPUAndFailsTheDevice) {
    leaveOut = false, refusal = kOfxStatFailed;
    Session session(noting(options()));
    const auto instance = session.make(kCheckerboard);
    EXPECT_EQ(flags, (std::vector{1, 0}));
    EXPECT_EQ(render(*instance, kHD), kOfxStatFailed);
    EXPECT_EQ(test::render(*instance, blank(kBytes, {0, 0, 8, 8}), {0, 0, 8, 8}), kOfxStatOK);
    refusal = kOfxStatOK;
}

TEST_F(OpenCLCalls, AMissingKernelFailsTheRender) {
    library().failing = "clCreateKernel";
    Session session(options());
    EXPECT_EQ(render(*session.make(kCheckerboard), kHD), kOfxStatFailed);
}

TEST_F(OpenCLCalls, TheBuildLogReachesTheUser) {
    library().failing = "clBuildProgram";
    std::string said;
    host::Options told = options();
    told.onMessage = [&said](const char*, const char*, const char* text) {
        said += text;
        return kOfxStatOK;
    };
    Session session(told);
    session.plugin(kCheckerboard).load();
    EXPECT_EQ(said, "the build log");
}

TEST_F(OpenCLCalls, LoadingAgainBesideRendersKeepsTheTable) {
    Session session(options());
    const auto instance = session.make(kCheckerboard);
    std::atomic<bool> done = false;
    std::thread loader([&] {
        while (!done) session.plugin(kCheckerboard).action(kOfxActionLoad, nullptr, nullptr, nullptr);
    });
    for (int i = 0; i < 200; ++i) EXPECT_EQ(render(*instance, {0, 0, 16, 16}), kOfxStatOK);
    done = true;
    loader.join();
}

TEST_F(OpenCLCalls, ATableStartsAnewWithEveryLoad) {
    host::LoadedOpenCL api;
    ASSERT_TRUE(api.available());
    api.serialise = 1, api.deviceMaxWorkGroupSize = 7, api.enqueueCount = 3, api.preferredLocalSize[0] = 5;
    EXPECT_EQ(api.clFinish(nullptr), CL_SUCCESS); // under the lock
    api.load();
    EXPECT_EQ(api.initialised, 1u);
    EXPECT_EQ(api.serialise + api.enqueueCount + api.deviceMaxWorkGroupSize + api.preferredLocalSize[0], 0u);
    EXPECT_NE(api.entry.clFinish, nullptr);
}

TEST_F(OpenCLCalls, MissingEntriesAnswerAndAreNotCalled) {
    host::LoadedOpenCL api; // the recording library exports a part only
    EXPECT_EQ(api.entry.clGetGLContextInfoKHR, nullptr);
    EXPECT_EQ(api.clFlush(nullptr), -2);
    cl_int status = CL_SUCCESS;
    EXPECT_EQ(api.clCreateSampler(nullptr, CL_FALSE, CL_ADDRESS_CLAMP, CL_FILTER_NEAREST, &status), nullptr);
    OpenCLApi never;
    EXPECT_EQ(never.clFinish(nullptr), -2);
}

TEST_F(OpenCLCalls, WorkSizesOfOneDimensionAndPreferredOnes) {
    host::LoadedOpenCL api;
    library().groupLimit = 100, library().itemSizes[0] = 80, library().multiple = 32;
    OpenCL::WorkSizes line, square;
    std::size_t global[2] = {3840, 1080}, local[2] = {};
    EXPECT_EQ(OpenCL::chooseWorkSizes(api, nullptr, nullptr, line, 1, global, local), 40u);
    EXPECT_EQ(local[0], 96u); // 80, up to a multiple of 32
    EXPECT_EQ(global[0], 3840u);

    api.preferredLocalSize[0] = 10, api.preferredLocalSize[1] = 9;
    EXPECT_EQ(OpenCL::chooseWorkSizes(api, nullptr, nullptr, square, 2, global, local), 120u);
    EXPECT_EQ((std::array{local[0], local[1], global[0], global[1]}), (std::array<std::size_t, 4>{10, 9, 3840, 1080}));
    EXPECT_EQ(callsOf("clGetDeviceInfo").size(), 2u); // the device's limits are asked for once
}

TEST_F(OpenCLCalls, TemporaryImagesTakeTheFormatAndGoOnEveryPath) {
    host::LoadedOpenCL api;
    {
        const OpenCL::TemporaryImage image(api, nullptr, nullptr, 30, 20);
        EXPECT_NE(image.memory(), nullptr);
        EXPECT_EQ(callsOf("clCreateImage2D").back().numbers,
                  (std::vector<std::size_t>{CL_MEM_READ_WRITE, CL_BGRA, 30, 20}));
        EXPECT_EQ(library().images, 1);
    }
    EXPECT_EQ(library().images, 0);
    for (const char* failing : {"clGetImageInfo", "clCreateImage2D"}) {
        library().failing = failing;
        EXPECT_THROW(OpenCL::TemporaryImage(api, nullptr, nullptr, 30, 20), std::runtime_error);
        EXPECT_EQ(library().images, 0);
    }
    library().failing.clear();
}

} // namespace
} // namespace test
