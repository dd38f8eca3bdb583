// What holds for every transition: its clips and its progress, its ends, and when it renders nothing.
#include "tests/transition_support.h"

namespace {

using namespace test;

class EveryTransition : public EveryEffect {};

std::vector<std::string> transitions() {
    std::vector<std::string> found;
    Session session;
    for (const std::string& effect : builtEffects()) {
        if (session.plugin(effect).contexts().front() == kOfxImageEffectContextTransition) found.push_back(effect);
    }
    return found;
}

INSTANTIATE_TEST_SUITE_P(Transitions, EveryTransition, testing::ValuesIn(transitions()), effectName);

TEST_P(EveryTransition, HasItsClipsAndItsProgress) {
    Session session;
    const auto instance = session.make(GetParam());
    std::vector<std::string> clips;
    for (const auto& clip : instance->clips()) clips.push_back(clip->name());
    EXPECT_EQ(clips, (std::vector<std::string>{"Output", "SourceFrom", "SourceTo"}));

    const host::Parameter& progress = *instance->parameters().all().front();
    EXPECT_EQ(progress.name(), "Transition");
    EXPECT_EQ(progress.kind().type, std::string(kOfxParamTypeDouble));
    EXPECT_EQ(progress.properties().get<double>(kOfxParamPropMin), 0);
    EXPECT_EQ(progress.properties().get<double>(kOfxParamPropMax), 1);

    // Unbounded, whatever the inputs are.
    const OfxRectD region = instance->regionOfDefinition(0);
    EXPECT_EQ(region.x1, -2147483648.0);
    EXPECT_EQ(region.y2, 2147483647.0);
}

// At the ends, and beyond them, one picture alone; the exceptions are the dissolve's modes that limit colours or have
// no pure ends, which its own test calculates.
TEST_P(EveryTransition, ShowsOnePictureAtEachEnd) {
    Session session(oneThread());
    for (const Format& format : {kBytes, kFloats, kBytesBGRA, kFloatsBGRA, Format{Depth::Byte, Components::Alpha},
                                 Format{Depth::Float, Components::Alpha}}) {
        Between pictures(session, GetParam(), format, kBounds);
        setUnusual(*pictures.instance);
        EXPECT_TRUE(samePixels(*pictures.at(0), *pictures.from));
        EXPECT_TRUE(samePixels(*pictures.at(1), *pictures.to));
        EXPECT_TRUE(samePixels(*pictures.at(-3), *pictures.from));
        EXPECT_TRUE(samePixels(*pictures.at(7), *pictures.to));
        EXPECT_FALSE(samePixels(*pictures.at(0.5), *pictures.from));
    }
}

TEST_P(EveryTransition, RendersNothingFromImagesWithOtherRows) {
    Session session(oneThread());
    for (const int odd : {0, 1}) {
        Between pictures(session, GetParam(), kBytes, kBounds);
        pictures.instance->clip(odd == 0 ? "SourceFrom" : "SourceTo").connect(picture(kBytes, {0, 0, 38, 21}));
        EXPECT_TRUE(untouchedOutside(*pictures.at(0.5), {0, 0, 0, 0}));
    }
    // What counts is the length of rows in pixels, whichever way they go.
    Between pictures(session, GetParam(), kBytes, kBounds);
    const auto usual = pictures.at(0.5);
    pictures.instance->clip("SourceTo").connect(picture(kBytes, kBounds, 2, {3, true, 64}));
    EXPECT_TRUE(samePixels(*pictures.at(0.5), *usual));
}

} // namespace
