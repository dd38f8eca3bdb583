// Flash: every pixel against the formula, with a blur that is a plain weighted sum, and what happens without memory.
#include <cmath>

#include "tests/transition_support.h"

namespace {

using namespace test;

struct Flash {
    double p, horizontal = 0, vertical = 0;
    Pixel tint{1, 0.5, 0.25, 0};

    Settings settings() const {
        return {{"HorizontalDiffusion", {horizontal}},
                {"VerticalDiffusion", {vertical}},
                {"Tint", {tint[0], tint[1], tint[2]}}};
    }
};

// The luma of the picture, row by row.
using Luma = std::vector<std::vector<double>>;

// The Gaussian that is 1/255 at the radius, along the rows, edges repeated.
Luma blurred(const Luma& from, double radius) {
    const double sigma = radius / std::sqrt(2 * std::log(255.0));
    if (sigma < 1e-3) return from;
    const int reach = static_cast<int>(std::ceil(radius * 1.6));
    Luma to = from;
    for (std::size_t y = 0; y < from.size(); ++y)
        for (std::size_t x = 0; x < from[y].size(); ++x) {
            double sum = 0, weights = 0;
            for (int k = -reach; k <= reach; ++k) {
                const double w = std::exp(-k * k / (2 * sigma * sigma));
                const int last = static_cast<int>(from[y].size()) - 1;
                sum += w * from[y][static_cast<std::size_t>(std::min(std::max(static_cast<int>(x) + k, 0), last))];
                weights += w;
            }
            to[y][x] = sum / weights;
        }
    return to;
}

Luma transposed(const Luma& from) {
    Luma to(from[0].size(), std::vector<double>(from.size()));
    for (std::size_t y = 0; y < from.size(); ++y)
        for (std::size_t x = 0; x < from[y].size(); ++x) to[x][y] = from[y][x];
    return to;
}

// What the flash makes of the pictures on a scale of 0..1.
struct Reference {
    Reference(const Between& pictures, const Flash& flash) : source(flash.p < 0.5 ? *pictures.from : *pictures.to) {
        const double p = static_cast<float>(flash.p), a = 2 * (p < 0.5 ? p : 1 - p);
        white = a * a, gain = 1 - (1 - a) * (1 - a);
        const OfxRectI& b = source.bounds();
        const double W = b.x2 - b.x1, H = b.y2 - b.y1, r = pictures.aspect;
        const double size = std::trunc(std::max(W * (r < 1 ? r : 1), H * (r < 1 ? 1 : 1 / r)));
        full = source.format().depth == Depth::Byte ? 255 : 1;
        for (int y = b.y1; y < b.y2; ++y) {
            luma.emplace_back();
            for (int x = b.x1; x < b.x2; ++x) {
                const Pixel s = pixelAt(source, x, y);
                luma.back().push_back((0.299 * s[0] + 0.587 * s[1] + 0.114 * s[2]) / full);
            }
        }
        luma = blurred(luma, flash.horizontal * 0.25 * size * gain / r);
        luma = transposed(blurred(transposed(luma), flash.vertical * 0.25 * size * gain));
    }

    Pixel at(const Flash& flash, int x, int y) const {
        const Pixel s = pixelAt(source, x, y);
        const OfxRectI& b = source.bounds();
        if (gain == 0) return s;
        const double L = luma[static_cast<std::size_t>(y - b.y1)][static_cast<std::size_t>(x - b.x1)] * gain;
        Pixel o;
        o[3] = std::min(1.0, L + white + s[3] / full);
        for (std::size_t c = 0; c < 3; ++c) {
            o[c] = L * flash.tint[c] + white + s[c] / full;
            if (full > 1) o[c] = std::min(std::max(o[c], 0.0), o[3]);
        }
        for (double& component : o) component *= full;
        return o;
    }

    const Image& source;
    double white, gain, full;
    Luma luma;
};

void expectFlash(const Format& format, OfxRectI bounds, double aspect, const Flash& flash, unsigned threads) {
    host::Options options;
    options.threads = threads;
    Session session(options);
    Between pictures(session, kFlash, format, bounds, aspect);
    const Reference reference(pictures, flash);
    const auto image = pictures.at(flash.p, flash.settings());
    // The fast blur is off by up to 0.0007 of a step; bytes are rounded to the nearest.
    const bool diffuses = flash.horizontal > 0 || flash.vertical > 0;
    const double blur = diffuses ? 1e-3 : 0;
    const double tolerance = format.depth == Depth::Byte ? 0.5 + 255 * blur + 1e-3 : blur + 1e-6;
    EXPECT_TRUE(pictures.shows(*image,
                               [&](const Pixel&, const Pixel&, int x, int y) {
                                   return Expected{reference.at(flash, x, y), tolerance};
                               }))
        << "at " << flash.p << ", diffusion " << flash.horizontal << " " << flash.vertical << ", aspect " << aspect;
}

TEST(Flash, FollowsItsFormula) {
    Random random(3);
    for (const Format& format : kRendered)
        for (const double p : {0.0, 0.1, 0.4999, 0.5, 0.75, 1.0, random.real(0, 1)}) {
            expectFlash(format, kBounds, 1, {p}, 1);
            const Pixel tint = {random.real(0, 1), random.real(0, 1), random.real(0, 1), 0};
            expectFlash(format, kBounds, 1, {p, 0, 0, tint}, 2);
        }
}

TEST(Flash, DiffusesAlongEachAxisByItself) {
    Random random(4);
    for (const Format& format : kRendered)
        for (const double aspect : {1.0, 0.9, 2.0})
            for (const auto& [horizontal, vertical] :
                 {std::pair{0.3, 0.0}, std::pair{0.0, 0.7}, std::pair{1.0, 0.05}, std::pair{0.02, 0.0}}) {
                const OfxRectI bounds = random.pick({OfxRectI{0, 0, 61, 37}, OfxRectI{-7, 5, 26, 130}});
                expectFlash(format, bounds, aspect, {random.real(0.1, 0.9), horizontal, vertical}, 3);
            }
}

// The usual case: opaque video, and the black tint that hosts begin with.
TEST(Flash, OfOpaqueBytesAddsWhite) {
    Session session(oneThread());
    Random random(5);
    for (int i = 0; i < 40; ++i) {
        Between pictures(session, kFlash, kBytes, {0, 0, 67, 9});
        for (const auto& image : {pictures.from, pictures.to})
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 67; ++x) {
                    Pixel p = pixelAt(*image, x, y);
                    if (y < 7) p[3] = 255; // the rest keeps its holes
                    put(*image, x, y, p);
                }
        const Flash flash{random.real(0, 1), 0, 0, {}};
        const Reference reference(pictures, flash);
        EXPECT_TRUE(pictures.shows(*pictures.at(flash.p, flash.settings()), [&](const Pixel&, const Pixel&, int x,
                                                                                int y) {
            return Expected{reference.at(flash, x, y), 0.5 + 1e-3};
        })) << flash.p;
    }
}

TEST(Flash, LeavesAFlatPictureFlat) {
    Session session;
    Between pictures(session, kFlash, kBytes, {0, 0, 300, 200});
    pictures.instance->clip("SourceFrom").connect(flat(kBytes, {0, 0, 300, 200}, {120, 60, 30, 255}));
    const auto image = pictures.at(0.3, {{"HorizontalDiffusion", {1}}, {"VerticalDiffusion", {1}}});
    const Pixel first = pixelAt(*image, 0, 0);
    EXPECT_TRUE(matches(*image, image->bounds(), [&](int, int) { return Expected{first}; }));
}

// The host's memory suite, as far as it gives anything.
struct Memory {
    static inline std::atomic<int> limit = 0, held = 0;
    static OfxStatus alloc(void*, std::size_t bytes, void** data) {
        if (held >= limit) return kOfxStatErrMemory;
        ++held;
        // Not on a cache line.
        *data = static_cast<std::byte*>(std::malloc(bytes + 8)) + 8;
        return kOfxStatOK;
    }
    static OfxStatus free(void* data) {
        --held;
        std::free(static_cast<std::byte*>(data) - 8);
        return kOfxStatOK;
    }
    static constexpr OfxMemorySuiteV1 kSuite = {alloc, free};
};

TEST(Flash, WritesNothingWithoutMemoryForTheDiffusion) {
    for (const int limit : {0, 1}) {
        Memory::limit = limit;
        Session session(withSuite(kOfxMemorySuite, &Memory::kSuite));
        Between pictures(session, kFlash, kBytes, kBounds);
        const auto image = pictures.at(0.3, {{"HorizontalDiffusion", {0.5}}});
        EXPECT_EQ(static_cast<bool>(untouchedOutside(*image, {0, 0, 0, 0})), limit == 0);
        EXPECT_EQ(Memory::held, 0);
        // Without diffusion none is needed.
        EXPECT_FALSE(untouchedOutside(*pictures.at(0.3, {{"HorizontalDiffusion", {0}}}), {0, 0, 0, 0}));
    }
    Session session(withSuite(kOfxMemorySuite, nullptr));
    Between pictures(session, kFlash, kBytes, kBounds);
    EXPECT_FALSE(untouchedOutside(*pictures.at(0.3, {{"HorizontalDiffusion", {0.5}}}), {0, 0, 0, 0}));
}

} // namespace
