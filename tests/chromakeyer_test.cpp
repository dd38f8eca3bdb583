// Chroma keyer: the matte to the last code against its measure in double precision, the soft matte against plain sums,
// and what the keyer leaves alone.
#include <cmath>
#include <limits>

#include "tests/support.h"

namespace {

using namespace test;

struct Setting {
    double low = 0, high = 1, blur = 0;
    bool mask = false;
    Pixel color = {24 / 255.0, 71 / 255.0, 241 / 255.0, 0};

    Settings settings() const {
        return {{"LowThreshold", {low}},
                {"HighThreshold", {high}},
                {"BlurAmount", {blur}},
                {"ShowMaskOnly", {mask ? 1.0 : 0.0}},
                {"color", {color[0], color[1], color[2]}}};
    }
};

// ---- the measure

struct Hsl {
    double h, s, l;
};

Hsl hslOf(const Pixel& c) {
    const double r = c[0], g = c[1], b = c[2];
    const double max = std::max(r, std::max(g, b)), min = std::min(r, std::min(g, b)), d = max - min,
                 l = (max + min) / 2;
    if (l <= 0 || d <= 0) return {0, 0, l};
    const double s = l <= 0.5 ? d / (max + min) : d / (2 - max - min);
    const double sixth = r == max   ? (g == min ? 5 + (max - b) / d : 1 - (max - g) / d)
                         : g == max ? (b == min ? 1 + (max - r) / d : 3 - (max - b) / d)
                                    : (r == min ? 3 + (max - g) / d : 5 - (max - r) / d);
    return {sixth / 6, s, l};
}

double distance(const Pixel& color, const Pixel& pixel, double full) {
    Pixel c = pixel;
    for (std::size_t i = 0; i < 3; ++i) {
        c[i] /= full;
        if (pixel[3] > 0 && pixel[3] < full) c[i] *= full / pixel[3];
    }
    const Hsl a = hslOf(c), k = hslOf(color);
    double dh = std::abs(a.h - k.h);
    if (dh > 0.5) dh = 1 - dh;
    const double rgb = std::sqrt((c[0] - color[0]) * (c[0] - color[0]) + (c[1] - color[1]) * (c[1] - color[1]) +
                                 (c[2] - color[2]) * (c[2] - color[2]));
    return (rgb * 1.7320508 + (2 * dh + std::abs(a.l - k.l) + std::abs(a.s - k.s)) / 3) * 0.5;
}

// In 0..full; whole for bytes.
double matteOf(const Setting& s, const Pixel& pixel, double full) {
    const double D = distance(s.color, pixel, full);
    const double scale = std::abs(s.high - s.low) < 1e-6 ? 0 : 1 / (s.high - s.low);
    if (D < s.low) return 0;
    if (D > s.high - 1e-6) return full;
    const double m = std::min(std::max((D - s.low) * scale * full, 0.0), full);
    return full > 1 ? std::trunc(m) : m;
}

Pixel keyed(const Setting& s, Pixel pixel, double matte, double full) {
    pixel[3] = std::min(pixel[3], matte);
    return s.mask ? Pixel{pixel[3], pixel[3], pixel[3], full} : pixel;
}

double fullOf(const Format& format) { return format.depth == Depth::Byte ? 255 : 1; }

std::shared_ptr<Image> render(Session& session, const Setting& setting, const std::shared_ptr<Image>& source) {
    const auto instance = session.make(kKeyer, setting.settings());
    instance->clip("Source").connect(source);
    return rendered(*instance, source->format(), source->bounds());
}

// ---- the hard matte

std::vector<Setting> hardSettings() {
    Random random(21);
    std::vector<Setting> all = {{},     {0.2, 0.5},       {0.3, 0.3}, {0.6, 0.2},
                                {0, 0}, {0.25, 0.250002}, {1, 1},     {0, 1, 0, true}};
    for (int i = 0; i < 12; ++i) {
        const double low = random.real(0, 0.6);
        Setting s{low, low + random.pick({0.001, 0.05, random.real(0, 0.5)}), 0, i % 4 == 0};
        s.color = {random.real(0, 1), random.pick({0.0, 1.0, random.real(0, 1)}), random.real(0, 1), 0};
        all.push_back(s);
    }
    for (const double grey : {0.0, 0.5, 1.0}) all.push_back({0.1, 0.6, 0, false, {grey, grey, grey, 0}});
    return all;
}

TEST(ChromaKeyer, MatteIsExactOnBytes) {
    Session session(oneThread());
    for (const Format& format : {kBytes, kBytesBGRA}) {
        const auto source = picture(format, {0, 0, 401, 203}, 5);
        for (const Setting& s : hardSettings())
            EXPECT_TRUE(matches(*render(session, s, source), source->bounds(),
                                [&](int x, int y) {
                                    const Pixel p = pixelAt(*source, x, y);
                                    return Expected{keyed(s, p, matteOf(s, p, 255), 255)};
                                }))
                << s.low << " " << s.high;
    }
}

// Every opaque colour of a coarse cube and every grey, with a key among them: ties between components, and distances of
// 0.
TEST(ChromaKeyer, MatteIsExactWhereComponentsAreTheSame) {
    Session session(oneThread());
    const auto source = blank(kBytes, {0, 0, 256, 256});
    const std::array<double, 16> levels = {0, 1, 2, 17, 51, 85, 100, 119, 127, 128, 153, 170, 200, 221, 254, 255};
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            const auto level = [&](int i) { return levels[static_cast<std::size_t>(i % 16)]; };
            put(*source, x, y, {level(x), level(x / 16), level(y), y < 128 ? 255.0 : 254.0});
        }
    for (const Pixel& color :
         {Pixel{0, 1, 0, 0}, Pixel{1, 1, 0, 0}, Pixel{0.2, 0.6, 0.2, 0}, Pixel{1 / 3.0, 0, 2 / 3.0, 0}})
        for (const double low : {0.0, 0.1}) {
            const Setting s{low, low + 0.5, 0, false, color};
            EXPECT_TRUE(matches(*render(session, s, source), source->bounds(), [&](int x, int y) {
                const Pixel p = pixelAt(*source, x, y);
                return Expected{keyed(s, p, matteOf(s, p, 255), 255)};
            }));
        }
}

TEST(ChromaKeyer, MatteIsContinuousOnFloats) {
    Session session(oneThread());
    for (const Format& format : {kFloats, kFloatsBGRA}) {
        const auto source = picture(format, {0, 0, 203, 101}, 6);
        for (const Setting& s : hardSettings())
            EXPECT_TRUE(matches(*render(session, s, source), source->bounds(),
                                [&](int x, int y) {
                                    const Pixel p = pixelAt(*source, x, y);
                                    // A step is a step: within the distance's rounding, either side of it. Tiny alphas
                                    // leave little precision.
                                    const double d = distance(s.color, p, 1), error = 2e-6 * (1 + d);
                                    const double steepness =
                                        std::abs(s.high - s.low) < 1e-6 ? 0 : 1 / std::abs(s.high - s.low);
                                    const bool step =
                                        std::abs(d - s.low) < error || std::abs(d - s.high) < error + 1e-6;
                                    const Pixel value = keyed(s, p, matteOf(s, p, 1), 1);
                                    return Expected{value, step && steepness * error > 1e-5 ? 1
                                                           : step                           ? 1e-3
                                                                                            : error * steepness + 1e-6};
                                }))
                << s.low << " " << s.high;
    }
}

TEST(ChromaKeyer, KeepsPixelsThatAreNoNumbers) {
    Session session(oneThread());
    const auto source = picture(kFloats, {0, 0, 8, 2}, 7);
    const double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();
    put(*source, 3, 0, {nan, 0.5, 0.5, 1});
    put(*source, 5, 1, {0.1, infinity, 0.9, 1});
    for (const double blur : {0.0, 0.01}) {
        const auto image = render(session, {0, 1, blur}, source);
        if (blur == 0) {
            EXPECT_EQ(pixelAt(*image, 3, 0)[3], 1);
            EXPECT_EQ(pixelAt(*image, 5, 1)[3], 1);
        }
        for (int x = 0; x < 8; ++x) EXPECT_FALSE(std::isnan(pixelAt(*image, x, 0)[3])) << x;
    }
}

TEST(ChromaKeyer, LeavesPicturesOfAlphaAlone) {
    Session session(oneThread());
    for (const Depth depth : {Depth::Byte, Depth::Float})
        for (const double blur : {0.0, 0.1}) {
            const auto source = picture({depth, Components::Alpha}, kBounds, 8);
            EXPECT_TRUE(samePixels(*render(session, {0, 1, blur}, source), *source));
        }
}

// ---- the soft matte

// By rows from the bottom.
using Plane = std::vector<std::vector<double>>;

double at(const Plane& plane, int x, int y) {
    const int width = static_cast<int>(plane[0].size()), height = static_cast<int>(plane.size());
    return plane[static_cast<std::size_t>(std::clamp(y, 0, height - 1))]
                [static_cast<std::size_t>(std::clamp(x, 0, width - 1))];
}

bool besideHole(const Plane& hard, int x, int y, double& sum) {
    bool hole = false;
    sum = 0;
    for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i) {
            if (i == 0 && j == 0) continue;
            hole |= at(hard, x + i, y + j) == 0;
            sum += at(hard, x + i, y + j);
        }
    return hole;
}

// Weights inside the picture only.
Plane blurred(const Plane& from, double sigma, bool columns) {
    Plane to = from;
    const int width = static_cast<int>(from[0].size()), height = static_cast<int>(from.size());
    const int reach = static_cast<int>(std::ceil(4 * sigma));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double sum = 0, weights = 0;
            for (int k = -reach; k <= reach; ++k) {
                const int i = x + (columns ? 0 : k), j = y + (columns ? k : 0);
                if (i < 0 || j < 0 || i >= width || j >= height) continue;
                const double w = std::exp(-k * k / (2 * sigma * sigma));
                sum += w * at(from, i, j), weights += w;
            }
            to[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = sum / weights;
        }
    return to;
}

void expectSoft(const Format& format, OfxRectI bounds, const Setting& s, double aspect, unsigned threads) {
    host::Options options;
    options.threads = threads;
    Session session(options);
    const auto source = screened(format, bounds);
    const auto instance = session.make(kKeyer, s.settings());
    instance->clip("Source").connect(source);
    host::RenderRequest request;
    request.output = blank(format, bounds);
    request.output->pixelAspect = aspect;
    ASSERT_EQ(instance->render(request), kOfxStatOK);

    const double full = fullOf(format), W = bounds.x2 - bounds.x1, H = bounds.y2 - bounds.y1;
    Plane hard, refined;
    for (int y = bounds.y1; y < bounds.y2; ++y) {
        hard.emplace_back();
        for (int x = bounds.x1; x < bounds.x2; ++x) hard.back().push_back(matteOf(s, pixelAt(*source, x, y), full));
    }
    refined = hard;
    double sum = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            if (besideHole(hard, x, y, sum))
                refined[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = std::min(at(hard, x, y), sum / 8);
    const double sx = aspect < 1 ? aspect : 1, sy = aspect < 1 ? 1 : 1 / aspect;
    const double R = std::max(W * sx, H * sy) * s.blur * 0.25 + 1.5, root = std::sqrt(2 * std::log(255.0));
    const Plane soft = blurred(blurred(refined, R * sx / root, false), R * sy / root, true);

    EXPECT_TRUE(matches(*request.output, bounds,
                        [&](int x, int y) {
                            Pixel p = pixelAt(*source, x, y);
                            const int i = x - bounds.x1, j = y - bounds.y1;
                            if (besideHole(hard, i, j, sum)) p[1] = std::min(p[1], std::max(p[0], p[2]));
                            return Expected{keyed(s, p, at(soft, i, j), full), full > 1 ? 1.0 : 3e-3};
                        }))
        << s.blur << " " << aspect;
}

TEST(ChromaKeyer, SoftMatteIsRefinedBlurredAndCleanOfSpill) {
    const Pixel green = {0.1, 0.8, 0.15, 0};
    for (const Format& format : kRendered)
        for (const double aspect : {1.0, 0.9, 2.0})
            for (const double blur : {0.001, 0.2, 1.0})
                expectSoft(format, {3, -2, 64, 45}, {0.1, 0.4, blur, aspect > 1, green}, aspect, aspect < 1 ? 3 : 1);
}

TEST(ChromaKeyer, SoftMatteWantsOneShapeOfPicture) {
    Session session(oneThread());
    const auto instance = session.make(kKeyer, Setting{0, 1, 0.1}.settings());
    instance->clip("Source").connect(picture(kBytes, {0, 0, 40, 21}));
    EXPECT_TRUE(untouchedOutside(*rendered(*instance, kBytes, kBounds), {0, 0, 0, 0}));
    set(*instance, {{"BlurAmount", {0}}});
    EXPECT_FALSE(untouchedOutside(*rendered(*instance, kBytes, kBounds), {0, 0, 0, 0}));
}

// Its colours are those of the source, whatever its alpha becomes.
TEST(ChromaKeyer, TellsTheHostThatColoursAreStraight) {
    Session session;
    EXPECT_EQ(session.make(kKeyer)->clipPreferences().premultiplication, kOfxImageUnPreMultiplied);
}

} // namespace
