// The pixel library's colours through the bundle's exports: HSL, L*a*b*, packed colours, and the header in C.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/pixelops.h"

extern "C" {
extern const std::int32_t kFailedInC;
extern const std::size_t kPixelSizesInC[6];
}

namespace test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(PixelHeader, MeansTheSameInC) {
    EXPECT_EQ(static_cast<std::uint32_t>(kFailedInC), 0x80004005u);
    const std::size_t sizes[6] = {4, 4, 16, 32, 24, 16};
    EXPECT_TRUE(std::equal(sizes, sizes + 6, kPixelSizesInC));
}

// ---- HSL

// By way of the textbook: the colour's place on the edge of the hexagon, then its chroma.
std::array<double, 3> textbookRgb(double h, double s, double l) {
    const auto channel = [&](double n) {
        const double k = std::fmod(n + h * 12, 12);
        return l - s * std::min(l, 1 - l) * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
    };
    return {channel(0), channel(8), channel(4)};
}

TEST(Hsl, FloatsFollowTheTextbookBothWays) {
    EXPORTED(KRHSL_To_KRRGBAFLOAT);
    EXPORTED(KRHSL_To_KRDIBPIXEL_Float);
    EXPORTED(KRRGBAFLOAT_To_KRHSL);
    EXPORTED(KRDIBPIXEL_To_KRHSL_Float);
    Random random(1);
    for (int i = 0; i < 100000; ++i) {
        const KRHSL hsl = {random.pick({random.integer(0, 6) / 6.0, random.real(0, 1)}),
                           random.pick({0.0, 1.0, random.real(0, 1)}), random.pick({0.5, random.real(0, 1)}),
                           random.real(-0.5, 1.5)};
        KRRGBAFLOAT rgb, same;
        KRHSL_To_KRRGBAFLOAT(&rgb, &hsl);
        KRHSL_To_KRDIBPIXEL_Float(&same, &hsl);
        EXPECT_EQ(std::memcmp(&rgb, &same, sizeof rgb), 0);
        const auto wanted = textbookRgb(hsl.hue, hsl.saturation, hsl.lightness);
        ASSERT_NEAR(rgb.red, wanted[0], 1e-6);
        ASSERT_NEAR(rgb.green, wanted[1], 1e-6);
        ASSERT_NEAR(rgb.blue, wanted[2], 1e-6);
        ASSERT_FLOAT_EQ(rgb.alpha, static_cast<float>(std::clamp(hsl.alpha, 0.0, 1.0)));

        KRHSL back, sameBack;
        KRRGBAFLOAT_To_KRHSL(&back, &rgb);
        KRDIBPIXEL_To_KRHSL_Float(&sameBack, &rgb);
        EXPECT_EQ(std::memcmp(&back, &sameBack, sizeof back), 0);
        const auto again = textbookRgb(back.hue, back.saturation, back.lightness);
        ASSERT_NEAR(again[0], rgb.red, 1e-9) << "from doubles, nothing but roundings is lost";
        ASSERT_NEAR(again[1], rgb.green, 1e-9);
        ASSERT_NEAR(again[2], rgb.blue, 1e-9);
        ASSERT_EQ(back.alpha, double{rgb.alpha});
        ASSERT_TRUE(back.hue >= 0 && back.hue <= 1 && back.saturation >= 0 && back.saturation <= 1);
    }
}

TEST(Hsl, BytesSurviveTheRoundTripButForTruncation) {
    EXPORTED(KRRGBA_To_KRHSL);
    EXPORTED(KRHSL_To_KRRGBA);
    EXPORTED(KRDIBPIXEL_To_KRHSL);
    EXPORTED(KRHSL_To_KRDIBPIXEL);
    Random random(2);
    for (const KRRGBA& pixel : randomPixels(random, 100000)) {
        KRHSL hsl, same;
        KRRGBA_To_KRHSL(&hsl, &pixel);
        const KRDIBPIXEL twin = {pixel.blue, pixel.green, pixel.red, pixel.alpha};
        KRDIBPIXEL_To_KRHSL(&same, &twin);
        ASSERT_EQ(std::memcmp(&hsl, &same, sizeof hsl), 0);
        hsl.alpha += 1e-9;
        const auto wanted = textbookRgb(hsl.hue, hsl.saturation, hsl.lightness);
        ASSERT_NEAR(wanted[0] * 255, pixel.red, 1e-9);
        ASSERT_NEAR(wanted[1] * 255, pixel.green, 1e-9);
        ASSERT_NEAR(wanted[2] * 255, pixel.blue, 1e-9);

        KRRGBA back;
        KRDIBPIXEL backTwin;
        KRHSL_To_KRRGBA(&back, &hsl);
        KRHSL_To_KRDIBPIXEL(&backTwin, &hsl);
        ASSERT_EQ(std::memcmp(&back, &backTwin, sizeof back), 0);
        ASSERT_TRUE(pixel.red - back.red == 0 || pixel.red - back.red == 1);
        ASSERT_TRUE(pixel.green - back.green == 0 || pixel.green - back.green == 1);
        ASSERT_TRUE(pixel.blue - back.blue == 0 || pixel.blue - back.blue == 1);
        ASSERT_EQ(pixel.alpha, back.alpha);
    }
}

TEST(Hsl, HasDefinedResultsAtAndBeyondTheEdges) {
    EXPORTED(KRHSL_To_KRRGBA);
    const KRRGBA before = {1, 2, 3, 4};
    struct {
        KRHSL hsl;
        KRRGBA result; // blue, green, red, alpha
    } const cases[] = {
        {{0.3, 1, 0, 0.5}, {0, 0, 0, 127}},             // no light
        {{7, 1, 0, 1}, {0, 0, 0, 255}},                 // nor at any hue
        {{0, 1, 0.5, 1}, {0, 0, 255, 255}},             // red
        {{1, 1, 0.5, 1}, {0, 0, 255, 255}},             // red again, one turn on
        {{1.1, 1, 0.5, 2}, {0, 153, 255, 255}},         // still the sextant of 1
        {{7.0 / 6 + 1e-9, 1, 0.5, 1}, {1, 2, 3, 255}},  // beyond it: unwritten but for alpha
        {{-0.1, 1, 0.5, -1}, {0, 0x67, 255, 0}},        // -153 in its low eight bits
        {{-1.0 / 6, 1, 0.5, 1}, {1, 2, 3, 255}},        // a whole sextant below: unwritten
        {{0, 2, 0.5, 1}, {0x81, 0x81, 382 - 256, 255}}, // 1.5 and -0.5: 382 and -127 in their low eight bits
        {{0, 0, 1e300, kNaN}, {255, 255, 255, 0}},      // more than any integer holds
        {{kNaN, 1, 0.5, kInfinity}, {0, 0, 255, 255}},  // not a number: sextant 0, and no code
        {{kInfinity, 1, 0.5, 1}, {1, 2, 3, 255}},       //
        {{-kInfinity, 1, 0.5, 1}, {1, 2, 3, 255}},      //
        {{0, kNaN, 0.5, 1}, {0, 0, 0, 255}},            //
    };
    for (const auto& [hsl, result] : cases) {
        KRRGBA found = before;
        KRHSL_To_KRRGBA(&found, &hsl);
        EXPECT_TRUE(same(found, result)) << hsl.hue << " " << hsl.saturation << " " << hsl.lightness << ": "
                                         << int{found.blue} << " " << int{found.green} << " " << int{found.red} << " "
                                         << int{found.alpha};
    }
    KRRGBA untouched = before;
    KRHSL_To_KRRGBA(&untouched, nullptr);
    KRHSL_To_KRRGBA(nullptr, &cases[0].hsl);
    EXPECT_TRUE(same(untouched, before));
}

// ---- L*a*b*

TEST(Lab, MatchesPublishedValuesOfSRGB) {
    EXPORTED(KRRGBA_To_KRLAB);
    EXPORTED(KRDIBPIXEL_To_KRLAB);
    EXPORTED(KRRGBAFLOAT_To_KRLAB);
    EXPORTED(KRDIBPIXEL_To_KRLAB_Float);
    struct {
        KRRGBA rgb; // blue, green, red
        double l, a, b;
    } const known[] = {{{255, 255, 255, 9}, 100, 0, 0},
                       {{0, 0, 0, 9}, 0, 0, 0},
                       {{0, 0, 255, 9}, 53.2408, 80.0925, 67.2032},
                       {{0, 255, 0, 9}, 87.7347, -86.1827, 83.1793},
                       {{255, 0, 0, 9}, 32.2970, 79.1875, -107.8602},
                       {{128, 128, 128, 9}, 53.585, 0, 0},
                       {{1, 1, 1, 9}, 0.2742, 0, 0}}; // on the straight part of the curve
    for (const auto& color : known) {
        const KRDIBPIXEL bytes = {color.rgb.blue, color.rgb.green, color.rgb.red, 7};
        const KRRGBAFLOAT floats = {static_cast<float>(color.rgb.red / 255.0),
                                    static_cast<float>(color.rgb.green / 255.0),
                                    static_cast<float>(color.rgb.blue / 255.0), 0};
        KRLAB labs[4];
        KRRGBA_To_KRLAB(&labs[0], &color.rgb);
        KRDIBPIXEL_To_KRLAB(&labs[1], &bytes);
        KRRGBAFLOAT_To_KRLAB(&labs[2], &floats);
        KRDIBPIXEL_To_KRLAB_Float(&labs[3], &floats);
        for (const KRLAB& lab : labs) {
            EXPECT_NEAR(lab.l, color.l, 0.01); // the matrix has four digits
            EXPECT_NEAR(lab.a, color.a, 0.02);
            EXPECT_NEAR(lab.b, color.b, 0.02);
        }
    }
}

TEST(Lab, ComesBackAndLeavesAlphaAlone) {
    EXPORTED(KRRGBA_To_KRLAB);
    EXPORTED(KRLAB_To_KRRGBA);
    EXPORTED(KRLAB_To_KRDIBPIXEL_Float);
    Random random(4);
    for (const KRRGBA& pixel : randomPixels(random, 20000)) {
        KRLAB lab;
        KRRGBA_To_KRLAB(&lab, &pixel);
        KRRGBAFLOAT floats = {0, 0, 0, 0.25f};
        KRLAB_To_KRDIBPIXEL_Float(&floats, &lab);
        // The two matrices are inverse to each other to four digits, which near black the curve makes 13 times as much.
        ASSERT_NEAR(floats.red * 255, pixel.red, 0.3);
        ASSERT_NEAR(floats.green * 255, pixel.green, 0.3);
        ASSERT_NEAR(floats.blue * 255, pixel.blue, 0.3);
        ASSERT_EQ(floats.alpha, 0.25f);
        KRRGBA bytes = {0, 0, 0, 77};
        KRLAB_To_KRRGBA(&bytes, &lab);
        ASSERT_EQ(bytes.alpha, 77);
        const float values[3] = {floats.red, floats.green, floats.blue};
        const std::uint8_t codes[3] = {bytes.red, bytes.green, bytes.blue};
        for (int i = 0; i < 3; ++i) // truncated, from doubles that the floats are close to
            ASSERT_NEAR(double{values[i]} * 255 - codes[i], 0.5, 0.5001);
    }
}

TEST(Lab, LimitsWhatNoScreenShows) {
    EXPORTED(KRLAB_To_KRRGBA);
    for (const auto& [lab, wanted] :
         {std::pair(KRLAB{200, 0, 0}, KRRGBA{255, 255, 255, 5}), std::pair(KRLAB{-1e9, 0, 0}, KRRGBA{0, 0, 0, 5}),
          std::pair(KRLAB{50, 1e300, 0}, KRRGBA{0, 0, 255, 5}),
          std::pair(KRLAB{kNaN, kNaN, kNaN}, KRRGBA{0, 0, 0, 5})}) {
        KRRGBA found = {1, 2, 3, 5};
        KRLAB_To_KRRGBA(&found, &lab);
        EXPECT_EQ(found.red, wanted.red) << lab.l << " " << lab.a;
        EXPECT_EQ(found.alpha, wanted.alpha);
    }
}

// ---- packed colours: every one of them

std::uint32_t referenceHsl(int r, int g, int b) {
    const int most = std::max(r, std::max(g, b)), least = std::min(r, std::min(g, b));
    const int l = ((most + least) * 240 + 256) / 512;
    if (most == least) return static_cast<std::uint32_t>(160 | l << 16);
    const int d = most - least, den = l < 121 ? most + least : 512 - most - least;
    const int s = (d * 240 + den / 2) / den;
    const int rd = ((most - r) * 240 / 6 + d / 2) / d, gd = ((most - g) * 240 / 6 + d / 2) / d;
    const int bd = ((most - b) * 240 / 6 + d / 2) / d;
    int h = r == most ? bd - gd : g == most ? 80 + rd - bd : 160 + gd - rd;
    h = h < 0 ? h + 240 : h > 240 ? h - 240 : h;
    return static_cast<std::uint32_t>(h | s << 8 | l << 16);
}

// In 64 bits, brought back to 32 wherever the definition has 32.
std::uint64_t low32(std::int64_t value) { return static_cast<std::uint64_t>(value) & 0xFFFFFFFFu; }

std::uint32_t referenceRgb(std::int64_t h, std::int64_t s, std::int64_t l) {
    std::uint64_t rgb[3];
    const auto m2 =
        static_cast<std::int64_t>(l <= 120 ? low32((l * (240 + s) + 120) / 240) : low32(l + s - (l * s + 120) / 240));
    const auto m1 = static_cast<std::int64_t>(low32(2 * l - m2));
    const std::int64_t hues[3] = {h + 80, h, h - 80};
    for (int i = 0; i < 3; ++i) {
        auto hue = static_cast<std::int64_t>(low32(hues[i]));
        if (hue >= 240) hue -= 240;
        std::uint64_t level = static_cast<std::uint64_t>(m1);
        if (hue < 40) {
            level =
                low32(m1 + static_cast<std::int64_t>(low32(static_cast<std::int64_t>(low32(m2 - m1)) * hue + 20) / 40));
        } else if (hue < 120) {
            level = static_cast<std::uint64_t>(m2);
        } else if (hue < 160) {
            level = low32(
                m1 + static_cast<std::int64_t>(low32(static_cast<std::int64_t>(low32(m2 - m1)) * 160 - hue + 20) / 40));
        }
        rgb[i] = low32(static_cast<std::int64_t>(level) * 255 + 120) / 240;
        if (s == 0) rgb[i] = static_cast<std::uint64_t>(l * 255 / 240);
    }
    return static_cast<std::uint32_t>((rgb[0] & 255) | (rgb[1] & 255) << 8 | (rgb[2] & 255) << 16);
}

TEST(PackedHsl, MatchesTheReferenceForEveryColour) {
    EXPORTED(KrRGBtoHSL);
    EXPORTED(KrHSLtoRGB);
    int differences = 0;
    for (std::uint32_t c = 0; c < 1u << 24; ++c) {
        const int first = c & 255, second = c >> 8 & 255, third = c >> 16 & 255;
        differences += KrRGBtoHSL(c) != referenceHsl(first, second, third);
        differences += KrHSLtoRGB(c) != referenceRgb(first, second, third);
    }
    EXPECT_EQ(differences, 0);
}

TEST(PackedHsl, GivesTheKnownColours) {
    EXPORTED(KrRGBtoHSL);
    EXPORTED(KrHSLtoRGB);
    EXPECT_EQ(KrRGBtoHSL(0xFFFFFF), 0xEF00A0u) << "white: lightness 239";
    EXPECT_EQ(KrRGBtoHSL(0xAB808080), 0x7800A0u) << "grey: hue 160; the highest bits are nothing";
    EXPECT_EQ(KrRGBtoHSL(0x0000FF), 0x78F000u) << "red";
    EXPECT_EQ(KrHSLtoRGB(0x78F000), 0x0000FFu);
    EXPECT_EQ(KrHSLtoRGB(0xCDF00078), 0xFFFFFFu & KrHSLtoRGB(0xF00078)) << "the highest bits are nothing";
}

} // namespace
} // namespace test
