// Dissolve: its ten modes, each against the plainest form of its formula, and which controls can be edited when.
#include <cmath>

#include "tests/transition_support.h"

namespace {

using namespace test;

struct Look {
    int mode;
    double p;
    Pixel bleed{}, morph{}, color{0, 0, 0, 1};

    Settings settings() const {
        Settings s = {{"Type", {mode * 1.0}}, {"FadeThroughColor", {color.begin(), color.end()}}};
        const char* channels[] = {"Red", "Green", "Blue", "Alpha"};
        for (std::size_t c = 0; c < 4; ++c) {
            s[std::string("ColorBleedSpeed") + channels[c]] = {bleed[c]};
            s[std::string("ColorMorphSpeed") + channels[c]] = {morph[c]};
        }
        return s;
    }
};

// ---- bytes

using Codes = std::array<int, 4>;

Codes codesOf(const Pixel& p) {
    Codes codes{};
    for (std::size_t c = 0; c < 4; ++c) codes[c] = static_cast<int>(p[c]);
    return codes;
}

int blend(int a, int b, int t) {
    const int d = (b - a) * t + 128;
    return std::min(std::max(a + ((d + (d >> 8)) >> 8), 0), 255);
}

int cut(double x) { return static_cast<int>(std::min(std::max(x, 0.0), 255.0)); }

Codes byteResult(const Look& look, const Codes& F, const Codes& T) {
    const double p = static_cast<float>(look.p);
    const int w = static_cast<int>(std::floor(p * 1024 + 0.5)), q = static_cast<int>(std::floor(p * 255 + 0.5));
    const auto brightness = [](const Codes& c) {
        return static_cast<int>((static_cast<std::int64_t>(c[0] + c[1] + c[2]) * 5726623064) >> 32);
    };
    Codes O{};
    const auto limit = [&O] {
        for (std::size_t c = 0; c < 3; ++c) O[c] = O[c] >= O[3] ? O[3] : O[c];
    };
    O[3] = blend(F[3], T[3], q);
    switch (look.mode) {
        case 0:
            for (std::size_t c = 0; c < 4; ++c)
                O[c] = w >= 512 ? std::min(T[c] + ((F[c] * (2 * (1024 - w))) >> 10), 255)
                                : std::min(F[c] + ((T[c] * (2 * w)) >> 10), 255);
            return O;
        case 1:
            for (std::size_t c = 0; c < 3; ++c)
                O[c] = w >= 512 ? std::abs(T[c] - F[c] * 2 * (1024 - w) / 1024) : std::abs(F[c] - T[c] * 2 * w / 1024);
            limit();
            return O;
        case 2:
            for (std::size_t c = 0; c < 3; ++c) O[c] = std::abs((T[c] + F[c]) * w / 1024 - F[c]);
            limit();
            return O;
        case 3:
        case 4: {
            const Pixel& speed = look.mode == 3 ? look.bleed : look.morph;
            int N = 0;
            for (const double s : speed) N = std::max(N, static_cast<int>(255 / (1 + s)));
            const int k = static_cast<int>(N * p + 0.5);
            for (std::size_t c = 0; c < 4; ++c) {
                const int passed = cut(k * (1 + speed[c])), left = cut((N - k) * (1 + speed[c]));
                O[c] = look.mode == 3 ? std::max(F[c] - passed, 0) + std::max(T[c] - left, 0)
                                      : F[c] + std::min(std::max(T[c] - F[c], -passed), passed);
            }
            if (look.mode == 4 && p == 0) return F;
            if (look.mode == 4 && p == 1) return T;
            O[3] = std::min(O[3], 255);
            limit();
            return O;
        }
        case 5:
            return brightness(F) > w ? F : T;
        case 6:
            return brightness(T) < 1024 - w ? F : T;
        case 7:
        case 8: {
            const bool late = q >= 127;
            const int f = late ? std::min(std::max(2 * q - 254, 0), 255) : 2 * q;
            for (std::size_t c = 0; c < 4; ++c) {
                int middle = (F[0] + F[1] + F[2] + T[0] + T[1] + T[2]) / 6;
                if (look.mode == 8) {
                    middle = static_cast<int>(255 * look.color[c] * (c < 3 ? look.color[3] : 1));
                } else if (c == 3) {
                    continue;
                }
                O[c] = late ? blend(middle, T[c], f) : blend(F[c], middle, f);
            }
            return O;
        }
        default: {
            const int start[] = {0, 85, 170};
            for (std::size_t c = 0; c < 3; ++c)
                O[c] = blend(F[c], T[c], std::min(std::max(3 * (q - start[c]), 0), 255));
            limit();
            return O;
        }
    }
}

// ---- floats

Pixel floatResult(const Look& look, const Pixel& F, const Pixel& T) {
    const double p = static_cast<float>(look.p);
    const auto mix = [](double a, double b, double t) { return a + (b - a) * t; };
    const auto unit = [](double x) { return std::min(std::max(x, 0.0), 1.0); };
    Pixel O{};
    const auto limit = [&O] {
        for (std::size_t c = 0; c < 3; ++c) O[c] = std::min(O[c], O[3]);
    };
    O[3] = mix(F[3], T[3], p);
    const bool picture = look.mode == 0 || look.mode == 4 || look.mode == 7 || look.mode == 8;
    if (picture && p == 0) return F;
    if (picture && p == 1) return T;
    switch (look.mode) {
        case 0:
            for (std::size_t c = 0; c < 4; ++c)
                O[c] = std::min(p >= 0.5 ? T[c] + F[c] * 2 * (1 - p) : F[c] + T[c] * 2 * p, 1.0);
            return O;
        case 1:
            for (std::size_t c = 0; c < 3; ++c)
                O[c] = std::abs(p >= 0.5 ? T[c] - F[c] * 2 * (1 - p) : F[c] - T[c] * 2 * p);
            limit();
            return O;
        case 2:
            for (std::size_t c = 0; c < 3; ++c) O[c] = std::abs((T[c] + F[c]) * p - F[c]);
            limit();
            return O;
        case 3:
        case 4: {
            const Pixel& speed = look.mode == 3 ? look.bleed : look.morph;
            double N = 0;
            for (const double s : speed) N = std::max(N, 1 / (1 + s));
            for (std::size_t c = 0; c < 4; ++c) {
                const double passed = unit(N * p * (1 + speed[c])), left = unit(N * (1 - p) * (1 + speed[c]));
                O[c] = look.mode == 3 ? std::max(F[c] - passed, 0.0) + std::max(T[c] - left, 0.0)
                                      : F[c] + std::min(std::max(T[c] - F[c], -passed), passed);
            }
            if (look.mode == 3) O[3] = std::min(O[3], 1.0);
            limit();
            return O;
        }
        case 5:
            return (F[0] + F[1] + F[2]) / 3 * 1020 / 1024 > p ? F : T;
        case 6:
            return (T[0] + T[1] + T[2]) / 3 * 1020 / 1024 < 1 - p ? F : T;
        case 7:
        case 8:
            for (std::size_t c = 0; c < 4; ++c) {
                double middle = (F[0] + F[1] + F[2] + T[0] + T[1] + T[2]) / 6;
                if (look.mode == 8) {
                    middle = look.color[c] * (c < 3 ? look.color[3] : 1);
                } else if (c == 3) {
                    continue;
                }
                O[c] = p >= 0.5 ? mix(middle, T[c], 2 * p - 1) : mix(F[c], middle, 2 * p);
            }
            return O;
        default:
            for (std::size_t c = 0; c < 3; ++c) O[c] = mix(F[c], T[c], unit(3 * p - static_cast<double>(c)));
            limit();
            return O;
    }
}

// A few roundings, of numbers up to about 2.
constexpr double kFloatTolerance = 1e-6;

Expected expected(const Look& look, const Format& format, const Pixel& F, const Pixel& T) {
    if (format.depth == Depth::Float) return {floatResult(look, F, T), kFloatTolerance};
    const Codes codes = byteResult(look, codesOf(F), codesOf(T));
    return {{codes[0] * 1.0, codes[1] * 1.0, codes[2] * 1.0, codes[3] * 1.0}};
}

class Dissolve : public testing::TestWithParam<int> {};

std::string modeName(const testing::TestParamInfo<int>& mode) { return "Mode" + std::to_string(mode.param); }
INSTANTIATE_TEST_SUITE_P(Modes, Dissolve, testing::Range(0, 10), modeName);

TEST_P(Dissolve, FollowsItsFormula) {
    Session session(oneThread());
    Random random(11);
    // Both ends, the middle with its neighbours (w = 512 and q = 127 change halves), the thirds, and anything.
    std::vector<double> progresses = {0, 1, 0.5, 0.49951, 0.4995, 127 / 255.0, 126.4 / 255, 85 / 255.0, 2 / 3.0, 1e-4};
    for (int i = 0; i < 12; ++i) progresses.push_back(random.real(0, 1));
    for (const Format& format : kRendered) {
        Between pictures(session, kDissolve, format, kBounds);
        for (const double p : progresses) {
            Look look{GetParam(), p};
            for (std::size_t c = 0; c < 4; ++c) {
                look.bleed[c] = random.pick({0.0, 1.0, random.real(0, 1)});
                look.morph[c] = random.pick({0.0, 1.0, random.real(0, 1)});
                look.color[c] = random.pick({0.0, 1.0, random.real(0, 1)});
            }
            EXPECT_TRUE(pictures.shows(*pictures.at(p, look.settings()), [&](const Pixel& F, const Pixel& T, int, int) {
                return expected(look, format, F, T);
            })) << p;
        }
    }
}

TEST_P(Dissolve, TakesAlphaAloneAsAGreyPicture) {
    Session session(oneThread());
    for (const Depth depth : {Depth::Byte, Depth::Float}) {
        const Format format = {depth, Components::Alpha};
        Between pictures(session, kDissolve, format, {0, 0, 600, 2});
        for (const double p : {0.0, 0.3, 0.7, 1.0}) {
            const Look look{GetParam(), p, {0.1, 0.2, 0.3, 0.4}, {0.4, 0.3, 0.2, 0.1}, {0.3, 0.5, 0.7, 0.6}};
            EXPECT_TRUE(pictures.shows(*pictures.at(p, look.settings()), [&](const Pixel& F, const Pixel& T, int, int) {
                const auto grey = [](const Pixel& a) { return Pixel{a[3], a[3], a[3], a[3]}; };
                Expected result = expected(look, format, grey(F), grey(T));
                result.value[0] = result.value[1] = result.value[2] = 0;
                return result;
            })) << p;
        }
    }
}

// All pairs of codes at all fades: the blend is not everywhere the nearest code.
TEST(DissolveBlend, IsExactForAllCodes) {
    Session session(oneThread());
    auto from = blank(kBytes, {0, 0, 256, 256}), to = blank(kBytes, {0, 0, 256, 256});
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            put(*from, x, y, {0, 0, 0, x * 1.0});
            put(*to, x, y, {0, 0, 0, y * 1.0});
        }
    const auto instance = session.make(kDissolve, {{"Type", {9}}});
    instance->clip("SourceFrom").connect(from);
    instance->clip("SourceTo").connect(to);
    for (int q = 0; q < 256; ++q) {
        set(*instance, {{"Transition", {q / 255.0}}});
        const auto image = rendered(*instance, kBytes, {0, 0, 256, 256});
        EXPECT_TRUE(matches(*image, image->bounds(), [&](int x, int y) {
            return Expected{{0, 0, 0, blend(x, y, q) * 1.0}};
        })) << q;
    }
}

TEST(DissolveControls, CanBeEditedWhereTheModeUsesThem) {
    Session session;
    const auto instance = session.make(kDissolve);
    for (const int mode : {0, 3, 4, 8, 9, 0}) {
        instance->edit("Type", std::to_string(mode));
        for (const auto& parameter : instance->parameters().all()) {
            const std::string& name = parameter->name();
            const bool bleed = name.starts_with("ColorBleedSpeed") && name != "ColorBleedSpeed";
            const bool morph = name.starts_with("ColorMorphSpeed") && name != "ColorMorphSpeed";
            if (!bleed && !morph && name != "FadeThroughColor") continue;
            EXPECT_EQ(parameter->properties().get<int>(kOfxParamPropEnabled) != 0, bleed   ? mode == 3
                                                                                   : morph ? mode == 4
                                                                                           : mode == 8)
                << name << " in mode " << mode;
            EXPECT_EQ(parameter->properties().getOr(kOfxParamPropSecret, 0), 0);
        }
    }
}

TEST(DissolveModes, UnknownOnesWriteNothing) {
    Session session(oneThread());
    Between pictures(session, kDissolve, kBytes, kBounds);
    for (const double mode : {-1.0, 10.0}) {
        const auto image = pictures.at(0.5, {{"Type", {mode}}});
        EXPECT_TRUE(untouchedOutside(*image, {0, 0, 0, 0}));
    }
}

} // namespace
