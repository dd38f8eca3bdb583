// Levels: pixels worked out by hand, and the formulas, written plainly, for every channel.
#include <algorithm>
#include <cmath>

#include "tests/support.h"

namespace {

using namespace test;

enum Channel { All, Red, Green, Blue, Alpha };

struct Setting {
    double inputStart = 0, inputEnd = 1, outputStart = 0, outputEnd = 1, gamma = 1;
    int channel = All;

    Settings settings() const {
        return {{"InputStart", {inputStart}}, {"InputEnd", {inputEnd}}, {"OutputStart", {outputStart}},
                {"OutputEnd", {outputEnd}},   {"Gamma", {gamma}},       {"Channel", {channel * 1.0}}};
    }
};

// ---- the formulas

double curve(double gamma, double x) {
    const double g = 1 / gamma, r = gamma, t = std::pow(r, -0.9418051973077521) * 0.03818376618407356;
    const double s = std::pow(r, 1.8836103946155043);
    if (x < t) return x * s;
    if (g < 1) {
        const double p = std::pow(t, g), a = (s * t - p) / (p - 1);
        return std::pow(x, g) * (a + 1) - a;
    }
    const double q = std::pow(s * t, r), a = (t - q) / (q - 1);
    return std::pow((a + x) / (a + 1), g);
}

double level(const Setting& s, double value) {
    double range = s.inputEnd - s.inputStart, end = s.inputEnd;
    if (std::abs(range) < 0.003921568859368563) {
        range = 0.003921568859368563;
        end = s.inputStart + range;
    }
    const auto [low, high] = std::minmax(s.inputStart, end);
    const double x = std::min(std::max(value, low), high) - s.inputStart;
    const double y = std::abs(s.gamma - 1) < 1e-6 ? x / range : curve(s.gamma, x / range);
    return y * (s.outputEnd - s.outputStart) + s.outputStart;
}

Expected result(const Setting& s, const Format& format, Pixel p) {
    const bool bytes = format.depth == Depth::Byte;
    if (p[3] <= 0) return {Pixel{}};
    const auto mapped = [&](double c) {
        return bytes ? std::floor(level(s, c / 255) * 255 + 0.5 + 1.5e-8) : level(s, c);
    };
    const bool all = s.channel == All || s.channel == Alpha;
    const bool blueFirst = format.order == Order::BGRA;
    const int first = blueFirst ? 2 : 0;
    const auto limit = [&](int c) { p[std::size_t(c)] = std::min(mapped(p[std::size_t(c)]), p[3]); };
    if (all || s.channel == Red) limit(first);
    if (all || s.channel == Green) limit(1);
    if (all || s.channel == Blue) limit(2 - first);
    if (s.channel == Alpha) p[3] = mapped(p[3]);
    return {p, bytes ? 0 : 1e-5};
}

std::shared_ptr<Image> filtered(const Setting& setting, std::shared_ptr<Image> source) {
    Session session;
    const auto instance = session.make(kLevels, setting.settings());
    const Format format = source->format();
    const OfxRectI bounds = source->bounds();
    instance->clip("Source").connect(std::move(source));
    return rendered(*instance, format, bounds);
}

Pixel filtered(const Setting& setting, const Format& format, const Pixel& pixel) {
    return pixelAt(*filtered(setting, flat(format, kBounds, pixel)), 0, 0);
}

// ---- by hand

TEST(Levels, LimitsColorsToAlphaAndClearsWhatHasNone) {
    EXPECT_EQ(filtered({}, kBytes, {10, 200, 255, 100}), (Pixel{10, 100, 100, 100})) << "its defaults are no copy";
    for (const int channel : {All, Red, Green, Blue, Alpha}) {
        const Setting s = {0, 1, 0.5, 1, 1, channel};
        EXPECT_EQ(filtered(s, kBytes, {9, 9, 9, 0}), (Pixel{0, 0, 0, 0})) << channel;
        EXPECT_EQ(filtered(s, kFloats, {9, 9, 9, 0}), (Pixel{0, 0, 0, 0})) << channel;
    }
}

TEST(Levels, MapsTheChannelsThatWereChosen) {
    const auto inverted = [](int channel, const Format& format) {
        return filtered({0, 1, 1, 0, 1, channel}, format, {200, 100, 120, 120});
    };
    EXPECT_EQ(inverted(All, kBytes), (Pixel{55, 120, 120, 120}));
    EXPECT_EQ(inverted(Red, kBytes), (Pixel{55, 100, 120, 120}));
    EXPECT_EQ(inverted(Red, kBytesBGRA), (Pixel{200, 100, 120, 120})) << "the first in memory, blue, becomes 135";
    EXPECT_EQ(inverted(Blue, kBytesBGRA), (Pixel{55, 100, 120, 120}));
    EXPECT_EQ(inverted(Green, kBytes), (Pixel{200, 120, 120, 120}));
    EXPECT_EQ(inverted(Alpha, kBytes), (Pixel{55, 120, 120, 135})) << "colours keep to the alpha before";
}

TEST(Levels, CutsAndTurnsRanges) {
    const auto grey = [](const Setting& s, double code) { return filtered(s, kBytes, {code, 0, 0, 255})[0]; };
    EXPECT_EQ(grey({0.5, 0.5}, 127), 0);
    EXPECT_EQ(grey({0.5, 0.5}, 128), 127) << "hardly less than half a code into a range of one";
    EXPECT_EQ(grey({0.5, 0.5}, 129), 255);
    EXPECT_EQ(grey({1, 0}, 55), 200) << "a reversed input range runs backwards";
    EXPECT_EQ(grey({0.8, 0.2}, 20), 255);
    EXPECT_EQ(grey({0, 1, 0.5, 0.5}, 7), 128) << "127.5 rounds up";
    EXPECT_EQ(grey({0, 1, 0.25, 0.75}, 255), 191);
    EXPECT_EQ(grey({.gamma = 2}, 1), 4);
    EXPECT_EQ(grey({.gamma = 2}, 64), 118);
    EXPECT_EQ(grey({.gamma = 0.5}, 128), 74);
    EXPECT_EQ(grey({.gamma = 5}, 10), 92);
}

// ---- against the formulas

TEST(Levels, IsWhatTheFormulasGive) {
    Random random(13);
    for (int i = 0; i < 200; ++i) {
        const auto end = [&](double usual) { return random.pick({usual, random.real(0, 1), random.real(0, 1)}); };
        const Setting s = {end(0), end(1), end(0), end(1), random.pick({1.0, 0.45, 5.0, random.real(0.45, 5)}), i % 5};
        const Format format = random.pick({kBytes, kFloats, kBytesBGRA, kFloatsBGRA});
        const OfxRectI bounds = {0, 0, random.pick({random.integer(1, 70), random.integer(5000, 5100)}), 3};
        const auto source = picture(format, bounds, static_cast<std::uint64_t>(i));
        ASSERT_TRUE(matches(*filtered(s, source), bounds,
                            [&](int x, int y) { return result(s, format, pixelAt(*source, x, y)); }))
            << "input " << s.inputStart << " " << s.inputEnd << ", output " << s.outputStart << " " << s.outputEnd
            << ", gamma " << s.gamma << ", channel " << s.channel;
    }
}

TEST(Levels, MapsEveryByteAndTheFloatsBetween) {
    const auto ramp = blank(kBytes, {0, 0, 256, 1}), fine = blank(kFloats, {0, 0, 5000, 1});
    for (int i = 0; i < 256; ++i) put(*ramp, i, 0, {i * 1.0, 255.0 - i, i * 1.0, 255});
    for (int i = 0; i < 5000; ++i) put(*fine, i, 0, {i / 4999.0, i / 49990.0, 1 - i / 499900.0, 1});
    for (const Setting& s : {Setting{.gamma = 0.45}, Setting{.gamma = 5}, Setting{.gamma = 1.0000005},
                             Setting{0.1, 0.9, 0.2, 0.8, 2.2, Alpha}, Setting{0.9, 0.901, 1, 0, 3}})
        for (const auto& image : {ramp, fine})
            EXPECT_TRUE(matches(*filtered(s, image), image->bounds(), [&](int x, int) {
                return result(s, image->format(), pixelAt(*image, x, 0));
            })) << s.gamma;
}

TEST(Levels, KeepsTransparencyOfImagesOfAlphaAlone) {
    for (const Depth depth : {Depth::Byte, Depth::Float}) {
        const Format format{depth, Components::Alpha};
        const auto source = picture(format, kBounds);
        EXPECT_TRUE(samePixels(*filtered({0, 1, 1, 0, 1, All}, source), *source));
        const Setting s = {0, 1, 0.75, 0.25, 1, Alpha};
        EXPECT_TRUE(matches(*filtered(s, source), kBounds, [&](int x, int y) {
            const Expected expected = result(s, format, pixelAt(*source, x, y));
            return Expected{{0, 0, 0, expected.value[3]}, expected.tolerance};
        }));
    }
}

} // namespace
