// What effects ask of OpenCL: work sizes, life cycles and failures, against a library that records calls.
#include <array>
#include <atomic>
#include <thread>

#include "opencl/temporary_image.h"
#include "opencl/work_sizes.h"
#include "tests/opencl_calls.h"

namespace test {
namespace {

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
        ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
        EXPECT_EQ(callsOf("clEnqueueNDRangeKernel").front().numbers, c.enqueued) << i;
        // The choice is kept.
        const std::size_t asked = callsOf("clGetKernelWorkGroupInfo").size();
        ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
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
        EXPECT_EQ(renderOnDevice(*instance, kHD), kOfxStatFailed) << failing;
        if (std::string(failing) == "clSetKernelArg") {
            EXPECT_EQ(callsOf("clSetKernelArg").size(), static_cast<std::size_t>(after + 1)); // the first failure stops
            EXPECT_TRUE(callsOf("clEnqueueNDRangeKernel").empty());
        }
        EXPECT_TRUE(callsOf("clEnqueueReadImage").empty());
        library().failing.clear();
        EXPECT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK) << "after " << failing;
    }
}

TEST_F(OpenCLCalls, QueriesThatFailLeaveTheLocalSizeToTheDevice) {
    library().failing = "clGetCommandQueueInfo";
    Session session(options());
    ASSERT_EQ(renderOnDevice(*session.make(kCheckerboard), kHD), kOfxStatOK);
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
    EXPECT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
}

TEST_F(OpenCLCalls, AFailedBuildLeavesTheCPUAndFailsTheDevice) {
    leaveOut = false, refusal = kOfxStatFailed;
    Session session(noting(options()));
    const auto instance = session.make(kCheckerboard);
    EXPECT_EQ(flags, (std::vector{1, 0}));
    EXPECT_EQ(renderOnDevice(*instance, kHD), kOfxStatFailed);
    EXPECT_EQ(test::render(*instance, blank(kBytes, {0, 0, 8, 8}), {0, 0, 8, 8}), kOfxStatOK);
    refusal = kOfxStatOK;
}

TEST_F(OpenCLCalls, AMissingKernelFailsTheRender) {
    library().failing = "clCreateKernel";
    Session session(options());
    EXPECT_EQ(renderOnDevice(*session.make(kCheckerboard), kHD), kOfxStatFailed);
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
    for (int i = 0; i < 200; ++i) EXPECT_EQ(renderOnDevice(*instance, {0, 0, 16, 16}), kOfxStatOK);
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
