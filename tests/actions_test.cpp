// Hosts that call in the wrong order, with the wrong things, too often, or at the same time as another of their
// threads.
#include <atomic>
#include <thread>

#include "tests/support.h"

namespace {

using namespace test;
using host::Descriptor;
using host::PropertySet;

// Every action that needs an instance.
constexpr const char* kInstanceActions[] = {
    kOfxActionDestroyInstance,
    kOfxImageEffectActionRender,
    kOfxImageEffectActionBeginSequenceRender,
    kOfxImageEffectActionEndSequenceRender,
    kOfxImageEffectActionIsIdentity,
    kOfxImageEffectActionGetRegionOfDefinition,
    kOfxImageEffectActionGetRegionsOfInterest,
    kOfxImageEffectActionGetFramesNeeded,
    kOfxImageEffectActionGetClipPreferences,
    kOfxActionPurgeCaches,
    kOfxActionSyncPrivateData,
    kOfxImageEffectActionGetTimeDomain,
    kOfxActionBeginInstanceChanged,
    kOfxActionInstanceChanged,
    kOfxActionEndInstanceChanged,
    kOfxActionBeginInstanceEdit,
    kOfxActionEndInstanceEdit,
    kOfxImageEffectActionOrvixKeyframeUplift,
    kOfxImageEffectActionInvokeHelp,
    kOfxImageEffectActionInvokeAbout,
};

bool failed(OfxStatus status) { return status != kOfxStatOK && status != kOfxStatReplyDefault; }

// Arguments with everything that any action reads.
PropertySet arguments() {
    PropertySet in;
    in.set(kOfxPropTime, 0.0);
    in.set(kOfxPropType, kOfxTypeParameter);
    in.set(kOfxPropName, "Brightness");
    in.set(kOfxPropChangeReason, kOfxChangeUserEdited);
    in.set(kOfxImageEffectPropContext, kOfxImageEffectContextFilter);
    in.set(kOfxImageEffectPropRenderWindow, std::vector{0, 0, 37, 21});
    in.set(kOfxImageEffectPropRenderScale, std::vector{1.0, 1.0});
    in.set(kOfxImageEffectPropFieldToRender, kOfxImageFieldNone);
    in.set(kOfxImageEffectPropRegionOfInterest, std::vector{0.0, 0.0, 37.0, 21.0});
    return in;
}

INSTANTIATE_TEST_SUITE_P(Actions, EveryEffect, testing::ValuesIn(builtEffects()), effectName);

TEST_P(EveryEffect, AnswersAFailureWithoutInstanceData) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    Instance never(plugin, plugin.describeInContext(plugin.contexts().front()));
    for (const char* action : kInstanceActions) {
        PropertySet in = arguments(), out;
        EXPECT_TRUE(failed(never.action(action, &in, &out))) << action;
    }
}

TEST_P(EveryEffect, AnswersAFailureToNullAndForeignHandles) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    plugin.load();
    int foreign = 0;
    std::vector<const char*> actions(std::begin(kInstanceActions), std::end(kInstanceActions));
    for (const char* action : {kOfxActionDescribe, kOfxImageEffectActionDescribeInContext, kOfxActionCreateInstance})
        actions.push_back(action);
    for (const char* action : actions) {
        PropertySet in = arguments(), out;
        EXPECT_TRUE(failed(plugin.action(action, nullptr, &in, &out))) << action;
        EXPECT_TRUE(failed(plugin.action(action, &foreign, &in, &out))) << action;
    }
}

TEST_P(EveryEffect, SurvivesMissingArguments) {
    Session session;
    const auto instance = ready(session);
    for (const char* action : kInstanceActions) {
        if (action == std::string(kOfxActionDestroyInstance)) continue;
        PropertySet in = arguments(), empty, out;
        instance->action(action, nullptr, nullptr);
        instance->action(action, &in, nullptr);
        instance->action(action, nullptr, &out);
        instance->action(action, &empty, &empty);
    }
    PropertySet empty;
    EXPECT_TRUE(failed(instance->action(kOfxImageEffectActionRender, nullptr))) << "no arguments";
    EXPECT_TRUE(failed(instance->action(kOfxImageEffectActionRender, &empty))) << "no window";
    EXPECT_EQ(instance->imagesOutstanding(), 0);
    EXPECT_FALSE(samePixels(*rendered(*instance, kBytes, kBounds), *blank(kBytes, kBounds)));
}

TEST_P(EveryEffect, LeavesUnknownActionsToTheHost) {
    Session session;
    const auto instance = ready(session);
    for (const char* action : {"OfxActionOfTomorrow", "", "ofxactionload", "OfxActionLoadX"})
        EXPECT_EQ(instance->action(action), kOfxStatReplyDefault) << action;
    EXPECT_TRUE(failed(session.plugin(GetParam()).record().mainEntry(nullptr, nullptr, nullptr, nullptr)));
}

TEST_P(EveryEffect, LeavesWhatItHasNoOpinionOfToTheHost) {
    Session session;
    const auto instance = ready(session);
    for (const char* action : {kOfxImageEffectActionGetRegionsOfInterest, kOfxImageEffectActionGetFramesNeeded,
                               kOfxImageEffectActionGetClipPreferences, kOfxImageEffectActionGetTimeDomain}) {
        if (GetParam() == kKeyer && action == std::string(kOfxImageEffectActionGetClipPreferences)) continue;
        PropertySet in = arguments(), out;
        EXPECT_EQ(instance->action(action, &in, &out), kOfxStatReplyDefault) << action;
        EXPECT_TRUE(out.names().empty()) << action;
    }
}

TEST_P(EveryEffect, IsCreatedAndDestroyedOnceEach) {
    Session session;
    const auto instance = ready(session);
    EXPECT_TRUE(failed(instance->action(kOfxActionCreateInstance))) << "it exists already";
    EXPECT_EQ(render(*instance, blank(kBytes, kBounds), kBounds), kOfxStatOK);
    EXPECT_EQ(instance->destroy(), kOfxStatOK);
    EXPECT_TRUE(failed(instance->destroy()));
    EXPECT_TRUE(failed(render(*instance, blank(kBytes, kBounds), kBounds)));
    EXPECT_EQ(instance->create(), kOfxStatOK);
    EXPECT_EQ(render(*instance, blank(kBytes, kBounds), kBounds), kOfxStatOK);
}

TEST_P(EveryEffect, OutlivesUnbalancedLoadsAndUnloads) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    plugin.load();
    const auto send = [&](const char* action) { return plugin.action(action, nullptr, nullptr, nullptr); };
    for (const char* action : {kOfxActionUnload, kOfxActionUnload, kOfxActionLoad, kOfxActionLoad, kOfxActionUnload})
        EXPECT_EQ(send(action), kOfxStatOK);
    const auto instance = ready(session); // after an unload
    EXPECT_EQ(send(kOfxActionUnload), kOfxStatOK);
    EXPECT_FALSE(samePixels(*rendered(*instance, kBytes, kBounds), *blank(kBytes, kBounds)));
}

// ---- any order

const char* anyAction(Random& random) {
    if (random.integer(0, 4) > 0) return kInstanceActions[random.integer(0, int(std::size(kInstanceActions)) - 1)];
    return random.pick({kOfxActionLoad, kOfxActionUnload, kOfxActionDescribe, kOfxImageEffectActionDescribeInContext,
                        kOfxActionCreateInstance, "OfxActionOfTomorrow"});
}

// Properties of odd types, in odd numbers, or missing.
PropertySet anyArguments(Random& random) {
    PropertySet in = random.integer(0, 3) == 0 ? PropertySet() : arguments();
    const auto side = [&] { return random.pick({0, 31, -5, 40, random.integer(-60, 60)}); };
    const char* const name = random.pick({kOfxPropTime, kOfxPropType, kOfxPropName, kOfxImageEffectPropRenderWindow,
                                          kOfxImageEffectPropRenderScale, kOfxPropChangeReason,
                                          kOfxPropOrvixUpliftDataLength, kOfxImageEffectPropOpenCLEnabled});
    switch (random.integer(0, 4)) {
        case 0:
            in.set(kOfxImageEffectPropRenderWindow, std::vector{side(), side(), side(), side()});
            break;
        case 1:
            in.set(name, 1);
            break;
        case 2:
            in.set(name, std::numeric_limits<double>::quiet_NaN());
            break;
        case 3:
            in.set(name, "DoAnalysis");
            break;
        default:
            in.set<void*>(name, nullptr);
    }
    return in;
}

TEST(AnyOrder, OfActionsOnAnyHandlesDoesNoHarm) {
    host::Options options;
    options.threads = 2;
    Session session(options);
    Random random(20240611);
    host::Plugin* const plugins[] = {&session.plugin(kCheckerboard), &session.plugin(kBrightness),
                                     session.binary.plugins()[0].get()};
    std::vector<std::unique_ptr<Instance>> instances;
    for (int i = 0; i < 6; ++i) {
        host::Plugin& plugin = *plugins[i % 2];
        auto& instance = instances.emplace_back(
            std::make_unique<Instance>(plugin, plugin.describeInContext(plugin.contexts().front())));
        if (host::Clip* source = instance->findClip("Source")) source->connect(picture(kBytes, kBounds));
    }
    for (int i = 0; i < 4000; ++i) {
        Descriptor descriptor(session.host, "");
        Instance& instance = *instances[std::size_t(random.integer(0, 5))];
        const char* const action = anyAction(random);
        const void* const handle = random.pick<const void*>(
            {instance.handle(), instance.handle(), instance.handle(), descriptor.handle(), nullptr, &random});
        PropertySet in = anyArguments(random), out;
        // A plug-in's main entry with another plug-in's instance is the one thing that no bundle can tell.
        host::Plugin& plugin = handle == instance.handle() ? instance.plugin() : *plugins[random.integer(0, 2)];
        plugin.action(action, handle, random.integer(0, 9) > 0 ? &in : nullptr, random.integer(0, 1) ? &out : nullptr);
    }
    for (const auto& instance : instances) {
        if (instance->properties().getOr<void*>(kOfxPropInstanceData, nullptr)) instance->destroy();
        EXPECT_EQ(instance->create(), kOfxStatOK);
        instance->destroy();
    }
    const auto instance = session.make(kCheckerboard);
    EXPECT_FALSE(samePixels(*rendered(*instance, kBytes, kBounds), *blank(kBytes, kBounds)));
}

// ---- changes

// The host of these tests sends InstanceChanged from inside paramSetValue, as some do.
TEST(Changes, OfLinkedParametersDoNotAnswerEachOtherWithoutEnd) {
    std::atomic<int> changes = 0;
    host::Options options;
    options.onAction = [&](const char* action, PropertySet*, PropertySet*) {
        if (action == std::string(kOfxActionInstanceChanged)) ++changes;
    };
    Session session(options);
    const auto instance = session.make(kCheckerboard);
    changes = 0;
    instance->edit("TileDimensionsWidth", "0.25");
    instance->edit("EdgeBlendingHorizontal", "0.5");
    EXPECT_EQ(instance->parameters().at("TileDimensionsHeight").number(0), 0.25);
    EXPECT_EQ(instance->parameters().at("EdgeBlendingVertical").number(0), 0.5);
    EXPECT_LE(changes, 6) << "the user's two, the two that they cause, and no cascade";
    // Writing a linked parameter itself does not get around the link.
    instance->edit("TileDimensionsHeight", "0.75");
    EXPECT_EQ(instance->parameters().at("TileDimensionsHeight").number(0), 0.25);
}

// ---- several threads

TEST(Threads, LoadUnloadAndDescribeWhileOthersRender) {
    host::Options options;
    options.threads = 2;
    Session session(options);
    const OfxRectI bounds = {0, 0, 64, 40};
    std::vector<std::unique_ptr<Instance>> instances;
    std::vector<std::shared_ptr<Image>> expected;
    for (const std::string& effect : builtEffects()) {
        auto& instance = instances.emplace_back(session.make(effect));
        setUnusual(*instance);
        connect(*instance, kBytes, bounds);
        expected.push_back(rendered(*instance, kBytes, bounds));
    }
    std::atomic<bool> stop = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int worker = 0; worker < 2; ++worker) {
        threads.emplace_back([&] { // each instance is rendered by both at once
            for (int frame = 0; frame < 40; ++frame)
                for (std::size_t i = 0; i < instances.size(); ++i) {
                    const auto image = blank(kBytes, bounds);
                    if (render(*instances[i], image, bounds, frame) != kOfxStatOK) ++wrong;
                    if (!samePixels(*image, *expected[i])) ++wrong;
                }
            stop = true;
        });
        threads.emplace_back([&] {
            while (!stop)
                for (const std::string& effect : builtEffects()) {
                    host::Plugin& plugin = session.plugin(effect);
                    plugin.record().setHost(session.host.record());
                    Descriptor descriptor(session.host, "");
                    for (const char* action : {kOfxActionLoad, kOfxActionUnload, kOfxActionLoad})
                        if (plugin.action(action, nullptr, nullptr, nullptr) != kOfxStatOK) ++wrong;
                    if (plugin.action(kOfxActionDescribe, descriptor.handle(), nullptr, nullptr) != kOfxStatOK) ++wrong;
                }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(Threads, InstancesComeAndGoAtTheSameTime) {
    Session session;
    for (const char* effect : {kCheckerboard, kBrightness}) session.make(effect); // describes, which happens once
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int worker = 0; worker < 3; ++worker)
        threads.emplace_back([&, worker] {
            for (int i = 0; i < 20; ++i) {
                const double width = 0.1 * (worker + 1);
                const auto instance = session.make(kCheckerboard, {{"TileDimensionsWidth", {width}}});
                if (render(*instance, blank(kFloats, kBounds), kBounds) != kOfxStatOK) ++wrong;
                if (instance->parameters().at("TileDimensionsWidth").number(0) != width) ++wrong;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
