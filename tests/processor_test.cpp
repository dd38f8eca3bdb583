// The road of a render as a host sees it: threads and bands, formats, orders, windows that do not fit, abort.
#include <algorithm>
#include <atomic>
#include <climits>

#include "host/services.h"
#include "tests/support.h"

namespace {

using namespace test;
using host::PropertySet;

// A checkerboard of two rows of tiles per band, so that the bands show: from the bottom up, 2 rows are color 2 and
// color 1; 3 rows have a mixed one between them.
const Settings kTwoRowsPerBand = {
    {"TileDimensionsSquare", {0}}, {"TileDimensionsWidth", {1}}, {"TileDimensionsHeight", {0.5}}};

std::string bandsOf(const Image& image) {
    std::string rows;
    for (int y = image.bounds().y1; y < image.bounds().y2; ++y) {
        const double red = pixelAt(image, image.bounds().x1, y)[0];
        rows += red == 0 ? '1' : red == 255 ? '2' : '-';
    }
    return rows;
}

std::string bandsWith(host::Options options, int rows = 10) {
    Session session(std::move(options));
    return bandsOf(*rendered(*session.make(kCheckerboard, kTwoRowsPerBand), kBytes, {0, 0, 4, rows}));
}

// ---- bands and threads

TEST(Bands, AreTheRowsFromIndexToIndexPlusOneTimesHeightByCount) {
    host::Options options;
    options.threads = 4;
    EXPECT_EQ(bandsWith(options),
              "21"
              "2-1"
              "21"
              "2-1"); // 0-2, 2-5, 5-7, 7-10
    options.threads = 1;
    EXPECT_EQ(bandsWith(options), "2222211111");
    options.threads = 3;
    EXPECT_EQ(bandsWith(options),
              "2-1"
              "2-1"
              "2211"); // 0-3, 3-6, 6-10
}

TEST(Bands, MayBeEmptyWhereThereAreMoreThreadsThanRows) {
    host::Options options;
    options.threads = 7;
    const std::string bands = bandsWith(options, 3); // three bands of one row each: its tile is one row high
    EXPECT_EQ(bands, "111");
}

// What the multi-thread suite of a test does; suites are C functions, so the wishes stand beside them.
struct Threads {
    static inline unsigned cpus = 4, passed = 4, calls = 0;
    static inline OfxStatus countStatus = kOfxStatOK, runStatus = kOfxStatOK;

    static OfxStatus run(OfxThreadFunctionV1 function, unsigned, void* argument) {
        ++calls;
        for (unsigned i = 0; i < passed; ++i) function(i, passed, argument);
        return runStatus;
    }
    static OfxStatus count(unsigned* cpuCount) {
        *cpuCount = cpus;
        return countStatus;
    }
    static host::Options host(unsigned cpuCount, OfxStatus counted, unsigned run, OfxStatus ran) {
        static OfxMultiThreadSuiteV1 suite = host::kMultiThreadSuite;
        suite.multiThread = Threads::run;
        suite.multiThreadNumCPUs = count;
        cpus = cpuCount, countStatus = counted, passed = run, runStatus = ran, calls = 0;
        return withSuite(kOfxMultiThreadSuite, &suite, 4);
    }
};

TEST(Bands, FollowTheCountThatTheHostPasses) {
    EXPECT_EQ(bandsWith(Threads::host(16, kOfxStatOK, 4, kOfxStatOK)), "212-1212-1");
    EXPECT_EQ(bandsWith(Threads::host(2, kOfxStatOK, 1, kOfxStatOK)), "2222211111");
}

TEST(Bands, AreOneWhereTheHostHasNoThreads) {
    const std::string one = "2222211111";
    EXPECT_EQ(bandsWith(Threads::host(4, kOfxStatFailed, 4, kOfxStatOK)), one) << "the count fails";
    EXPECT_EQ(Threads::calls, 0u);
    EXPECT_EQ(bandsWith(Threads::host(0, kOfxStatOK, 4, kOfxStatOK)), one) << "the count is 0";
    EXPECT_EQ(bandsWith(Threads::host(1, kOfxStatOK, 4, kOfxStatOK)), one);
    EXPECT_EQ(Threads::calls, 0u) << "one thread needs no call";
    EXPECT_EQ(bandsWith(Threads::host(4, kOfxStatOK, 0, kOfxStatErrExists)), one) << "a nested call";
    EXPECT_EQ(bandsWith(Threads::host(4, kOfxStatOK, 0, kOfxStatOK)), one) << "OK, and nothing ran";
    EXPECT_EQ(bandsWith(Threads::host(4, kOfxStatOK, 4, kOfxStatFailed)), one) << "ran, and failed all the same";
    EXPECT_EQ(bandsWith(withSuite(kOfxMultiThreadSuite, nullptr, 4)), one);
}

// ---- for every effect

INSTANTIATE_TEST_SUITE_P(Processor, EveryEffect, testing::ValuesIn(builtEffects()), effectName);

// ---- formats

TEST_P(EveryEffect, WritesNothingInFormatsThatItDoesNotRender) {
    Session session;
    for (const Format format : {Format{Depth::Short}, Format{Depth::Half}, Format{Depth::Byte, Components::RGB},
                                Format{Depth::Float, Components::RGB}, Format{Depth::Short, Components::Alpha}}) {
        const auto instance = session.make(GetParam());
        setUnusual(*instance);
        for (const auto& clip : instance->clips())
            if (!clip->isOutput()) clip->connect(blank(format, kBounds));
        const auto image = blank(format, kBounds, {.guardBytes = 64});
        EXPECT_EQ(render(*instance, image, kBounds), kOfxStatOK);
        EXPECT_TRUE(untouchedOutside(*image, {})) << ofxName(format.depth) << " " << ofxName(format.components);
    }
}

TEST(AlphaImages, ArePaintedByGeneratorsAndCopiedByColorFilters) {
    Session session(oneThread());
    for (const Depth depth : {Depth::Byte, Depth::Float}) {
        const Format alpha{depth, Components::Alpha}, rgba{depth};
        const Settings settings = {
            {"Color1", {0.25, 0.5, 0.75, 0.5}}, {"Color2", {0.1, 0.2, 0.3, 0.9}}, {"EdgeBlendingHorizontal", {0.7}}};
        const auto generator = session.make(kCheckerboard, settings);
        const auto whole = rendered(*generator, rgba, kBounds);
        EXPECT_TRUE(matches(*rendered(*generator, alpha, kBounds, {.guardBytes = 64}), kBounds, [&](int x, int y) {
            return Expected{{0, 0, 0, pixelAt(*whole, x, y)[3]}, 0};
        }));
        const auto filter = session.make(kBrightness, {{"Brightness", {0.5}}, {"Contrast", {-0.5}}});
        const auto source = picture(alpha, kBounds);
        filter->clip("Source").connect(source);
        EXPECT_TRUE(samePixels(*rendered(*filter, alpha, kBounds), *source));
    }
}

// The order of the components stands in a property of its own, which outranks the name of the depth.
TEST(PixelOrder, ComesFromItsPropertyElseFromTheDepth) {
    const struct {
        const char* depth;
        const char* order; // null: the host knows none
        bool blueFirst;
    } cases[] = {{kOfxBitDepthByte, kOfxImagePixelOrderBGRA, true},
                 {kOfxBitDepthByteBGR, kOfxImagePixelOrderRGBA, false},
                 {kOfxBitDepthByteBGR, kOfxImagePixelOrderBGRA, true},
                 {kOfxBitDepthByteBGR, "OfxImagePixelOrderARGB", false},
                 {kOfxBitDepthByteBGR, nullptr, true},
                 {kOfxBitDepthByte, nullptr, false},
                 {kOfxBitDepthFloatBGR, nullptr, true},
                 {kOfxBitDepthFloat, kOfxImagePixelOrderBGRA, true}};
    for (const auto& c : cases) {
        host::Options options = oneThread();
        options.extensions = c.order != nullptr;
        options.onImage = [&](PropertySet& image) {
            image.set(kOfxImageEffectPropPixelDepth, c.depth);
            if (c.order != nullptr) image.set(kOfxImageEffectPropPixelOrder, c.order);
        };
        Session session(options);
        const auto generator = session.make(kCheckerboard, {{"Color1", {1, 0.5, 0, 1}}});
        const Depth depth = std::string(c.depth).find("Byte") != std::string::npos ? Depth::Byte : Depth::Float;
        const double red = pixelAt(*rendered(*generator, {depth}, {0, 0, 20, 20}), 0, 19)[0];
        EXPECT_EQ(red == 0, c.blueFirst) << c.depth << " " << (c.order ? c.order : "");
    }
}

// An image that lives on a device only, or that makes no sense.
TEST_P(EveryEffect, FailsOnImagesThatItCannotAddress) {
    std::function<void(PropertySet&)> change;
    host::Options options;
    options.onImage = [&change](PropertySet& image) { change(image); };
    Session session(options);
    const auto instance = ready(session);
    const auto image = blank(kBytes, kBounds);
    change = [](PropertySet& p) { p.set<void*>(kOfxImagePropData, nullptr); };
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    change = [](PropertySet& p) { p.set(kOfxImagePropRowBytes, 37 * 4 - 1); };
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    change = [](PropertySet& p) { p.set(kOfxImagePropBounds, std::vector{INT_MIN, 0, INT_MAX, 2}); };
    EXPECT_EQ(render(*instance, image, kBounds), kOfxStatFailed);
    change = [](PropertySet& p) { p.set(kOfxImagePropBounds, std::vector{9, 9, 3, 3}); };
    render(*instance, image, kBounds); // any answer will do: there is nothing to write to
    EXPECT_TRUE(untouchedOutside(*image, {}));
}

// ---- OpenCL

TEST_P(EveryEffect, RendersOnTheProcessorWhereOpenCLIsAskedForWithoutHandles) {
    int something = 0;
    const auto expected = painted();
    for (void* context : {static_cast<void*>(nullptr), static_cast<void*>(&something)})
        for (void* queue : {static_cast<void*>(nullptr), static_cast<void*>(&something)}) {
            if (context != nullptr && queue != nullptr) continue;
            host::Options options = oneThread();
            options.onAction = [=](const std::string& action, PropertySet* in, PropertySet*) {
                if (action != kOfxImageEffectActionRender) return;
                in->set(kOfxImageEffectPropOpenCLEnabled, 1);
                in->set(kOfxImageEffectPropOpenCLContext, context);
                in->set(kOfxImageEffectPropOpenCLCommandQueue, queue);
            };
            EXPECT_TRUE(samePixels(*painted(options), *expected));
        }
}

// ---- windows

TEST_P(EveryEffect, WritesInsideTheOutputAndTheWindowOnly) {
    Session session;
    const OfxRectI windows[] = {{5, 3, 20, 11},     {-9, -9, 12, 8},         {30, 15, 60, 40},  {-50, -50, 90, 90},
                                {0, 20, 37, 21},    {36, 0, 37, 21},         {100, 0, 120, 21}, {0, -30, 37, 0},
                                {8, 8, 8, 12},      {8, 8, 12, 8},           {20, 10, 5, 3},    {0, 0, 2000000000, 21},
                                {0, 0, 37, 100000}, {-2000000000, 0, 37, 21}};
    for (const Format format : kRendered) {
        const auto instance = ready(session, format);
        for (const OfxRectI& window : windows) {
            const auto image = blank(format, kBounds, {.rowPadding = 12, .guardBytes = 256});
            EXPECT_EQ(render(*instance, image, window), kOfxStatOK);
            EXPECT_TRUE(untouchedOutside(*image, window))
                << window.x1 << " " << window.y1 << " " << window.x2 << " " << window.y2;
        }
    }
}

TEST_P(EveryEffect, SurvivesWindowsBeyondAllMeasure) {
    Session session(oneThread());
    const auto instance = ready(session);
    for (const OfxRectI& window : {OfxRectI{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, OfxRectI{INT_MIN, 0, INT_MAX, 21},
                                   OfxRectI{0, INT_MIN, 37, INT_MAX}, OfxRectI{INT_MAX, INT_MAX, INT_MIN, INT_MIN}}) {
        const auto image = blank(kBytes, kBounds, {.guardBytes = 256});
        render(*instance, image, window); // any answer will do
        EXPECT_TRUE(image->guardsIntact());
    }
    EXPECT_TRUE(samePixels(*rendered(*instance, kBytes, kBounds), *painted()));
}

TEST_P(EveryEffect, StopsWhenTheHostAborts) {
    std::atomic<int> questions = 0;
    host::Options options;
    options.threads = 2;
    options.abort = [&questions] { return ++questions > 0; };
    Session session(options);
    const auto instance = ready(session);
    const auto image = blank(kBytes, kBounds);
    render(*instance, image, kBounds);
    EXPECT_GT(questions, 0);
    EXPECT_TRUE(untouchedOutside(*image, {}));
}

// A filter of colours, neutral or not: what its source does not have is transparent black, which it leaves alone.
TEST(Sources, AreTransparentBlackOutsideTheirBounds) {
    Session session;
    for (const Format format : kRendered)
        for (const Settings& settings : {Settings{}, Settings{{"Brightness", {0.5}}, {"Contrast", {0.3}}}})
            for (const OfxRectI& bounds : {OfxRectI{10, 5, 22, 9}, OfxRectI{-10, -10, 12, 8}, OfxRectI{20, 3, 50, 50},
                                           OfxRectI{40, 0, 60, 21}, OfxRectI{0, -9, 37, 0}}) {
                const auto filter = session.make(kBrightness, settings);
                filter->clip("Source").connect(picture(format, kBounds));
                const auto whole = rendered(*filter, format, kBounds);
                auto part = blank(format, bounds);
                const auto all = picture(format, kBounds);
                const auto inside = [&](const OfxRectI& r, int x, int y) {
                    return x >= r.x1 && x < r.x2 && y >= r.y1 && y < r.y2;
                };
                for (int y = kBounds.y1; y < kBounds.y2; ++y)
                    for (int x = kBounds.x1; x < kBounds.x2; ++x)
                        if (inside(bounds, x, y)) put(*part, x, y, pixelAt(*all, x, y));
                filter->clip("Source").connect(part);
                const auto image = rendered(*filter, format, kBounds, {.guardBytes = 64});
                EXPECT_TRUE(matches(*image, kBounds, [&](int x, int y) {
                    return Expected{inside(bounds, x, y) ? pixelAt(*whole, x, y) : Pixel{}, 0};
                }));
                EXPECT_TRUE(image->guardsIntact());
            }
}

} // namespace
