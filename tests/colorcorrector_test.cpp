// The colour corrector: pixels worked out by hand, and every stage against the formulas, written plainly.
#include <cmath>
#include <numbers>

#include "tests/support.h"

namespace {

using namespace test;

struct Setting {
    std::array<std::pair<double, double>, 3> wheels{}; // low, mid, high: angle, magnitude
    double saturation = 1, gamma = 1, gain = 1, offset = 0;

    Settings settings() const {
        const auto wheel = [this](std::size_t i) { return std::vector{wheels[i].first, wheels[i].second}; };
        return {{"Low", wheel(0)},  {"Mid", wheel(1)}, {"High", wheel(2)},  {"Saturation", {saturation}},
                {"Gamma", {gamma}}, {"Gain", {gain}},  {"Offset", {offset}}};
    }
    bool hasTone() const { return gamma != 1 || gain != 1 || offset != 0; }
    bool hasWheels() const { return wheels[0].second != 0 || wheels[1].second != 0 || wheels[2].second != 0; }
};

// ---- the formulas, in 8-bit codes

double tone(double gamma, double x) {
    const double g = gamma < 1 ? 3 - 2 * gamma : gamma > 1 ? 1 - 0.8 * (gamma - 1) : 1;
    if (g == 1) return x;
    const double r = 1 / g, t = std::pow(r, -0.9418051973077521) * 0.03818376618407356;
    const double s = std::pow(r, 1.8836103946155043);
    if (x < t) return x * s;
    if (g < 1) {
        const double p = std::pow(t, g), a = (s * t - p) / (p - 1);
        return std::pow(x, g) * (a + 1) - a;
    }
    const double q = std::pow(s * t, r), a = (t - q) / (q - 1);
    return std::pow((a + x) / (a + 1), g);
}

// A pixel by its places in memory, in codes of any precision; unrounded.
std::array<double, 3> corrected(const Setting& s, const std::array<float, 4>& p, float stepsPerUnit) {
    const float luma = 0.587f * p[1] + 0.299f * p[2] + 0.114f * p[0]; // in single precision: it chooses the step
    const double unit = 1020.0 / static_cast<double>(stepsPerUnit);   // of the pixel, for one code times 255
    double y = static_cast<double>(luma) * 255 / unit;
    double u = (p[0] * 255.0 / unit - y) * 0.492, v = (p[2] * 255.0 / unit - y) * 0.877;
    if (s.hasTone() || s.hasWheels()) {
        const double step = std::rint(static_cast<double>(std::min(std::max(luma * stepsPerUnit, 0.0f), 1023.0f)));
        y = step / 4;
        if (s.hasTone()) y = std::min(std::max(tone(s.gamma, y / 255) * 255 * s.gain + s.offset, 0.0), 255.0);
        double pushU = 0, pushV = 0;
        const double centers[] = {0, 127.5, 255},
                     narrowness[] = {9.518927955800229e-5, 0.00026399289035467123, 9.518927955800229e-5};
        for (std::size_t i = 0; i < 3; ++i) {
            const auto [angle, magnitude] = s.wheels[i];
            const double w = std::exp(-narrowness[i] * std::pow(y - centers[i], 2)) * magnitude * magnitude * 127.5;
            pushU += w * std::cos(angle / 180 * std::numbers::pi);
            pushV += w * std::sin(angle / 180 * std::numbers::pi);
        }
        const double length = std::hypot(pushU, pushV), limit = length > 162 ? 162 / length : 1;
        u += pushU * limit, v += pushV * limit;
    }
    u *= s.saturation, v *= s.saturation;
    const double alpha = p[3] * 255.0 / unit;
    const auto limited = [&](double c) { return std::min(std::max(c, 0.0), alpha); };
    return {limited(y + 2.0325203 * u), limited(y - 0.39473134 * u - 0.5808092 * v), limited(y + 1.1402509 * v)};
}

Expected result(const Setting& s, const Format& format, Pixel p) {
    if (!s.hasTone() && !s.hasWheels() && s.saturation == 1) return {p};
    const bool bytes = format.depth == Depth::Byte;
    const auto exchange = [&] {
        if (format.order == Order::RGBA) std::swap(p[0], p[2]); // places in memory, counted from blue
    };
    exchange();
    const std::array<float, 4> memory = {float(p[2]), float(p[1]), float(p[0]), float(p[3])};
    const auto codes = corrected(s, memory, bytes ? 4 : 1020);
    double tolerance = bytes ? 0 : 1e-5;
    for (std::size_t c = 0; c < 3; ++c) {
        const double code = codes[c], nearest = std::round(code);
        // Single precision may put what lies at a half on either side.
        if (bytes && std::abs(std::abs(code - nearest) - 0.5) < 1e-4) tolerance = 1;
        p[2 - c] = bytes ? nearest : code / 255;
    }
    exchange();
    return {p, tolerance};
}

std::shared_ptr<Image> filtered(const Setting& setting, std::shared_ptr<Image> source, host::Options options = {}) {
    Session session(std::move(options));
    const auto instance = session.make(kCorrector, setting.settings());
    const Format format = source->format();
    const OfxRectI bounds = source->bounds();
    instance->clip("Source").connect(std::move(source));
    return rendered(*instance, format, bounds);
}

// One pixel of a blue-first byte picture, in which the names of the components are the effect's.
Pixel filtered(const Setting& setting, const Pixel& pixel) {
    return pixelAt(*filtered(setting, flat(kBytesBGRA, kBounds, pixel)), 0, 0);
}

constexpr std::pair<double, double> kNone{0, 0}, kFull{0, 1};

// ---- by hand

TEST(ColorCorrector, CopiesAtItsDefaultsEvenColorsAboveAlpha) {
    EXPECT_EQ(filtered({}, {200, 9, 9, 0}), (Pixel{200, 9, 9, 0}));
    EXPECT_EQ(filtered({{{{90, 0}, {180, 0}, {270, 0}}}}, {200, 9, 9, 0}), (Pixel{200, 9, 9, 0}))
        << "angles without a magnitude";
    EXPECT_EQ(filtered({.saturation = 1.5}, {200, 9, 9, 0}), (Pixel{0, 0, 0, 0}));
}

TEST(ColorCorrector, LeavesLumaWithoutSaturation) {
    const Setting grey = {.saturation = 0}, pushed = {{{kFull, kFull, kFull}}, 0};
    EXPECT_EQ(filtered(grey, {100, 200, 10, 255}), (Pixel{148, 148, 148, 255})); // 148.44
    EXPECT_EQ(filtered(grey, {100, 110, 10, 120}), (Pixel{96, 96, 96, 120}));
    EXPECT_EQ(filtered(grey, {255, 255, 0, 255}), (Pixel{226, 226, 226, 255})); // 225.93
    EXPECT_EQ(filtered(pushed, {100, 200, 10, 255}), (Pixel{148, 148, 148, 255})) << "pushes are scaled as well";
    // In red-first pictures red and blue change their roles: 0.299 x 10 + 0.587 x 200 + 0.114 x 100 = 131.79.
    const auto redFirst = filtered(grey, flat(kBytes, kBounds, {100, 200, 10, 255}));
    EXPECT_EQ(pixelAt(*redFirst, 0, 0), (Pixel{132, 132, 132, 255}));
}

TEST(ColorCorrector, PushesWhereAWheelWeighs) {
    // Angle 0 is the axis of U: blue rises by 2.03 of the push, green falls by 0.39 of it, red stays.
    EXPECT_EQ(filtered({{{kNone, kFull, kNone}}}, {128, 128, 128, 255}), (Pixel{128, 78, 255, 255}));
    EXPECT_EQ(filtered({{{kNone, kFull, kNone}}}, {0, 0, 0, 255}), (Pixel{0, 0, 4, 255})); // a push of 1.745
    EXPECT_EQ(filtered({{{kNone, kFull, kNone}}}, {0, 0, 0, 0}), (Pixel{0, 0, 0, 0}));
    // Low and high weigh 0.21 each in the middle, and half the magnitude is a quarter of the push.
    EXPECT_EQ(filtered({{{kFull, kNone, kFull}}}, {128, 128, 128, 255}), (Pixel{128, 107, 238, 255}));
    EXPECT_EQ(filtered({{{{0, 0.5}, kNone, {0, 0.5}}}}, {128, 128, 128, 255}), (Pixel{128, 123, 156, 255}));
    // All three would push by 181: no longer than 162, which takes 64 from green.
    EXPECT_EQ(filtered({{{kFull, kFull, kFull}}}, {128, 128, 128, 255}), (Pixel{128, 64, 255, 255}));
    EXPECT_EQ(filtered({{{{180, 1}, {180, 1}, {180, 1}}}}, {128, 128, 128, 255}), (Pixel{128, 192, 0, 255}));
}

TEST(ColorCorrector, BendsLuma) {
    const auto grey = [](const Setting& setting, double level) {
        const Pixel p = filtered(setting, {level, level, level, 255});
        EXPECT_EQ(p[0], p[1]);
        EXPECT_EQ(p[0], p[2]);
        return p[0];
    };
    EXPECT_EQ(grey({.gamma = 2}, 1), 21); // the straight toe: 20.73
    EXPECT_EQ(grey({.gamma = 2}, 30), 136);
    EXPECT_EQ(grey({.gamma = 2}, 128), 211);
    EXPECT_EQ(grey({.gamma = 0.05}, 30), 4);
    EXPECT_EQ(grey({.gamma = 0.05}, 128), 50);
    EXPECT_EQ(grey({.gamma = 0.05}, 255), 255);
    EXPECT_EQ(grey({.gain = 0.5, .offset = 10}, 100), 60);
    EXPECT_EQ(grey({.gain = 2, .offset = 254}, 0), 254);
    EXPECT_EQ(grey({.gain = 2, .offset = 254}, 1), 255);
    EXPECT_EQ(grey({.offset = -254}, 255), 1);
}

// ---- against the formulas

TEST(ColorCorrector, IsWhatTheFormulasGiveForEveryCombinationOfStages) {
    Random random(6);
    int pixels = 0, uncertain = 0;
    for (int i = 0; i < 140; ++i) {
        Setting s;
        const int stages = i % 7 + 1;
        if (stages & 1) {
            s.gamma = random.pick({2.0, 0.05, 1.0, random.real(0, 2)});
            s.gain = random.pick({1.0, random.real(0, 2)});
            s.offset = random.pick({1.0, random.real(-60, 60)});
        }
        if (stages & 2) s.saturation = random.pick({0.0, 3.0, random.real(0, 3)});
        if (stages & 4)
            for (auto& wheel : s.wheels) wheel = {random.real(0, 360), random.pick({0.0, 1.0, random.real(0, 1)})};
        const Format format = random.pick({kBytes, kFloats, kBytesBGRA, kFloatsBGRA});
        const OfxRectI bounds = {0, 0, random.pick({random.integer(1, 70), random.integer(5000, 5100)}), 3};
        const auto source = picture(format, bounds, static_cast<std::uint64_t>(i));
        ASSERT_TRUE(matches(*filtered(s, source), bounds,
                            [&](int x, int y) {
                                const Expected expected = result(s, format, pixelAt(*source, x, y));
                                ++pixels, uncertain += expected.tolerance == 1;
                                return expected;
                            }))
            << "stages " << stages << ", gamma " << s.gamma;
    }
    EXPECT_LT(uncertain, pixels / 100) << "the comparison must be exact nearly everywhere";
}

TEST(ColorCorrector, BendsAndPushesRampsWithoutSteps) {
    for (const Format format : {kBytes, kFloats}) {
        const double code = format.depth == Depth::Byte ? 1 : 1 / 255.0;
        const auto ramps = blank(format, {0, 0, 256, 4});
        for (int i = 0; i < 256; ++i) {
            put(*ramps, i, 0, {i * code, i * code, i * code, 255 * code});
            put(*ramps, i, 1, {i * code, 255 * code - i * code, 40 * code, 255 * code});
            put(*ramps, i, 2, {i * code / 2, 0, i * code, i * code});
            put(*ramps, i, 3, {i * code * 1.5, -i * code, 0, 128 * code}); // floats beyond their range
        }
        for (const Setting& s : {Setting{.gamma = 2}, Setting{.gamma = 0.05}, Setting{.gain = 1.3},
                                 Setting{{{{30, 0.7}, {200, 1}, {100, 0.9}}}, 1.4, 1.2, 1.1, -8}}) {
            const OfxRectI area = {0, 0, 256, format.depth == Depth::Byte ? 3 : 4};
            EXPECT_TRUE(matches(*filtered(s, ramps), area,
                                [&](int x, int y) { return result(s, format, pixelAt(*ramps, x, y)); }));
        }
    }
}

TEST(ColorCorrector, MakesNumbersOfWhatAreNone) {
    const double none = std::nan(""), infinite = std::numeric_limits<double>::infinity();
    const auto source = flat(kFloats, {0, 0, 2, 1}, {none, 0.5, 0.5, 1});
    put(*source, 1, 0, {infinite, 0.5, 0.5, 1});
    const auto image = filtered({{{kFull, kFull, kFull}}, 1.5, 1.5}, source);
    for (int x = 0; x < 2; ++x)
        for (const double c : pixelAt(*image, x, 0)) EXPECT_TRUE(c >= 0 && c <= 1) << x;
}

TEST(ColorCorrector, CopiesImagesOfAlphaAlone) {
    for (const Depth depth : {Depth::Byte, Depth::Float}) {
        const auto source = picture({depth, Components::Alpha}, kBounds);
        EXPECT_TRUE(samePixels(*filtered({.saturation = 2, .gamma = 0.5}, source), *source));
    }
}

// ---- processors

TEST(ColorCorrector, PaintsTheSameOnAnyNumberOfProcessorsAndThreads) {
    const Setting s = {{{{30, 0.7}, {200, 1}, {100, 0.9}}}, 1.4, 1.2, 1.1, -8};
    const auto source = picture(kBytes, {-5, 3, 300, 104});
    std::shared_ptr<Image> first;
    for (const unsigned threads : {1u, 3u, 7u}) {
        host::Options options;
        options.threads = threads;
        const auto image = filtered(s, source, options);
        if (!first) first = image;
        EXPECT_TRUE(samePixels(*image, *first)) << threads;
    }
}

// The pool's threads live on when a host closes the bundle.
TEST(Child, DISABLED_ClosesTheBundleAfterRenders) {
    const auto source = picture(kBytes, {0, 0, 64, 64});
    const auto first = filtered({.gamma = 1.5}, source, oneThread());
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(samePixels(*filtered({.gamma = 1.5}, source, oneThread()), *first));
}

TEST(ColorCorrector, LeavesNoThreadInAClosedBundle) {
    runChild("OMP_NUM_THREADS=4", "Child.DISABLED_ClosesTheBundleAfterRenders");
}

} // namespace
