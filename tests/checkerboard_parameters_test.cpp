// The checkerboard's parameters: links, animation, values out of range, and the records of the effect that it replaces.
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <span>

#include "tests/support.h"

namespace {

using namespace test;

std::shared_ptr<Image> painted(const Settings& settings, Format format = kBytes) {
    Session session(oneThread());
    return rendered(*session.make(kCheckerboard, settings), format, kBounds);
}

// ---- links and values

double number(const Instance& instance, const char* name) { return instance.parameters().at(name).number(0); }
bool enabled(const Instance& instance, const char* name) {
    return instance.parameters().at(name).properties().get<int>(kOfxParamPropEnabled) != 0;
}

struct Link {
    const char *lock, *leader, *follower;
};
constexpr Link kLinks[] = {{"TileDimensionsSquare", "TileDimensionsWidth", "TileDimensionsHeight"},
                           {"EdgeBlendingProportional", "EdgeBlendingHorizontal", "EdgeBlendingVertical"}};

TEST(Checkerboard, LinksHeightAndVerticalBlendWhileTheyAreLocked) {
    Session session;
    for (const Link& link : kLinks) {
        SCOPED_TRACE(link.lock);
        const auto instance = session.make(kCheckerboard);
        EXPECT_FALSE(enabled(*instance, link.follower));
        instance->edit(link.leader, "0.4");
        EXPECT_EQ(number(*instance, link.follower), 0.4);
        instance->edit(link.lock, "false");
        EXPECT_TRUE(enabled(*instance, link.follower));
        instance->edit(link.follower, "0.7");
        instance->edit(link.leader, "0.2");
        EXPECT_EQ(number(*instance, link.follower), 0.7);
        instance->edit(link.lock, "true");
        EXPECT_EQ(number(*instance, link.follower), 0.2);
        EXPECT_FALSE(enabled(*instance, link.follower));
    }
}

// A host that keeps something else than what was set, and tells of it from inside the call: each answer would cause
// another, if the links answered.
OfxStatus setInexactly(OfxParamHandle parameter, ...) {
    std::va_list values;
    va_start(values, parameter);
    const double value = va_arg(values, double);
    va_end(values);
    return host::kParameterSuite.paramSetValue(parameter, value + 0.001);
}

TEST(Checkerboard, DoesNotLinkWhileItIsLinking) {
    OfxParameterSuiteV1 suite = host::kParameterSuite;
    suite.paramSetValue = setInexactly;
    Session session(withSuite(kOfxParameterSuite, &suite));
    const auto instance = session.make(kCheckerboard);
    instance->edit("TileDimensionsWidth", "0.4");
    EXPECT_EQ(number(*instance, "TileDimensionsHeight"), 0.401);
}

TEST(Checkerboard, AppliesTheLinksWhenItIsCreated) {
    Session session;
    host::Plugin& plugin = session.plugin(kCheckerboard);
    Instance instance(plugin, plugin.describeInContext(kOfxImageEffectContextGenerator));
    set(instance, {{"TileDimensionsWidth", {0.6}}, {"EdgeBlendingProportional", {0}}, {"EdgeBlendingVertical", {0.3}}});
    ASSERT_EQ(instance.create(), kOfxStatOK);
    EXPECT_EQ(number(instance, "TileDimensionsHeight"), 0.6);
    EXPECT_EQ(number(instance, "EdgeBlendingVertical"), 0.3);
    EXPECT_FALSE(enabled(instance, "TileDimensionsHeight"));
    EXPECT_TRUE(enabled(instance, "EdgeBlendingVertical"));
}

// Some hosts set values after the creation and never tell.
TEST(Checkerboard, PaintsLockedTilesWhereTheHostDoesNotTellOfChanges) {
    const Settings linked = {{"TileDimensionsWidth", {0.3}}, {"EdgeBlendingHorizontal", {0.8}}};
    Settings stale = linked;
    stale["TileDimensionsHeight"] = {0.9}, stale["EdgeBlendingVertical"] = {0.1};
    EXPECT_TRUE(samePixels(*painted(stale), *painted(linked)));
}

TEST(Checkerboard, ReadsItsParametersAtTheTimeOfTheRender) {
    Session session(oneThread());
    const auto instance = session.make(kCheckerboard);
    instance->editKeys("TileDimensionsWidth", "0:0.125,10:0.375");
    instance->editKeys("GridOffsetX", "0:0,10:1");
    const auto image = blank(kBytes, kBounds);
    ASSERT_EQ(render(*instance, image, kBounds, 5), kOfxStatOK);
    EXPECT_TRUE(samePixels(*image, *painted({{"TileDimensionsWidth", {0.25}}, {"GridOffsetX", {0.5}}})));
}

TEST(Checkerboard, KeepsValuesOutOfRangeInside) {
    const double nan = std::nan("");
    const Settings wild = {{"TileDimensionsWidth", {-5}}, {"EdgeBlendingHorizontal", {1e300}}, {"GridOffsetX", {nan}}};
    const Settings tame = {{"TileDimensionsWidth", {0.001}}, {"EdgeBlendingHorizontal", {1}}, {"GridOffsetX", {0}}};
    for (const Format format : {kBytes, kFloats})
        EXPECT_TRUE(samePixels(*painted(wild, format), *painted(tame, format)));
    painted({{"Color1", {nan, 1e300, -1e300, nan}}}); // any colour will do
}

// ---- legacy records

struct Record {
    std::array<std::byte, 96> bytes{};

    template <class T>
    void put(std::size_t offset, T value) {
        std::memcpy(bytes.data() + offset, &value, sizeof value);
    }
    std::span<const std::byte> first(std::size_t size) const { return std::span(bytes).first(size); }
};

Record record(bool square, bool proportional) {
    Record r;
    const float colors[] = {0.25f, 0.5f, 0.75f, 1, 1, 0.125f, 0, 0.5f};
    for (std::size_t i = 0; i < 8; ++i) r.put(4 * i, colors[i]);
    const double numbers[] = {0.2, 0.3, 0.4, 0.5, 0.6, 0.7};
    for (std::size_t i = 0; i < 6; ++i) r.put(32 + 8 * i, numbers[i]);
    r.put<unsigned char>(80, square ? 2 : 0); // not only 1 is true
    r.put<unsigned char>(81, proportional ? 255 : 0);
    return r;
}

constexpr const char* kLegacy = "{DB10DAB1-5247-4194-B666-E076AD51BE19}";

TEST(Checkerboard, TakesOverLegacyRecords) {
    Session session;
    const auto instance = session.make(kCheckerboard);
    EXPECT_EQ(instance->uplift({kLegacy, record(false, false).first(88)}), kOfxStatOK);
    const std::pair<const char*, double> expected[] = {
        {"TileDimensionsWidth", 0.2},  {"TileDimensionsHeight", 0.3},  {"EdgeBlendingHorizontal", 0.4},
        {"EdgeBlendingVertical", 0.5}, {"GridOffsetX", 0.6},           {"GridOffsetY", 0.7},
        {"TileDimensionsSquare", 0},   {"EdgeBlendingProportional", 0}};
    for (const auto& [name, value] : expected) EXPECT_EQ(number(*instance, name), value) << name;
    EXPECT_EQ(instance->parameters().at("Color1").value(0).numbers, (std::array{0.25, 0.5, 0.75, 1.0}));
    EXPECT_EQ(instance->parameters().at("Color2").value(0).numbers, (std::array{1.0, 0.125, 0.0, 0.5}));
    EXPECT_TRUE(enabled(*instance, "TileDimensionsHeight"));
    EXPECT_TRUE(enabled(*instance, "EdgeBlendingVertical"));

    EXPECT_EQ(instance->uplift({kLegacy, record(true, true).first(88)}), kOfxStatOK);
    EXPECT_EQ(number(*instance, "TileDimensionsSquare"), 1);
    EXPECT_EQ(number(*instance, "EdgeBlendingProportional"), 1);
    EXPECT_EQ(number(*instance, "TileDimensionsHeight"), 0.2) << "locked to the width";
    EXPECT_FALSE(enabled(*instance, "TileDimensionsHeight"));
}

TEST(Checkerboard, RefusesLegacyRecordsOfAnotherLength) {
    Session session;
    const auto instance = session.make(kCheckerboard);
    const Record legacy = record(false, false);
    for (const std::size_t size : {0u, 1u, 32u, 80u, 87u, 89u, 96u})
        EXPECT_NE(instance->uplift({kLegacy, legacy.first(size)}), kOfxStatOK) << size;
    const auto raw = [&](void* data, int length) {
        host::PropertySet in;
        in.set(kOfxPropOrvixUpliftData, data);
        in.set(kOfxPropOrvixUpliftDataLength, length);
        return instance->action(kOfxImageEffectActionOrvixKeyframeUplift, &in);
    };
    EXPECT_NE(raw(nullptr, 88), kOfxStatOK);
    EXPECT_NE(raw(const_cast<std::byte*>(legacy.bytes.data()), -88), kOfxStatOK);
    EXPECT_EQ(number(*instance, "TileDimensionsWidth"), 0.1) << "nothing was taken";
    EXPECT_EQ(number(*instance, "TileDimensionsSquare"), 1);
}

TEST(Checkerboard, SurvivesLegacyRecordsOfNoise) {
    Session session(oneThread());
    Random random(34);
    for (int i = 0; i < 200; ++i) {
        Record noise;
        for (std::size_t at = 0; at < 88; at += 8) noise.put(at, random.next());
        if (i % 2 == 0) noise.put(random.pick<std::size_t>({32, 40, 64}), std::nan(""));
        const auto instance = session.make(kCheckerboard);
        instance->uplift({kLegacy, noise.first(88)});
        EXPECT_EQ(render(*instance, blank(kBytes, kBounds), kBounds), kOfxStatOK);
    }
}

} // namespace
