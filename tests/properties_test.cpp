// What holds for every effect and format, whatever it paints: threads, orders, layouts and origins change nothing, and
// nothing is written where nothing belongs.
#include <cstring>
#include <limits>

#include "tests/transition_support.h"

namespace {

using namespace test;

// Rows that are long enough for loops that write past the caches.
constexpr OfxRectI kWide = {0, 0, 5003, 3};

class EveryEffectOfOneGrid : public EveryEffect {};
class EveryEffectOfNamedColors : public EveryEffect {};

std::vector<std::string> without(std::initializer_list<std::string> left) {
    std::vector<std::string> effects = builtEffects();
    for (const std::string& effect : left) std::erase(effects, effect);
    return effects;
}

class EveryEffectWithoutGeometry : public EveryEffect {};
class EveryEffectOnPremultipliedColours : public EveryEffect {};

INSTANTIATE_TEST_SUITE_P(Properties, EveryEffect, testing::ValuesIn(builtEffects()), effectName);
// The checkerboard's grid restarts in every band and in every window; its own tests say how.
INSTANTIATE_TEST_SUITE_P(Properties, EveryEffectOfOneGrid, testing::ValuesIn(without({kCheckerboard})), effectName);
// The color corrector takes components by their places in memory.
INSTANTIATE_TEST_SUITE_P(Properties, EveryEffectOfNamedColors, testing::ValuesIn(without({kCorrector})), effectName);

TEST_P(EveryEffectOfOneGrid, PaintsTheSameWithAnyNumberOfThreads) {
    for (const Format format : kRendered)
        for (const OfxRectI& bounds : {kBounds, kWide})
            for (const unsigned threads : {1u, 4u, 7u}) {
                host::Options options;
                options.threads = threads;
                Session session(options);
                const auto instance = ready(session, format, bounds);
                EXPECT_TRUE(samePixels(*rendered(*instance, format, bounds), *painted(format, bounds))) << threads;
            }
}

// These take the window for their frame; each one's own tests say how.
INSTANTIATE_TEST_SUITE_P(Properties, EveryEffectWithoutGeometry,
                         testing::ValuesIn(without({kCheckerboard, kLinearWipe, kClockWipe, kFlash, kKeyer})),
                         effectName);

TEST_P(EveryEffectWithoutGeometry, PaintsAWindowAsItPaintsTheWhole) {
    Session session(oneThread());
    for (const Format format : kRendered) {
        const auto instance = ready(session, format, kBounds);
        const auto whole = rendered(*instance, format, kBounds);
        const OfxRectI window = {7, 9, 30, 17};
        const auto image = blank(format, kBounds);
        EXPECT_EQ(render(*instance, image, window), kOfxStatOK);
        EXPECT_TRUE(untouchedOutside(*image, window));
        EXPECT_TRUE(matches(*image, window, [&](int x, int y) { return Expected{pixelAt(*whole, x, y), 0}; }));
    }
}

TEST_P(EveryEffectOfNamedColors, PaintsTheSameInBothOrders) {
    for (const Depth depth : {Depth::Byte, Depth::Float})
        for (const OfxRectI& bounds : {kBounds, kWide}) {
            const auto red = painted({depth}, bounds), blue = painted({depth, Components::RGBA, Order::BGRA}, bounds);
            EXPECT_TRUE(matches(*blue, bounds, [&](int x, int y) { return Expected{pixelAt(*red, x, y), 0}; }));
            EXPECT_FALSE(std::memcmp(red->row(0), blue->row(0), 200) == 0)
                << "a picture without colours proves nothing";
        }
}

TEST_P(EveryEffect, KeepsToTheLayoutOfImages) {
    Session session(oneThread());
    for (const Format format : kRendered)
        for (const int padding : {0, 4, 60, format.depth == Depth::Byte ? 3 : 8})
            for (const bool sourceDown : {false, true})
                for (const bool outputDown : {false, true}) {
                    const auto instance = ready(session, format, kBounds, {padding, sourceDown, 64});
                    const auto image = rendered(*instance, format, kBounds, {padding, outputDown, 128});
                    EXPECT_TRUE(samePixels(*image, *painted(format)));
                    EXPECT_TRUE(untouchedOutside(*image, kBounds)) << "padding or guards were written";
                }
}

TEST_P(EveryEffect, DoesNotDependOnTheOrigin) {
    Session session(oneThread());
    for (const Format format : kRendered)
        for (const auto& [x, y] : {std::pair{100, 50}, std::pair{-70, -33}, std::pair{-20, 1000000}}) {
            const OfxRectI moved = {kBounds.x1 + x, kBounds.y1 + y, kBounds.x2 + x, kBounds.y2 + y};
            const auto instance = ready(session, format, moved);
            EXPECT_TRUE(samePixels(*rendered(*instance, format, moved), *painted(format)));
        }
}

// Widths around the vectors' lengths, starting anywhere, in rows that keep or lose their alignment.
TEST_P(EveryEffect, PaintsEveryWidthAtEveryAlignment) {
    Session session(oneThread());
    for (const Format format : kRendered) {
        std::vector<int> widths(70);
        for (int i = 0; i < 70; ++i) widths[std::size_t(i)] = i + 1;
        for (const int more : {0, 1, 2, 3, 13, 37}) widths.push_back(kWide.x2 + more);
        for (const int width : widths) {
            const int x1 = width * 5 % 17;
            const OfxRectI window = {x1, 2, x1 + width, 4}, bounds = {0, 0, x1 + width + 3, 6};
            const int odd = format.depth == Depth::Byte ? width % 4 : 4 * (width % 4);
            // All rows are of one length, as transitions want them.
            const int padding = (x1 + 3) * format.pixelBytes() + odd;
            const auto instance = ready(session, format, window, {padding, false, 64});
            const auto image = blank(format, bounds, {odd, width % 2 == 1, 64});
            EXPECT_EQ(render(*instance, image, window), kOfxStatOK);
            EXPECT_TRUE(untouchedOutside(*image, window)) << width;
            const auto alone = painted(format, {0, 0, width, 2});
            EXPECT_TRUE(matches(*image, window, [&](int x, int y) {
                return Expected{pixelAt(*alone, x - x1, y - 2), 0};
            })) << width;
        }
    }
}

// The keyer leaves straight colours, and says so.
INSTANTIATE_TEST_SUITE_P(Properties, EveryEffectOnPremultipliedColours, testing::ValuesIn(without({kKeyer})),
                         effectName);

TEST_P(EveryEffectOnPremultipliedColours, KeepsBytesPremultiplied) {
    for (const Format format : {kBytes, kBytesBGRA}) {
        const auto image = painted(format);
        for (int y = kBounds.y1; y < kBounds.y2; ++y)
            for (int x = kBounds.x1; x < kBounds.x2; ++x) {
                const Pixel p = pixelAt(*image, x, y);
                ASSERT_LE(std::max({p[0], p[1], p[2]}), p[3]) << x << " " << y;
            }
    }
}

// Every float there is: the copy of a neutral filter changes not a bit of them.
TEST_P(EveryEffect, CopiesBitForBitWhereItSaysThatItIsNeutral) {
    constexpr float kOdd[] = {std::numeric_limits<float>::quiet_NaN(),  -std::numeric_limits<float>::signaling_NaN(),
                              std::numeric_limits<float>::infinity(),   -std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::denorm_min(), -0.0f,
                              std::numeric_limits<float>::max()};
    Session session;
    for (const Format format : kRendered)
        for (const OfxRectI& bounds : {kBounds, kWide}) {
            const auto instance = session.make(GetParam());
            if (instance->context() != kOfxImageEffectContextFilter) continue;
            const auto source = picture(format, bounds);
            if (format.depth == Depth::Float)
                for (int y = bounds.y1; y < bounds.y2; ++y)
                    for (int i = 0; i < 4 * source->width(); i += 3)
                        std::memcpy(source->row<float>(y) + i, &kOdd[(i + y) % 7], sizeof(float));
            instance->clip("Source").connect(source);
            host::RenderRequest request;
            request.time = 3;
            request.window = bounds;
            const auto identity = instance->identity(request);
            if (!identity) continue;
            EXPECT_EQ(identity->clip, "Source");
            EXPECT_EQ(identity->time, 3);
            EXPECT_TRUE(samePixels(*rendered(*instance, format, bounds), *source));
            setUnusual(*instance);
            EXPECT_FALSE(instance->identity(request));
        }
}

// The region of an effect is unbounded without sources, and that of its source for a filter.
TEST_P(EveryEffect, HasTheRegionOfItsContext) {
    Session session;
    const auto instance = ready(session, kBytes, {-5, -6, 70, 80});
    const OfxRectD region = instance->regionOfDefinition(0);
    const bool isFilter = instance->context() == kOfxImageEffectContextFilter;
    EXPECT_EQ(region.x1, isFilter ? -5 : -2147483648.0);
    EXPECT_EQ(region.y1, isFilter ? -6 : -2147483648.0);
    EXPECT_EQ(region.x2, isFilter ? 70 : 2147483647.0);
    EXPECT_EQ(region.y2, isFilter ? 80 : 2147483647.0);
}

} // namespace
