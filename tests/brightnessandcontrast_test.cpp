// Brightness and contrast: pixels worked out by hand, the formulas in double precision pixel by pixel, and the analysis
// of footage.
#include <cmath>

#include "tests/support.h"

namespace {

using namespace test;

struct Setting {
    double brightness = 0, contrast = 0, center = 0.5;

    Settings settings() const {
        return {{"Brightness", {brightness}}, {"Contrast", {contrast}}, {"ContrastCenter", {center}}};
    }
    double factor(double limit) const { return contrast > 0 ? 1 / (limit - contrast) : contrast + 1; }
    bool neutral() const { return std::abs(brightness) <= 1e-6 && std::abs(contrast) <= 1e-6; }
};

// ---- the formulas

Expected byteResult(const Setting& s, Pixel p) {
    if (s.neutral()) return {p};
    for (std::size_t c = 0; c < 3; ++c) {
        const double v = ((p[c] / 255 + s.brightness - s.center) * s.factor(1.0000001) + s.center) * 255;
        p[c] = std::min(std::trunc(std::min(std::max(v, 0.0), 255.0)), p[3]);
    }
    return {p};
}

Expected floatResult(const Setting& s, Pixel p) {
    if (s.neutral()) return {p};
    double largest = 0;
    const auto pass = [&](auto formula) {
        const double alpha = p[3];
        if (alpha <= 1e-6) {
            p = {};
            return;
        }
        for (std::size_t c = 0; c < 3; ++c) {
            const double straight = alpha < 1 ? p[c] / alpha : p[c];
            const double result = formula(straight);
            largest = std::max({largest, std::abs(straight), std::abs(result)});
            p[c] = alpha < 1 ? result * alpha : result;
        }
        p[3] = std::min(alpha, 1.0);
    };
    const double factor = s.factor(1.000001);
    if (std::abs(s.brightness) > 1e-6) pass([&](double c) { return c + s.brightness; });
    if (std::abs(s.contrast) > 1e-6) pass([&](double c) { return (c - s.center) * factor + s.center; });
    // Single precision rounds eight times on the way, relative to the largest value that occurs; subtracting the centre
    // may leave little of it, which the factor then enlarges.
    return {p, 1e-6 * std::max(1.0, factor) * (largest + std::abs(s.brightness) + 1) * p[3]};
}

Expected result(const Setting& setting, const Format& format, const Pixel& p) {
    return format.depth == Depth::Byte ? byteResult(setting, p) : floatResult(setting, p);
}

std::shared_ptr<Image> filtered(const Setting& setting, std::shared_ptr<Image> source) {
    Session session;
    const auto instance = session.make(kBrightness, setting.settings());
    const Format format = source->format();
    const OfxRectI bounds = source->bounds();
    instance->clip("Source").connect(std::move(source));
    return rendered(*instance, format, bounds);
}

Pixel filtered(const Setting& setting, const Format& format, const Pixel& pixel) {
    const auto image = filtered(setting, flat(format, kBounds, pixel));
    EXPECT_TRUE(matches(*image, kBounds, [&](int, int) { return Expected{pixelAt(*image, 0, 0)}; }));
    return pixelAt(*image, 0, 0);
}

// ---- by hand

TEST(BrightnessAndContrast, LimitsBytesToTheirAlpha) {
    EXPECT_EQ(filtered({0.2}, kBytes, {100, 100, 0, 255}), (Pixel{151, 151, 51, 255}));
    EXPECT_EQ(filtered({0.2}, kBytes, {100, 20, 0, 120}), (Pixel{120, 71, 51, 120}))
        << "of stored values, not straight";
    EXPECT_EQ(filtered({1}, kBytes, {0, 0, 0, 0}), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(filtered({0.5}, kBytes, {9, 9, 9, 0}), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(filtered({0}, kBytes, {9, 9, 9, 0}), (Pixel{9, 9, 9, 0})) << "a neutral setting copies what it finds";
    EXPECT_EQ(filtered({-1}, kBytes, {255, 254, 3, 255}), (Pixel{0, 0, 0, 255}));
}

TEST(BrightnessAndContrast, FlattensToTheCenterAndCutsAtTheCenter) {
    EXPECT_EQ(filtered({0, -1, 0.5}, kBytes, {0, 90, 255, 255}), (Pixel{127, 127, 127, 255}));
    EXPECT_EQ(filtered({0, -1, 0.5}, kBytes, {0, 50, 100, 100}), (Pixel{100, 100, 100, 100}));
    EXPECT_EQ(filtered({0, -1, 0.9}, kBytes, {0, 90, 255, 255}), (Pixel{229, 229, 229, 255}));
    EXPECT_EQ(filtered({0, -1, 0.25}, kFloats, {0, 9, -4, 1}), (Pixel{0.25, 0.25, 0.25, 1}));
    EXPECT_EQ(filtered({0, 1, 0.5}, kBytes, {127, 128, 255, 255}), (Pixel{0, 255, 255, 255}));
    EXPECT_EQ(filtered({0, 1, 0.2}, kBytes, {50, 52, 0, 255}), (Pixel{0, 255, 0, 255}));
}

TEST(BrightnessAndContrast, DoesNotLimitFloats) {
    EXPECT_EQ(filtered({1}, kFloats, {0.5, 1, -0.25, 1}), (Pixel{1.5, 2, 0.75, 1}));
    EXPECT_EQ(filtered({-1}, kFloats, {0.5, 1, 0, 1}), (Pixel{-0.5, 0, -1, 1}));
    EXPECT_EQ(filtered({0.25}, kFloats, {0.25, 0, 0.5, 0.5}), (Pixel{0.375, 0.125, 0.625, 0.5}))
        << "of straight values";
    EXPECT_EQ(filtered({0, -0.5}, kFloats, {0.25, 0, 0.5, 0.5}), (Pixel{0.25, 0.125, 0.375, 0.5}));
    EXPECT_EQ(filtered({0.5, -0.5}, kFloats, {1, 0, 0, 1}), (Pixel{1, 0.5, 0.5, 1})) << "brightness comes first";
}

TEST(BrightnessAndContrast, TreatsTheEndsOfAlphaApart) {
    const float threshold = 1e-6f, above = std::nextafter(threshold, 1.0f);
    EXPECT_EQ(filtered({0.5}, kFloats, {7, 7, 7, 0}), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(filtered({0.5}, kFloats, {7, 7, 7, -1}), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(filtered({0, 0.5}, kFloats, {7, 7, 7, threshold}), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(filtered({0.5}, kFloats, {0, 0, 0, above})[3], above);
    EXPECT_EQ(filtered({0.5}, kFloats, {1, 2, 3, 1.5}), (Pixel{1.5, 2.5, 3.5, 1})) << "alpha above 1 becomes 1";
    EXPECT_EQ(filtered({0}, kFloats, {1, 2, 3, 1.5}), (Pixel{1, 2, 3, 1.5}));
}

// An amount too small to count is left out of floats, and still enters the table of the bytes.
TEST(BrightnessAndContrast, LeavesTinyAmountsOutOfFloatsOnly) {
    const Setting none = {0, -0.5, 128 / 255.0}, tiny = {-9e-7, -0.5, 128 / 255.0};
    const auto source = picture(kFloats, kBounds);
    EXPECT_TRUE(samePixels(*filtered(tiny, source), *filtered(none, source)));
    EXPECT_EQ(filtered(tiny, kBytes, {100, 100, 100, 255})[0], 113) << "just below 114";
    EXPECT_TRUE(samePixels(*filtered({1e-6, -1e-6}, source), *source)) << "both tiny: a copy";
    EXPECT_FALSE(samePixels(*filtered({1.1e-6, 0}, source), *source));
}

// ---- against the formulas

TEST(BrightnessAndContrast, IsWhatTheFormulasGive) {
    Random random(41);
    for (int i = 0; i < 250; ++i) {
        const auto amount = [&] { return random.pick({0.0, 1.0, -1.0, random.real(-1, 1), random.real(-1, 1), 5e-7}); };
        const Setting setting = {amount(), amount(), random.pick({0.0, 0.5, 1.0, random.real(0, 1)})};
        const Format format = random.pick({kBytes, kFloats, kBytesBGRA, kFloatsBGRA});
        const OfxRectI bounds = {0, 0, random.pick({random.integer(1, 70), random.integer(5000, 5100)}), 3};
        const auto source = picture(format, bounds, static_cast<std::uint64_t>(i));
        ASSERT_TRUE(matches(*filtered(setting, source), bounds,
                            [&](int x, int y) { return result(setting, format, pixelAt(*source, x, y)); }))
            << setting.brightness << " " << setting.contrast << " " << setting.center;
    }
}

TEST(BrightnessAndContrast, MapsEveryByteWithEveryAlpha) {
    const OfxRectI bounds = {0, 0, 256, 256};
    const auto source = blank(kBytes, bounds);
    for (int alpha = 0; alpha < 256; ++alpha)
        for (int i = 0; i < 256; ++i) put(*source, i, alpha, {i * 1.0, (i + 85) % 256 * 1.0, 255.0 - i, alpha * 1.0});
    for (const Setting& setting :
         {Setting{0.1, 0.3}, Setting{-0.4, -0.7, 0.2}, Setting{0.02, 0.999, 0.7}, Setting{0, 1}})
        EXPECT_TRUE(matches(*filtered(setting, source), bounds,
                            [&](int x, int y) { return byteResult(setting, pixelAt(*source, x, y)); }));
}

TEST(BrightnessAndContrast, WorksInPlace) {
    for (const Format format : kRendered) {
        const Setting setting = {0.2, 0.4};
        const OfxRectI bounds = {0, 0, 5003, 3};
        const auto source = picture(format, bounds), image = picture(format, bounds);
        Session session;
        const auto instance = session.make(kBrightness, setting.settings());
        instance->clip("Source").connect(image);
        EXPECT_EQ(render(*instance, image, bounds), kOfxStatOK);
        EXPECT_TRUE(samePixels(*image, *filtered(setting, source)));
    }
}

TEST(BrightnessAndContrast, ReadsItsParametersAtTheTimeOfTheRender) {
    Session session;
    const auto instance = session.make(kBrightness);
    instance->editKeys("Brightness", "0:0,10:0.4");
    instance->clip("Source").connect(flat(kBytes, kBounds, {51, 51, 51, 255}));
    const auto image = blank(kBytes, kBounds);
    EXPECT_EQ(render(*instance, image, kBounds, 5), kOfxStatOK);
    EXPECT_EQ(pixelAt(*image, 0, 0)[0], 102);
    host::RenderRequest request;
    request.window = kBounds;
    EXPECT_TRUE(instance->identity(request));
    request.time = 5;
    EXPECT_FALSE(instance->identity(request));
}

// ---- analysis

// Footage whose frame t has as many pixels of one grey as of the other; equal greys are a flat frame.
using Greys = std::function<std::pair<int, int>(int frame)>;

std::shared_ptr<Image> twoGreys(const Format& format, int low, int high) {
    const auto image = blank(format, {0, 0, 20, 10});
    const double unit = format.depth == Depth::Byte ? 1 : 1 / 255.0, full = 255 * unit;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x) {
            const double grey = (x < 10 ? low : high) * unit;
            put(*image, x, y, {grey, grey, grey, full});
        }
    return image;
}

class Analysis : public testing::Test {
protected:
    static host::Options options(std::vector<std::string>& messages, const std::function<bool(double)>& progress) {
        host::Options options;
        options.frames = {0, 3};
        options.onMessage = [&messages](const char*, const char*, const char* text) {
            messages.push_back(text);
            return kOfxStatOK;
        };
        options.onProgress = [&progress](const std::string&, double fraction) {
            return !progress || progress(fraction);
        };
        return options;
    }
    void connect(const Format& format, Greys greys) {
        instance->clip("Source").connect(
            [=](double time) {
                const auto [low, high] = greys(static_cast<int>(time));
                return twoGreys(format, low, high);
            },
            format);
    }
    void connect(const Format& format, int low, int high) {
        connect(format, [=](int) { return std::pair(low, high); });
    }
    void connect(int low, int high) { connect(kBytes, low, high); }
    double number(const char* name, double time = 0) const { return instance->parameters().at(name).number(time); }

    // What moves the greys to Min and Max about the centre.
    void expectSetting(int low, int high, double time = 0) const {
        const double lo = low / 255.0, hi = high / 255.0, min = number("Min"), max = number("Max"),
                     center = number("ContrastCenter");
        const double k = (max - min) / (hi - lo);
        EXPECT_NEAR(number("Contrast", time), k <= 1 ? k - 1 : 1 - 1 / k, 1e-6) << "at " << time;
        EXPECT_NEAR(number("Brightness", time), (min - center) / k + center - lo, 1e-6) << "at " << time;
    }
    void expectNothingSet() const {
        EXPECT_EQ(number("Brightness"), 0);
        EXPECT_EQ(number("Contrast"), 0);
        EXPECT_TRUE(instance->parameters().at("Brightness").keys().empty());
        EXPECT_TRUE(instance->parameters().edits().empty());
    }

    std::vector<std::string> messages;
    std::function<bool(double)> progress;
    Session session{options(messages, progress)};
    std::unique_ptr<Instance> instance = session.make(kBrightness);
};

TEST_F(Analysis, MovesTheFootagesEndsToMinAndMax) {
    for (const Format format : kRendered)
        for (const auto& [low, high] : {std::pair{60, 180}, std::pair{0, 255}, std::pair{10, 11}}) {
            connect(format, low, high);
            instance->press("DoAnalysis");
            expectSetting(low, high);
            const auto image = rendered(*instance, format, {0, 0, 20, 10});
            const double unit = format.depth == Depth::Byte ? 1 : 1 / 255.0;
            EXPECT_NEAR(pixelAt(*image, 0, 0)[0] / unit, 15, 1.01) << low;
            EXPECT_NEAR(pixelAt(*image, 19, 0)[0] / unit, 235, 1.01) << high;
        }
    EXPECT_TRUE(messages.empty());
}

TEST_F(Analysis, IsOneStepOfTheUndoList) {
    connect(60, 180);
    instance->press("DoAnalysis");
    EXPECT_EQ(instance->parameters().edits().size(), 1u);
    EXPECT_EQ(instance->parameters().openEdits(), 0);
    EXPECT_TRUE(instance->parameters().at("Brightness").keys().empty());
}

TEST_F(Analysis, MeasuresTheCurrentFrameAllFramesOrEachOne) {
    const Greys greys = [](int frame) {
        return frame == 2 ? std::pair(99, 99) : std::pair(80 - 20 * frame, 150 + 20 * frame);
    };
    connect(kBytes, greys);
    session.host.setTime(1);
    set(*instance, {{"ReferenceMode", {0}}});
    instance->press("DoAnalysis");
    expectSetting(60, 170, 1);
    set(*instance, {{"ReferenceMode", {1}}});
    instance->press("DoAnalysis");
    expectSetting(20, 210, 1);
    EXPECT_TRUE(instance->parameters().at("Contrast").keys().empty());
    set(*instance, {{"ReferenceMode", {2}}});
    instance->press("DoAnalysis");
    for (const char* name : {"Brightness", "Contrast"})
        EXPECT_EQ(instance->parameters().at(name).keys(), (std::vector{0.0, 1.0, 3.0})) << "the flat frame gets no key";
    for (const int frame : {0, 1, 3}) expectSetting(greys(frame).first, greys(frame).second, frame);
    EXPECT_TRUE(messages.empty());
}

TEST_F(Analysis, LeavesOutTheShareOfOutliersAndWhatIsTransparent) {
    const auto image = twoGreys(kBytes, 50, 200); // 200 pixels
    put(*image, 0, 0, {0, 0, 0, 255});
    put(*image, 19, 9, {255, 255, 255, 255});
    for (int y = 0; y < 10; ++y) put(*image, 5, y, {0, 0, 0, 0});
    instance->clip("Source").connect(image);
    instance->press("DoAnalysis");
    expectSetting(50, 200);
    set(*instance, {{"Percent", {0}}});
    instance->press("DoAnalysis");
    expectSetting(0, 255);
}

TEST_F(Analysis, MeasuresLuma) {
    for (const Format format : kRendered) {
        const double full = format.depth == Depth::Byte ? 255 : 1;
        const auto image = flat(format, {0, 0, 20, 10}, {full, 0, 0, full}); // 0.299 of 255
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 10; ++x) put(*image, x, y, {0, full, 0, full}); // 0.587 of 255
        instance->clip("Source").connect(image);
        instance->press("DoAnalysis");
        expectSetting(76, 150);
    }
}

TEST_F(Analysis, KeepsToTheParametersRanges) {
    connect(0, 255);
    set(*instance, {{"Min", {0.9}}, {"Max", {0.91}}});
    instance->press("DoAnalysis");
    EXPECT_EQ(number("Brightness"), 1);
    EXPECT_NEAR(number("Contrast"), -0.99, 1e-6);
}

TEST_F(Analysis, TellsProgressAndCanBeCancelled) {
    std::vector<double> told;
    progress = [&](double fraction) {
        told.push_back(fraction);
        return told.size() < 3;
    };
    connect(60, 180);
    instance->press("DoAnalysis");
    EXPECT_EQ(told.size(), 3u);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_LE(told.back(), 1);
    expectNothingSet();
    EXPECT_TRUE(messages.empty());
    EXPECT_FALSE(instance->progressLabel()) << "the progress was not ended";
}

TEST_F(Analysis, SaysWhyItCannotBeDone) {
    const auto expectRefusal = [&](const char* why) {
        messages.clear();
        instance->press("DoAnalysis");
        EXPECT_EQ(messages.size(), 1u) << why;
        expectNothingSet();
    };
    expectRefusal("no source");
    connect(100, 100);
    expectRefusal("flat footage");
    instance->clip("Source").connect(flat(kBytes, kBounds, {0, 0, 0, 0}));
    expectRefusal("nothing to see");
    connect(60, 180);
    set(*instance, {{"Min", {0.5}}, {"Max", {0.5}}});
    expectRefusal("no room between Min and Max");
}

TEST_F(Analysis, ChangesNothingWhereAFrameCannotBeHad) {
    instance->clip("Source").connect([](double time) { return time < 2 ? twoGreys(kBytes, 60, 180) : nullptr; },
                                     kBytes);
    for (const double mode : {1.0, 2.0}) {
        set(*instance, {{"ReferenceMode", {mode}}});
        EXPECT_NE(instance->changed("DoAnalysis"), kOfxStatOK);
        expectNothingSet();
        EXPECT_EQ(instance->imagesOutstanding(), 0);
        EXPECT_FALSE(instance->progressLabel());
    }
}

TEST(AnalysisElsewhere, NeedsNeitherProgressNorMessages) {
    host::Options options;
    options.suiteFilter = [](const std::string& name, int, const void* ours) -> const void* {
        return name == kOfxProgressSuite || name == kOfxMessageSuite || name == kOfxMultiThreadSuite ? nullptr : ours;
    };
    Session session(options);
    const auto instance = session.make(kBrightness);
    instance->press("DoAnalysis"); // no source, and nobody to tell
    instance->clip("Source").connect(twoGreys(kBytes, 60, 180));
    instance->press("DoAnalysis");
    EXPECT_NE(instance->parameters().at("Contrast").number(0), 0);
}

} // namespace
