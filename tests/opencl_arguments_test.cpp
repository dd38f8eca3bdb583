// The arguments that effects give their kernels, in order, by size and value.
#include <cmath>

#include "tests/opencl_calls.h"

namespace test {
namespace {

TEST_F(OpenCLCalls, CheckerboardSetsItsArgumentsInOrder) {
    Session session(options());
    const auto instance = session.make(kCheckerboard, {{"EdgeBlendingHorizontal", {0.5}},
                                                       {"GridOffsetX", {0.25}},
                                                       {"GridOffsetY", {0.5}},
                                                       {"Color1", {1, 0.5, 0, 0.5}}});
    ASSERT_EQ(renderOnDevice(*instance, kHD, kFloats), kOfxStatOK);
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
    ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
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
    ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
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
    ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
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
    ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
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
            EXPECT_EQ(renderOnDevice(*instance, kHD), kOfxStatFailed) << failing;
            EXPECT_EQ(library().images, lent) << failing;
        }
    library().failing.clear();
}

TEST_F(OpenCLCalls, ChromaKeyerSetsItsArgumentsInOrder) {
    Session session(options());
    const auto instance = session.make(kKeyer, {{"color", {0, 1, 0}}, {"LowThreshold", {0.25}}, {"ShowMaskOnly", {1}}});
    instance->clip("Source").connect(picture(kBytes, kHD));
    ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
    const auto hard = callsOf("clSetKernelArg");
    ASSERT_EQ(sizes(hard), (std::vector<std::size_t>{8, 8, 4, 4, 4, 16, 16}));
    EXPECT_EQ(valueOf<int>(hard[4]), std::vector{1});
    EXPECT_EQ(valueOf<float>(hard[5]), (std::vector<float>{0, 1, 0, 0.25f}));
    EXPECT_EQ(valueOf<float>(hard[6]), (std::vector<float>{1, 1 / 3.0f, 1, 0.5f}));

    library().calls.clear();
    set(*instance, {{"BlurAmount", {0.1}}});
    ASSERT_EQ(renderOnDevice(*instance, kHD), kOfxStatOK);
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
            if (renderOnDevice(*instance, kHD) == kOfxStatOK) continue; // not so many calls
            EXPECT_EQ(library().images, lent) << failing;
        }
    library().failing.clear();
}

} // namespace
} // namespace test
