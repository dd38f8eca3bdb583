// Effects on an OpenCL device give the pictures that they give on the CPU. Runs on the first device that takes images,
// and is skipped where there is none.
#include <cmath>

#include "host/opencl.h"
#include "tests/transition_support.h"

namespace test {
namespace {

std::shared_ptr<host::OpenCLDevice> firstDevice() {
    const auto devices = host::openCLDevices();
    for (std::size_t i = 0; i < devices.size(); ++i)
        if (devices[i].hasImages) return std::make_shared<host::OpenCLDevice>(static_cast<int>(i));
    return nullptr;
}

class OpenCL : public testing::Test {
protected:
    static void SetUpTestSuite() { device_ = firstDevice(); }
    static void TearDownTestSuite() { device_.reset(); }
    void SetUp() override {
        if (!device_) GTEST_SKIP() << "no OpenCL device on this machine";
    }
    static host::Options options() {
        host::Options options = oneThread();
        options.openCL = device_;
        return options;
    }

private:
    static inline std::shared_ptr<host::OpenCLDevice> device_;
};

std::shared_ptr<Image> render(Instance& instance, Format format, OfxRectI bounds, double pixelAspect, bool openCL) {
    host::RenderRequest request;
    request.output = blank(format, bounds);
    request.output->pixelAspect = pixelAspect;
    request.openCL = openCL;
    EXPECT_EQ(instance.render(request), kOfxStatOK);
    return request.output;
}

// The pixels whose components differ by more than the tolerance, and the largest difference.
struct Difference {
    int pixels = 0;
    double largest = 0;
};

Difference compare(const Image& a, const Image& b, double tolerance) {
    Difference difference;
    for (int y = a.bounds().y1; y < a.bounds().y2; ++y)
        for (int x = a.bounds().x1; x < a.bounds().x2; ++x) {
            const Pixel p = pixelAt(a, x, y), q = pixelAt(b, x, y);
            double most = 0;
            for (std::size_t c = 0; c < 4; ++c)
                most = std::max(most, std::abs(p[c] - q[c]) / std::max(1.0, std::abs(p[c])));
            difference.pixels += most > tolerance;
            difference.largest = std::max(difference.largest, most);
        }
    return difference;
}

constexpr Format kOnDevices[] = {kBytes, kBytesBGRA, kFloats}; // OpenCL has no blue-first floats
constexpr OfxRectI kBounds{-3, 2, 94, 73};                     // odd sizes: the last groups are not full

TEST_F(OpenCL, IsOfferedToHostsThatCompilePrograms) {
    for (const std::string& effect : builtEffects()) {
        Session with(options()), without;
        const auto supported = [&](Session& session) {
            return session.plugin(effect).describe().properties().getOr(kOfxImageEffectPropOpenCLSupported,
                                                                        std::string());
        };
        EXPECT_EQ(supported(with), "true") << effect;
        EXPECT_EQ(supported(without), "false") << effect;
    }
}

TEST_F(OpenCL, BrightnessAndContrastFollowsTheCPU) {
    Random random(3);
    for (int i = 0; i < 12; ++i) {
        const Settings settings = {{"Brightness", {i == 0 ? 0 : random.real(-1, 1)}},
                                   {"Contrast",
                                    {i <= 1   ? 0
                                     : i == 2 ? 1
                                     : i == 3 ? -1
                                              : random.real(-1, 1)}},
                                   {"ContrastCenter", {random.real(0, 1)}}};
        for (const Format& format : kOnDevices) {
            Session session(options());
            const auto instance = session.make(kBrightness, settings);
            instance->clip("Source").connect(picture(format, kBounds, 7));
            const auto cpu = render(*instance, format, kBounds, 1, false);
            const auto device = render(*instance, format, kBounds, 1, true);
            // Bytes: the CPU truncates its table in double precision, the device in single precision, so a level that
            // falls on a whole code may come out one lower or higher; at full contrast that one code is any. Floats: a
            // few roundings, enlarged by the contrast.
            const double contrast = settings.at("Contrast")[0];
            const double steepness = contrast > 0 ? 1 / (1.000001 - contrast) : 1;
            const double tolerance = format.depth == Depth::Float ? 4e-6 * steepness : contrast < 1 ? 1 : 255;
            const Difference difference = compare(*cpu, *device, tolerance);
            EXPECT_EQ(difference.pixels, 0) << i << ": " << difference.largest;
            if (i == 0) {
                EXPECT_EQ(difference.largest, 0) << "neutral settings are a copy";
            }
        }
    }
}

TEST_F(OpenCL, ColorCorrectorFollowsTheCPU) {
    Random random(8);
    for (int i = 0; i < 16; ++i) {
        // Every combination of stages, and none.
        const bool tone = i & 1, saturation = i & 2, wheels = i & 4;
        const auto wheel = [&] { return std::vector{random.real(0, 360), wheels ? random.real(0, 1) : 0}; };
        const Settings settings = {{"Low", wheel()},
                                   {"Mid", wheel()},
                                   {"High", wheel()},
                                   {"Saturation", {saturation ? random.real(0, 3) : 1}},
                                   {"Gamma", {tone ? random.pick({1.0, 2.0, 0.05, random.real(0, 2)}) : 1}},
                                   {"Gain", {tone ? random.real(0, 2) : 1}},
                                   {"Offset", {tone ? random.real(-60, 60) : 0}}};
        for (const Format& format : kOnDevices) {
            Session session(options());
            const auto instance = session.make(kCorrector, settings);
            instance->clip("Source").connect(picture(format, kBounds, 7));
            // Bytes round at other places where the last bit differs; red-first and blue-first differ in both alike.
            const Difference difference =
                compare(*render(*instance, format, kBounds, 1, false), *render(*instance, format, kBounds, 1, true),
                        format.depth == Depth::Byte ? 1 : 1e-5);
            EXPECT_EQ(difference.pixels, 0) << i << ": " << difference.largest;
            if (i % 8 == 0) {
                EXPECT_EQ(difference.largest, 0) << "neutral settings are a copy";
            }
        }
    }
}

TEST_F(OpenCL, LevelsFollowTheCPUInEveryChannel) {
    Random random(9);
    for (int i = 0; i < 20; ++i) {
        const auto end = [&](double usual) { return std::vector{random.pick({usual, random.real(0, 1)})}; };
        const Settings settings = {
            {"Channel", {i % 5 * 1.0}}, {"InputStart", end(0)},
            {"InputEnd", end(1)},       {"OutputStart", end(0)},
            {"OutputEnd", end(1)},      {"Gamma", {i < 5 ? 1 : random.pick({0.45, 5.0, random.real(0.45, 5)})}}};
        for (const Format& format : kOnDevices) {
            Session session(options());
            const auto instance = session.make(kLevels, settings);
            instance->clip("Source").connect(picture(format, kBounds, 7));
            const Difference difference =
                compare(*render(*instance, format, kBounds, 1, false), *render(*instance, format, kBounds, 1, true),
                        format.depth == Depth::Byte ? 1 : 1e-5);
            EXPECT_EQ(difference.pixels, 0) << i << ": " << difference.largest;
        }
    }
}

TEST_F(OpenCL, CheckerboardFollowsTheCPU) {
    Random random(5);
    for (int i = 0; i < 24; ++i) {
        const auto color = [&] {
            return std::vector{random.real(0, 1), random.real(0, 1), random.real(0, 1), random.real(0, 1)};
        };
        const Settings settings = {{"TileDimensionsWidth", {random.real(0.02, 0.6)}},
                                   {"TileDimensionsHeight", {random.real(0.02, 0.6)}},
                                   {"TileDimensionsSquare", {random.integer(0, 1) * 1.0}},
                                   {"EdgeBlendingHorizontal", {random.pick({0.0, 1.0, random.real(0, 1)})}},
                                   {"EdgeBlendingVertical", {random.real(0, 1)}},
                                   {"EdgeBlendingProportional", {random.integer(0, 1) * 1.0}},
                                   {"Color1", color()},
                                   {"Color2", color()},
                                   {"GridOffsetX", {random.real(0, 1)}},
                                   {"GridOffsetY", {random.real(0, 1)}}};
        const double pixelAspect = random.pick({1.0, 1.0, 0.9, 2.0});
        for (const Format& format : kOnDevices) {
            Session session(options());
            const auto instance = session.make(kCheckerboard, settings);
            const auto cpu = render(*instance, format, kBounds, pixelAspect, false);
            const auto device = render(*instance, format, kBounds, pixelAspect, true);
            // Positions are single-precision on the device: off by up to a few 1e-5 of a pixel at a hundred pixels,
            // which is as much of the colours on an edge that blends over one pixel; bytes may truncate differently,
            // once in each direction.
            const Difference difference = compare(*cpu, *device, format.depth == Depth::Byte ? 1 : 6e-5);
            EXPECT_EQ(difference.pixels, 0) << i << ": " << difference.largest;
        }
    }
}

TEST_F(OpenCL, DefaultCheckerboardIsTheSameToTheLastCode) {
    for (const Format& format : kOnDevices) {
        Session session(options());
        const auto instance = session.make(kCheckerboard, {{"TileDimensionsWidth", {0.125}}});
        const OfxRectI bounds{0, 0, 96, 64};
        EXPECT_TRUE(
            samePixels(*render(*instance, format, bounds, 1, false), *render(*instance, format, bounds, 1, true)));
    }
}

// Both ways between two pictures; `differing` pixels may exceed the tolerance.
void expectSame(Session& session, const std::string& effect, const Settings& settings, double progress,
                double pixelAspect, double byteTolerance, double floatTolerance, int differing = 0) {
    for (const Format& format : kOnDevices) {
        Between pictures(session, effect, format, kBounds, pixelAspect);
        const auto cpu = pictures.at(progress, settings), device = pictures.at(progress, settings, true);
        const bool bytes = format.depth == Depth::Byte;
        const Difference difference = compare(*cpu, *device, bytes ? byteTolerance : floatTolerance);
        EXPECT_LE(difference.pixels, differing)
            << effect << " at " << progress << ": " << difference.largest << (bytes ? " codes" : "");
    }
}

TEST_F(OpenCL, DissolveFollowsTheCPU) {
    Session session(options());
    Random random(6);
    for (int mode = 0; mode < 10; ++mode)
        for (const double progress : {0.0, 0.5, 1.0, random.real(0, 0.5), random.real(0.5, 1)}) {
            Settings settings = {{"Type", {mode * 1.0}}, {"FadeThroughColor", {0.9, 0.5, 0.2, 0.8}}};
            for (const char* name :
                 {"ColorBleedSpeedRed", "ColorBleedSpeedBlue", "ColorMorphSpeedRed", "ColorMorphSpeedAlpha"})
                settings[name] = {random.real(0, 1)};
            // Integers do the work on bytes; only the speeds and the colour are truncated in single precision.
            const bool truncates = mode == 3 || mode == 4 || mode == 8;
            expectSame(session, kDissolve, settings, progress, 1, truncates ? 1 : 0, 4e-6);
        }
}

TEST_F(OpenCL, WipesFollowTheCPU) {
    Session session(options());
    Random random(8);
    const auto aspect = [&] { return random.pick({1.0, 0.9, 2.0}); };
    const auto progress = [&] { return random.pick({0.0, 0.5, 1.0, random.real(0, 1), random.real(0, 1)}); };
    for (const double angle : {0.0, 33.0, 90.0, 145.0, 180.0, 250.0, 270.0, 340.0})
        for (const double feather : {0.0, 0.1, 1.0}) {
            // A pixel right on a hard edge may fall either way.
            const Settings settings = {{"Angle", {angle}}, {"Feather", {feather}}};
            expectSame(session, kLinearWipe, settings, progress(), aspect(), 1, 1e-5, feather == 0 ? 1 : 0);
        }
    for (const double direction : {0.0, 1.0})
        for (const double feather : {0.0, 5.0, 30.0, 360.0}) {
            // The arc tangents differ by a few roundings; the narrowest feather enlarges them.
            const Settings settings = {{"Direction", {direction}}, {"FeatherAngle", {feather}}};
            expectSame(session, kClockWipe, settings, progress(), aspect(), 1, 2e-4);
        }
}

TEST_F(OpenCL, FlashFollowsTheCPU) {
    Session session(options());
    Random random(10);
    for (const double progress : {0.0, 0.2, 0.5, 0.8, 1.0})
        for (const auto& [horizontal, vertical] : {std::pair{0.0, 0.0}, std::pair{0.5, 0.0}, std::pair{0.0, 0.5},
                                                   std::pair{0.3, 1.0}, std::pair{0.02, 0.03}}) {
            const Settings settings = {
                {"HorizontalDiffusion", {horizontal}}, {"VerticalDiffusion", {vertical}}, {"Tint", {1, 0.7, 0.4}}};
            // The passes of a blur leave byte images between them, each half a code off.
            const bool diffuses = horizontal > 0 || vertical > 0;
            const double aspect = random.pick({1.0, 0.9, 2.0});
            expectSame(session, kFlash, settings, progress, aspect, diffuses ? 2 : 1, diffuses ? 1e-3 : 4e-6);
        }
}

TEST_F(OpenCL, ChromaKeyerFollowsTheCPU) {
    Session session(options());
    for (const Format& format : kOnDevices)
        for (const double aspect : {1.0, 0.9, 2.0})
            for (const double blur : {0.0, 0.002, 0.2, 1.0})
                for (const double mask : {0.0, 1.0}) {
                    const auto instance = session.make(kKeyer, {{"color", {0.1, 0.8, 0.15}},
                                                                {"LowThreshold", {0.1}},
                                                                {"HighThreshold", {0.4}},
                                                                {"BlurAmount", {blur}},
                                                                {"ShowMaskOnly", {mask}}});
                    instance->clip("Source").connect(screened(format, kBounds));
                    const auto cpu = render(*instance, format, kBounds, aspect, false);
                    const auto device = render(*instance, format, kBounds, aspect, true);
                    // Single precision truncates some mattes to the code below or above, and the passes of a blur leave
                    // byte images between them.
                    const double codes = blur > 0 ? 2 : 1, part = blur > 0 ? 3e-3 : 2e-5;
                    const Difference difference = compare(*cpu, *device, format.depth == Depth::Byte ? codes : part);
                    EXPECT_EQ(difference.pixels, 0) << blur << " " << aspect << ": " << difference.largest;
                }
}

TEST_F(OpenCL, SourcesSmallerThanTheWindowReadAsTransparent) {
    Session session(options());
    const auto instance = session.make(kBrightness, {{"Brightness", {0.25}}});
    instance->clip("Source").connect(picture(kBytes, {10, 10, 40, 40}));
    EXPECT_EQ(
        compare(*render(*instance, kBytes, kBounds, 1, false), *render(*instance, kBytes, kBounds, 1, true), 1).pixels,
        0);
}

TEST_F(OpenCL, RenderWithoutAContextFallsBackToTheCPUOnlyWithPixelsInMemory) {
    host::Options incomplete = options();
    incomplete.onAction = [](const char* action, host::PropertySet* in, host::PropertySet*) {
        if (std::string(action) == kOfxImageEffectActionRender)
            in->set<void*>(kOfxImageEffectPropOpenCLContext, nullptr);
    };
    Session session(incomplete);
    const auto instance = session.make(kCheckerboard);
    host::RenderRequest request;
    request.output = blank(kBytes, kBounds);
    request.openCL = true; // this host leaves no pixels in memory then
    EXPECT_EQ(instance->render(request), kOfxStatFailed);
    request.openCL = false;
    EXPECT_EQ(instance->render(request), kOfxStatOK);
}

} // namespace
} // namespace test
