// What the effects say of themselves: properties, clips and parameters, in hosts that know more or less.
#include <algorithm>

#include "tests/support.h"

namespace {

using namespace test;
using host::Descriptor;
using host::PropertySet;

using Names = std::vector<std::string>;

std::string textOf(const PropertySet& p, const char* name) { return p.getOr<std::string>(name, "(none)"); }

const Descriptor& described(Session& session, const char* effect) {
    host::Plugin& plugin = session.plugin(effect);
    return plugin.describeInContext(plugin.contexts().front());
}

// Any describe action on a descriptor of ours; the context is what a host may ask for.
OfxStatus describeAgain(host::Plugin& plugin, Descriptor& descriptor, const char* context = nullptr) {
    if (context == nullptr) return plugin.action(kOfxActionDescribe, descriptor.handle(), nullptr, nullptr);
    PropertySet in;
    in.set(kOfxImageEffectPropContext, context);
    return plugin.action(kOfxImageEffectActionDescribeInContext, descriptor.handle(), &in, nullptr);
}

const Names kAllDepths = {"OfxBitDepthByte", "OfxBitDepthFloat", "OfxBitDepthByteBGR", "OfxBitDepthFloatBGR"};

// ---- one row per parameter, as the effects' descriptions have it

struct Row {
    const char* name;
    const char* type;
    const char* label;
    const char* parent = "";
    std::vector<double> initial = {};
    double min = 0, max = 1;
    bool enabled = true, animates = true;
    double increment = 0.1, displayMin = min;
};

void expectRow(const Row& row, const host::Parameter& parameter) {
    SCOPED_TRACE(row.name);
    const PropertySet& p = parameter.properties();
    const std::string type = row.type;
    EXPECT_EQ(parameter.name(), row.name);
    EXPECT_EQ(parameter.kind().type, type);
    for (const char* label : {kOfxPropLabel, kOfxPropShortLabel, kOfxPropLongLabel})
        EXPECT_EQ(textOf(p, label), row.label);
    EXPECT_EQ(textOf(p, kOfxParamPropParent), row.parent);
    if (type == kOfxParamTypeGroup) return;
    std::string script = row.name;
    std::transform(script.begin(), script.end(), script.begin(), [](unsigned char c) { return std::tolower(c); });
    EXPECT_EQ(textOf(p, kOfxParamPropScriptName), script);
    EXPECT_EQ(p.getOr(kOfxParamPropEnabled, -1), row.enabled);
    if (type == kOfxParamTypePushButton) return;
    EXPECT_EQ(p.getOr(kOfxParamPropAnimates, -1), row.animates);
    const bool isDouble = type == kOfxParamTypeDouble || type == kOfxParamTypeRGBA;
    if (isDouble)
        EXPECT_EQ(p.all<double>(kOfxParamPropDefault), row.initial);
    else
        EXPECT_EQ(p.all<int>(kOfxParamPropDefault), std::vector<int>{static_cast<int>(row.initial[0])});
    if (type != kOfxParamTypeDouble) return;
    EXPECT_EQ(p.get<double>(kOfxParamPropMin), row.min);
    EXPECT_EQ(p.get<double>(kOfxParamPropMax), row.max);
    EXPECT_EQ(p.get<double>(kOfxParamPropDisplayMin), row.displayMin);
    EXPECT_EQ(p.get<double>(kOfxParamPropDisplayMax), row.max);
    EXPECT_EQ(p.get<double>(kOfxParamPropIncrement), row.increment);
    EXPECT_EQ(p.get<int>(kOfxParamPropDigits), 3);
    EXPECT_EQ(textOf(p, kOfxParamPropDoubleType), "OfxParamDoubleTypeScale");
}

void expectRows(const std::vector<Row>& rows, const Descriptor& descriptor) {
    const auto& parameters = descriptor.parameters().all();
    ASSERT_EQ(parameters.size(), rows.size() + 1);
    for (std::size_t i = 0; i < rows.size(); ++i) expectRow(rows[i], *parameters[i]);
    EXPECT_EQ(parameters.back()->name(), "Controls");
    EXPECT_EQ(parameters.back()->kind().type, std::string(kOfxParamTypePage));
}

constexpr const char* kGroup = kOfxParamTypeGroup;
constexpr const char* kDouble = kOfxParamTypeDouble;

TEST(Checkerboard, DescribesItself) {
    Session session;
    const Descriptor& general = session.plugin(kCheckerboard).describe();
    const PropertySet& p = general.properties();
    for (const char* label : {kOfxPropLabel, kOfxPropShortLabel, kOfxPropLongLabel})
        EXPECT_EQ(textOf(p, label), "Orvix Checkerboard");
    EXPECT_EQ(general.grouping(), "Orvix");
    EXPECT_EQ(general.contexts(), Names{"OfxImageEffectContextGenerator"});
    EXPECT_EQ(textOf(p, "OfxImageEffectPropHelpFile"), "tessel1.ofx.chm");
    EXPECT_EQ(p.getOr("OfxImageEffectPropHelpContextID", -1), 1240);

    const Descriptor& descriptor = described(session, kCheckerboard);
    ASSERT_EQ(descriptor.clips().size(), 1u);
    EXPECT_EQ(textOf(descriptor.properties(), "OfxImageEffectPropOrvixUpliftGUID"),
              "{DB10DAB1-5247-4194-B666-E076AD51BE19}");
    expectRows(
        {
            {"TileDimensions", kGroup, "Tile dimensions"},
            {"TileDimensionsWidth", kDouble, "Width", "TileDimensions", {0.1}, 0.001},
            {"TileDimensionsHeight", kDouble, "Height", "TileDimensions", {0.1}, 0.001, 1, false},
            {"TileDimensionsSquare", kOfxParamTypeBoolean, "Square", "TileDimensions", {1}},
            {"EdgeBlending", kGroup, "Edge blending"},
            {"EdgeBlendingHorizontal", kDouble, "Horizontal", "EdgeBlending", {0}},
            {"EdgeBlendingVertical", kDouble, "Vertical", "EdgeBlending", {0}, 0, 1, false},
            {"EdgeBlendingProportional", kOfxParamTypeBoolean, "Proportional", "EdgeBlending", {1}},
            {"Color1", kOfxParamTypeRGBA, "Color 1", "", {0, 0, 0, 1}},
            {"Color2", kOfxParamTypeRGBA, "Color 2", "", {1, 1, 1, 1}},
            {"GridOffset", kGroup, "Grid offset"},
            {"GridOffsetX", kDouble, "X", "GridOffset", {0}},
            {"GridOffsetY", kDouble, "Y", "GridOffset", {0}},
        },
        descriptor);
    EXPECT_TRUE(descriptor.parameters().at("Controls").properties().all<std::string>(kOfxParamPropPageChild).empty());
}

TEST(BrightnessAndContrast, DescribesItself) {
    Session session;
    const Descriptor& general = session.plugin(kBrightness).describe();
    EXPECT_EQ(general.label(), "Orvix Brightness and Contrast");
    EXPECT_EQ(general.grouping(), "Orvix");
    EXPECT_EQ(general.contexts(), Names{"OfxImageEffectContextFilter"});

    const Descriptor& descriptor = described(session, kBrightness);
    ASSERT_EQ(descriptor.clips().size(), 2u);
    expectRows(
        {
            {"Brightness", kDouble, "Brightness", "", {0}, -1},
            {"Contrast", kDouble, "Contrast", "", {0}, -1},
            {"ContrastCenter", kDouble, "Contrast center", "", {0.5}},
            {"Group", kGroup, "Group"},
            {"GroupInput", kGroup, "GroupInput", "Group"},
            {"GroupOutput", kGroup, "GroupOutput", "Group"},
            {"Percent", kDouble, "Percent", "GroupInput", {0.01}, 0, 0.5, true, false, 0.01},
            {"Min", kDouble, "Min", "GroupOutput", {0.058823529411764705}, 0, 0.99, true, false},
            {"Max", kDouble, "Max", "GroupOutput", {0.9215686274509803}, 0.01, 1, true, false, 0.1, 0.1},
            {"ReferenceMode", kOfxParamTypeChoice, "ReferenceMode", "Group", {1}, 0, 1, true, false},
            {"DoAnalysis", kOfxParamTypePushButton, "DoAnalysis", "Group"},
        },
        descriptor);
    EXPECT_EQ(descriptor.parameters().at("ReferenceMode").options(),
              (Names{"RM_CurrentFrame", "RM_CurrentMedia", "RM_EachFrameIndependently"}));
}

TEST(ColorCorrector, DescribesItself) {
    Session session;
    const Descriptor& general = session.plugin(kCorrector).describe();
    EXPECT_EQ(general.label(), "Orvix Color Corrector");
    EXPECT_EQ(general.contexts(), Names{"OfxImageEffectContextFilter"});
    EXPECT_EQ(general.properties().getOr("OfxImageEffectPropHelpContextID", -1), 1255);

    const Descriptor& descriptor = described(session, kCorrector);
    const std::vector<std::pair<const char*, double>> wheels = {{"Low", 0.4}, {"Mid", 0.55}, {"High", 0.7}};
    for (std::size_t i = 0; i < wheels.size(); ++i) {
        const auto& [name, level] = wheels[i];
        SCOPED_TRACE(name);
        const host::Parameter& wheel = *descriptor.parameters().all().at(i);
        const PropertySet& p = wheel.properties();
        EXPECT_EQ(wheel.name(), name);
        EXPECT_EQ(wheel.kind().type, std::string(kOfxParamTypeDouble2D));
        using Numbers = std::vector<double>;
        EXPECT_EQ(p.all<double>(kOfxParamPropDefault), (Numbers{0, 0}));
        for (const char* min : {kOfxParamPropMin, kOfxParamPropDisplayMin})
            EXPECT_EQ(p.all<double>(min), (Numbers{0, 0}));
        for (const char* max : {kOfxParamPropMax, kOfxParamPropDisplayMax})
            EXPECT_EQ(p.all<double>(max), (Numbers{360, 1}));
        EXPECT_EQ(textOf(p, kOfxParamPropDoubleType), "OfxParamDoubleTypeChrominance");
        EXPECT_EQ(p.getOr("OfxParamPropColorWheelLevel", -1.0), level);
        EXPECT_EQ(p.getOr(kOfxParamPropAnimates, -1), 1);
        EXPECT_THROW(wheel.parse("361,0"), std::exception);
        EXPECT_THROW(wheel.parse("0,1.5"), std::exception) << "the magnitude has a range of its own";
        EXPECT_EQ(wheel.parse("360,1").numbers[0], 360);
    }
    ASSERT_EQ(descriptor.parameters().all().size(), 8u);
    const Row rows[] = {{"Saturation", kDouble, "Saturation", "", {1}, 0, 3},
                        {"Gamma", kDouble, "Gamma", "", {1}, 0, 2},
                        {"Gain", kDouble, "Gain", "", {1}, 0, 2},
                        {"Offset", kDouble, "Offset", "", {0}, -254, 254}};
    for (std::size_t i = 0; i < 4; ++i) expectRow(rows[i], *descriptor.parameters().all()[i + 3]);
}

TEST(Levels, DescribesItself) {
    Session session;
    const Descriptor& general = session.plugin(kLevels).describe();
    EXPECT_EQ(general.label(), "Orvix Levels");
    EXPECT_EQ(general.contexts(), Names{"OfxImageEffectContextFilter"});
    EXPECT_EQ(general.properties().getOr("OfxImageEffectPropHelpContextID", -1), 1268);
    const Descriptor& descriptor = described(session, kLevels);
    expectRows(
        {
            {"Channel", kOfxParamTypeChoice, "Channel", "", {0}},
            {"InputStart", kDouble, "Input start", "", {0}},
            {"InputEnd", kDouble, "Input end", "", {1}},
            {"OutputStart", kDouble, "Output start", "", {0}},
            {"OutputEnd", kDouble, "Output end", "", {1}},
            {"Gamma", kDouble, "Gamma", "", {1}, 0.45, 5},
        },
        descriptor);
    EXPECT_EQ(descriptor.parameters().at("Channel").options(), (Names{"All", "Red", "Green", "Blue", "Alpha"}));
}

// ---- what holds for all

INSTANTIATE_TEST_SUITE_P(Described, EveryEffect, testing::ValuesIn(builtEffects()), effectName);

TEST_P(EveryEffect, SetsTheBundlesConventions) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    const PropertySet& p = plugin.describe().properties();
    EXPECT_EQ(plugin.describe().depths(), kAllDepths);
    EXPECT_EQ(p.getOr(kOfxImageEffectPluginPropSingleInstance, -1), 0);
    EXPECT_EQ(p.getOr(kOfxImageEffectPluginPropHostFrameThreading, -1), 0);
    EXPECT_EQ(p.getOr(kOfxImageEffectPropSupportsMultiResolution, -1), 1);
    EXPECT_EQ(p.getOr(kOfxImageEffectPropSupportsTiles, -1), 1);
    EXPECT_EQ(p.getOr(kOfxImageEffectPropTemporalClipAccess, -1), 0);
    EXPECT_EQ(p.getOr(kOfxImageEffectPluginPropFieldRenderTwiceAlways, -1), 0);
    EXPECT_EQ(p.getOr(kOfxImageEffectPropSupportsMultipleClipPARs, -1), 0);
    // Buffers are never rendered to, and unsafe effects would make hosts render one frame at a time.
    EXPECT_EQ(textOf(p, kOfxImageEffectPropOpenCLRenderSupported), "false");
    EXPECT_NE(textOf(p, kOfxImageEffectPluginRenderThreadSafety), kOfxImageEffectRenderUnsafe);

    const Descriptor& descriptor = plugin.describeInContext(plugin.contexts().front());
    const std::map<std::string, Names> clips = {
        {kOfxImageEffectContextGenerator, {"Output"}},
        {kOfxImageEffectContextFilter, {"Output", "Source"}},
        {kOfxImageEffectContextTransition, {"Output", "SourceFrom", "SourceTo"}}};
    Names names;
    for (const auto& clip : descriptor.clips()) {
        names.push_back(clip->name());
        EXPECT_EQ(clip->properties().all<std::string>(kOfxImageEffectPropSupportedComponents),
                  Names{"OfxImageComponentRGBA"});
        EXPECT_EQ(clip->properties().getOr(kOfxImageEffectPropSupportsTiles, -1), 0);
        EXPECT_EQ(textOf(clip->properties(), kOfxImageClipPropFieldExtraction), "OfxFieldSingle");
    }
    EXPECT_EQ(names, clips.at(plugin.contexts().front()));
    for (const auto& parameter : descriptor.parameters().all()) {
        const std::string parent = textOf(parameter->properties(), kOfxParamPropParent);
        EXPECT_TRUE(parent.empty() || descriptor.parameters().at(parent).kind().type == std::string(kGroup))
            << parameter->name();
    }
}

TEST_P(EveryEffect, DescribesTwiceWithoutDuplicates) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    const Names contexts = plugin.contexts();
    Descriptor descriptor(session.host, "");
    // As a host leaves it that presets what it would use.
    descriptor.properties().set(kOfxImageEffectPropSupportedContexts, kOfxImageEffectContextGeneral);
    descriptor.properties().set(kOfxImageEffectPropSupportedPixelDepths, kOfxBitDepthHalf);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(describeAgain(plugin, descriptor), kOfxStatOK);
        EXPECT_EQ(descriptor.contexts(), contexts);
        EXPECT_EQ(descriptor.depths(), kAllDepths);
    }
}

TEST_P(EveryEffect, DescribesItselfForAnyContext) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    const std::size_t count = plugin.describeInContext(plugin.contexts().front()).parameters().all().size();
    for (const char* context : {kOfxImageEffectContextFilter, kOfxImageEffectContextGenerator,
                                kOfxImageEffectContextTransition, kOfxImageEffectContextGeneral, "Nonsense", ""}) {
        SCOPED_TRACE(context);
        Descriptor empty(session.host, ""); // never described in general
        EXPECT_EQ(describeAgain(plugin, empty, context), kOfxStatOK);
        EXPECT_EQ(empty.parameters().all().size(), count);
    }
    Descriptor nameless(session.host, "");
    PropertySet none;
    EXPECT_EQ(plugin.action(kOfxImageEffectActionDescribeInContext, nameless.handle(), &none, nullptr), kOfxStatOK);
}

TEST_P(EveryEffect, ReportsNamesThatTheHostRefuses) {
    Session session;
    host::Plugin& plugin = session.plugin(GetParam());
    Descriptor descriptor(session.host, "");
    const char* const context = kOfxImageEffectContextFilter;
    EXPECT_EQ(describeAgain(plugin, descriptor, context), kOfxStatOK);
    EXPECT_NE(describeAgain(plugin, descriptor, context), kOfxStatOK) << "the parameters are there already";
}

// A host that knows only the published standard still gets everything that it knows, and pictures.
TEST_P(EveryEffect, WorksWithoutExtensions) {
    host::Options options;
    options.extensions = false;
    Session session(options);
    const auto instance = session.make(GetParam());
    connect(*instance, kBytes, kBounds);
    EXPECT_FALSE(instance->descriptor().parameters().all().empty());
    EXPECT_FALSE(instance->descriptor().properties().has("OfxImageEffectPropHelpFile"));
    const auto image = rendered(*instance, kBytes, kBounds);
    EXPECT_FALSE(samePixels(*image, *blank(kBytes, kBounds)));
}

// ---- a property suite that refuses to set anything that has not been there before

OfxStatus refuse(OfxPropertySetHandle, const char*, int, int) { return kOfxStatErrUnknown; }
OfxStatus refuse(OfxPropertySetHandle, const char*, int, double) { return kOfxStatErrUnknown; }
OfxStatus refuse(OfxPropertySetHandle, const char*, int, const char*) { return kOfxStatErrUnknown; }

TEST_P(EveryEffect, DescribesItselfToAHostThatTakesNoProperty) {
    OfxPropertySuiteV1 suite = host::kPropertySuite;
    suite.propSetInt = refuse;
    suite.propSetDouble = refuse;
    suite.propSetString = refuse;
    host::Options options;
    options.suiteFilter = [&suite](const std::string& name, int, const void* ours) {
        return name == kOfxPropertySuite ? &suite : ours;
    };
    Session session(options);
    host::Plugin& plugin = session.plugin(GetParam());
    plugin.load();
    Descriptor descriptor(session.host, "");
    EXPECT_EQ(describeAgain(plugin, descriptor), kOfxStatOK);
    EXPECT_EQ(describeAgain(plugin, descriptor, kOfxImageEffectContextFilter), kOfxStatOK);
    EXPECT_FALSE(descriptor.parameters().all().empty());
}

// ---- planned effects

TEST(PlannedEffects, LoadAndThenAskTheHostToLeaveThemOut) {
    Session session;
    std::size_t planned = 0;
    for (const auto& plugin : session.binary.plugins()) {
        if (std::ranges::count(builtEffects(), plugin->identifier()) > 0) continue;
        SCOPED_TRACE(plugin->identifier());
        ++planned;
        plugin->load();
        Descriptor descriptor(session.host, "");
        EXPECT_EQ(describeAgain(*plugin, descriptor), kOfxStatErrMissingHostFeature);
        EXPECT_EQ(describeAgain(*plugin, descriptor, kOfxImageEffectContextFilter), kOfxStatErrMissingHostFeature);
        EXPECT_TRUE(descriptor.contexts().empty());
        const host::Instance instance(*plugin, descriptor);
        EXPECT_EQ(plugin->action(kOfxActionCreateInstance, instance.handle(), nullptr, nullptr),
                  kOfxStatErrMissingHostFeature);
    }
    EXPECT_EQ(planned + builtEffects().size(), 70u);
}

// Guards the tests above against an empty list.
TEST(PlannedEffects, DoNotIncludeWhatIsBuilt) {
    for (const char* effect : {kCheckerboard, kBrightness}) EXPECT_EQ(std::ranges::count(builtEffects(), effect), 1);
}

} // namespace
