// The bundle as a file and as a list of plug-ins: layout, exports, registry, log, and being opened again and again.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/support.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

// The order that hosts see, written down a second time on purpose: projects refer to plug-ins by it.
const std::vector<std::string> kIdentifiers = [] {
    std::vector<std::string> identifiers = {"de.nolda:stereographicProjectionOCL"};
    std::istringstream names(
        "checkerboard noisetexture solidcolor testpattern addnoise blackandwhite blackrestore border "
        "brightnessandcontrast broadcastcolors bumpmapfilter channelblend chromablur chromakeyer colorbalance "
        "colorcorrector colorcorrectorsecondary colorcurves colormatch convolutionkernel cookiecutter blackbarfill "
        "gaussianblur glow hsladjust invert labadjust lensflare levels linearblur bzmasking maskgenerator median "
        "minandmax mirror newsprint pixelate quickblur radialblur saturationadjust sepia sharpen spherize timecode "
        "unsharpmask whitebalance radialpixelate barndoor clockwipe crosseffect dissolve flash iris linearwipe "
        "pageloop pagepeel pageroll push slide spiral split squeeze starwipe swap zoom bumpmap vignette "
        "pictureinpicture crop");
    for (std::string name; names >> name;) identifiers.push_back("com.orvixstudioworks:" + name);
    return identifiers;
}();

// The library's functions without any host around them.
struct Entries {
    host::Library library{host::Binary::fileOf(bundlePath())};
    decltype(&OfxGetNumberOfPlugins) count = entry<decltype(count)>("OfxGetNumberOfPlugins");
    decltype(&OfxGetPlugin) plugin = entry<decltype(plugin)>("OfxGetPlugin");
    decltype(&OfxSetHost) setHost = entry<decltype(setHost)>("OfxSetHost");

    template <class Function>
    Function entry(const char* name) {
        return reinterpret_cast<Function>(library.symbol(name));
    }
};

std::string contents(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

std::size_t occurrences(const std::string& text, const std::string& wanted) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(wanted, at)) != std::string::npos; at += wanted.size()) ++count;
    return count;
}

// ---- registry

TEST(Registry, ListsTheSeventyPluginsInTheirOrder) {
    const Entries entries;
    EXPECT_EQ(entries.count(), 70);
    ASSERT_EQ(kIdentifiers.size(), 70u);
    std::set<OfxPluginEntryPoint*> mainEntries;
    for (int i = 0; i < 70; ++i) {
        const OfxPlugin* plugin = entries.plugin(i);
        ASSERT_NE(plugin, nullptr) << i;
        EXPECT_EQ(plugin->pluginIdentifier, kIdentifiers[static_cast<std::size_t>(i)]);
        EXPECT_STREQ(plugin->pluginApi, "OfxImageEffectPluginAPI");
        EXPECT_EQ(plugin->apiVersion, 1);
        EXPECT_EQ(plugin->pluginVersionMajor, 1u);
        EXPECT_EQ(plugin->pluginVersionMinor, 0u);
        EXPECT_NE(plugin->setHost, nullptr);
        EXPECT_TRUE(mainEntries.insert(plugin->mainEntry).second) << "a main entry of another plug-in at " << i;
        EXPECT_EQ(entries.plugin(i), plugin) << "another record for the same plug-in";
    }
    EXPECT_EQ(entries.count(), 70);
}

TEST(Registry, AnswersNullBeyondTheEnds) {
    const Entries entries;
    for (const int index : {70, 71, 1000000, INT_MAX, -1, INT_MIN}) EXPECT_EQ(entries.plugin(index), nullptr) << index;
}

TEST(Registry, EachMainEntryServesItsOwnPlugin) {
    Session session;
    EXPECT_EQ(session.plugin(kCheckerboard).describe().label(), "Orvix Checkerboard");
    EXPECT_EQ(session.plugin(kBrightness).describe().label(), "Orvix Brightness and Contrast");
}

TEST(Registry, SetHostTakesAHostAndRefusesNone) {
    const Entries entries;
    host::Host host;
    EXPECT_EQ(entries.setHost(host.record()), kOfxStatOK);
    EXPECT_NE(entries.setHost(nullptr), kOfxStatOK);
}

// Runs in a process of its own, where no host was set before.
TEST(Child, DISABLED_LoadsWithoutAHost) {
    const Entries entries;
    EXPECT_EQ(entries.count(), 70);
    OfxPlugin& plugin = *entries.plugin(1);
    EXPECT_EQ(plugin.mainEntry(kOfxActionLoad, nullptr, nullptr, nullptr), kOfxStatErrMissingHostFeature);
    EXPECT_EQ(plugin.mainEntry(kOfxActionUnload, nullptr, nullptr, nullptr), kOfxStatOK);
    host::Host host;
    EXPECT_NE(plugin.mainEntry(kOfxActionDescribe, &host, nullptr, nullptr), kOfxStatOK);
    plugin.setHost(nullptr);
    EXPECT_EQ(plugin.mainEntry(kOfxActionLoad, nullptr, nullptr, nullptr), kOfxStatErrMissingHostFeature);
    plugin.setHost(host.record());
    EXPECT_EQ(plugin.mainEntry(kOfxActionLoad, nullptr, nullptr, nullptr), kOfxStatOK);
}

TEST(Registry, ALoadBeforeAnyHostFailsAndALaterOneSucceeds) { runChild("", "Child.DISABLED_LoadsWithoutAHost"); }

// ---- log

TEST(Child, DISABLED_MisusesTheBundle) {
    const Entries entries;
    host::Host host;
    entries.plugin(70);
    entries.plugin(-1);
    OfxPlugin& checkerboard = *entries.plugin(1);
    checkerboard.setHost(host.record());
    checkerboard.mainEntry(kOfxActionLoad, &host, nullptr, nullptr);
    checkerboard.mainEntry("OfxActionOfTomorrow", nullptr, nullptr, nullptr);
    checkerboard.mainEntry(kOfxActionDescribe, nullptr, nullptr, nullptr);
    checkerboard.mainEntry(kOfxActionDescribe, &host, host.properties().handle(), host.properties().handle());
    checkerboard.mainEntry(kOfxImageEffectActionRender, &host, nullptr, nullptr);
    checkerboard.mainEntry(kOfxImageEffectActionGetTimeDomain, &host, nullptr, nullptr);
    OfxHost poor = {host.properties().handle(),
                    [](OfxPropertySetHandle, const char*, int) -> const void* { return nullptr; }};
    checkerboard.setHost(&poor);
    EXPECT_EQ(checkerboard.mainEntry(kOfxActionLoad, nullptr, nullptr, nullptr), kOfxStatErrMissingHostFeature);
    for (int i = 0; i < 70; ++i) {
        const host::Descriptor descriptor(host, "");
        entries.plugin(i)->mainEntry(kOfxActionDescribe, descriptor.handle(), nullptr, nullptr);
    }
}

const std::vector<std::string> kErrors = {
    "Host attempted to get plugin 70, when there is only 70 plugin(s), so it should have asked for 0.\n",
    "Host attempted to get plugin -1, when there is only 70 plugin(s), so it should have asked for 0.\n",
    "'Handle passed to 'OfxActionDescribe' is null.\n",
    "'inArgs' handle passed to 'OfxImageEffectActionRender' is null.\n",
    "'outArgs' handle passed to 'OfxImageEffectActionGetTimeDomain' is null.\n",
    "Caught OFX::Exception::Suite\n",          // describing a handle that is none of an effect
    "Caught OFX::Exception::HostInadequate\n", // loading in a host without suites
};
const std::vector<std::string> kInformation = {
    "Unknown action 'OfxActionOfTomorrow'.\n",
    "Handle passed to 'OfxActionLoad' is not null.\n",
    "'inArgs' Handle passed to 'OfxActionDescribe' is not null.\n",
    "'outArgs' Handle passed to 'OfxActionDescribe' is not null.\n",
};
const std::vector<std::string> kTrace = {
    "START mainEntry (OfxActionLoad)\n",
    "STOP mainEntry (OfxActionLoad)\n\n",
    "START mainEntry (OfxActionOfTomorrow)\n",
};

void expectLines(const std::string& log, const std::vector<std::string>& lines, bool present) {
    for (const std::string& line : lines) EXPECT_EQ(log.find(line) != std::string::npos, present) << line << log;
}

TEST(Log, IsSilentUnlessAskedAndTellsAsMuchAsItsLevel) {
    const std::string child = "Child.DISABLED_MisusesTheBundle";
    struct {
        const char* environment;
        bool errors, information, trace;
    } const levels[] = {{"-u ORVIX_LOG", false, false, false},
                        {"ORVIX_LOG=nonsense", false, false, false},
                        {"ORVIX_LOG=error", true, false, false},
                        {"ORVIX_LOG=info", true, true, false},
                        {"ORVIX_LOG=debug", true, true, true}};
    for (const auto& level : levels) {
        SCOPED_TRACE(level.environment);
        const std::string log = runChild(level.environment, child);
        expectLines(log, kErrors, level.errors);
        expectLines(log, kInformation, level.information);
        expectLines(log, kTrace, level.trace);
    }
}

TEST(Log, NamesThePlannedEffectsThatAHostAsksFor) {
    const std::string log = runChild("ORVIX_LOG=error", "Child.DISABLED_MisusesTheBundle");
    for (const std::string& effect : kIdentifiers)
        EXPECT_EQ(log.find(effect + " is not built yet") == std::string::npos,
                  std::ranges::count(builtEffects(), effect) == 1)
            << effect;
}

TEST(Log, GoesToAFileThatItAppendsTo) {
    const fs::path file = fs::temp_directory_path() / ("orvix_log_" + std::to_string(::getpid()));
    fs::remove(file);
    for (int run = 1; run <= 2; ++run) {
        const std::string log = runChild("ORVIX_LOG=error:" + file.string(), "Child.DISABLED_MisusesTheBundle");
        expectLines(log, kErrors, false);
        EXPECT_EQ(occurrences(contents(file), kErrors[0]), static_cast<std::size_t>(run));
    }
    fs::remove(file);
    // Nowhere to write to: the lines go to the standard error stream, and nothing fails.
    expectLines(runChild("ORVIX_LOG=error:/nowhere/at/all", "Child.DISABLED_MisusesTheBundle"), kErrors, true);
}

// ---- the files

TEST(Bundle, HasTheLayoutThatHostsLookFor) {
    const fs::path bundle = bundlePath();
    EXPECT_EQ(bundle.filename(), "OrvixEffects.ofx.bundle");
    EXPECT_TRUE(fs::is_regular_file(bundle / "Contents" / host::kArchitectureFolder / "OrvixEffects.ofx"));
    EXPECT_TRUE(fs::is_directory(bundle / "Contents" / "Resources"));
    int binaries = 0; // some hosts load every one that they find
    for (const auto& entry : fs::recursive_directory_iterator(bundle)) binaries += entry.path().extension() == ".ofx";
    EXPECT_EQ(binaries, 1);
    EXPECT_EQ(host::Binary::search({bundle.parent_path()}).size(), 1u);
}

TEST(Bundle, InfoNamesTheBinary) {
    std::string info = contents(fs::path(bundlePath()) / "Contents" / "Info.plist");
    std::erase_if(info, [](unsigned char c) { return std::isspace(c); });
    EXPECT_EQ(info.find('@'), std::string::npos) << "a placeholder was left";
    for (const char* entry : {"<key>CFBundleExecutable</key><string>OrvixEffects.ofx</string>",
                              "<key>CFBundlePackageType</key><string>BNDL</string>",
                              "<key>CFBundleInfoDictionaryVersion</key><string>6.0</string>",
                              "<key>CFBundleVersion</key><string>1.0.0</string>",
                              "<key>CFBundleDevelopmentRegion</key><string>English</string>"})
        EXPECT_NE(info.find(entry), std::string::npos) << entry;
}

std::vector<std::string> lastWords(const std::string& lines) {
    std::vector<std::string> words;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty()) words.push_back(line.substr(line.find_last_of(' ') + 1));
    std::sort(words.begin(), words.end());
    return words;
}

TEST(Bundle, ExportsItsEntriesAndNothingElse) {
    const std::string file = host::Binary::fileOf(bundlePath()).string();
    std::vector<std::string> names;
    std::istringstream list(
        "OfxGetNumberOfPlugins OfxGetPlugin OfxSetHost KRRGBA_To_KRHSL KRHSL_To_KRRGBA KRRGBAFLOAT_To_KRHSL "
        "KRHSL_To_KRRGBAFLOAT KRDIBPIXEL_To_KRHSL KRDIBPIXEL_To_KRHSL_Float KRHSL_To_KRDIBPIXEL "
        "KRHSL_To_KRDIBPIXEL_Float KRRGBA_To_KRLAB KRLAB_To_KRRGBA KRRGBAFLOAT_To_KRLAB KRDIBPIXEL_To_KRLAB "
        "KRDIBPIXEL_To_KRLAB_Float KRLAB_To_KRDIBPIXEL_Float KrRGBtoHSL KrHSLtoRGB KrYUV_YUVToRGB KrYUV_RGBToYUV "
        "KrYUV_YUVToRGB_OCL KrYUV_RGBToYUV_OCL KrYUV422PlanarToRGBA DibCopy_OpenCL_Initialize DibCopy_OpenCL_Shutdown "
        "DibInterlace_OpenCL_Initialize DibInterlace_OpenCL_Shutdown DibComposite_OpenCL_Initialize "
        "DibComposite_OpenCL_Shutdown VidHelp_OpenCL_Initialize VidHelp_OpenCL_Shutdown YUV_OpenCL_Initialize "
        "YUV_OpenCL_Shutdown KrDibCopyOCL KrDibCopyInterlaceOCL KrDibCompositeOCL KrVidHelpOCL");
    for (std::string name; list >> name;) names.push_back(name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(lastWords(output("nm -D --defined-only '" + file + "'")), names);
}

TEST(Bundle, NeedsOnlyTheSystemsOwnLibraries) {
#ifdef ORVIX_SANITIZED
    GTEST_SKIP() << "the sanitizers' libraries come on top";
#endif
    const std::string file = host::Binary::fileOf(bundlePath()).string();
    const std::set<std::string> allowed = {"[libc.so.6]", "[libm.so.6]", "[ld-linux-x86-64.so.2]", "[libgomp.so.1]",
                                           "[libomp.so.5]"}; // of the compilers' OpenMP, either one
    const std::string dynamic = output("readelf -d '" + file + "'");
    for (const std::string& library : lastWords(output("readelf -d '" + file + "' | grep NEEDED")))
        EXPECT_EQ(allowed.count(library), 1u) << library;
    EXPECT_NE(dynamic.find("NODELETE"), std::string::npos) << "threads of a closed library would run unmapped code";
    EXPECT_EQ(dynamic.find("TEXTREL"), std::string::npos);
}

// ---- opening and closing

TEST(Bundle, OpensAndClosesManyTimesWithRendersInBetween) {
    const OfxRectI bounds = {0, 0, 33, 17};
    std::shared_ptr<Image> first;
    for (int i = 0; i < 20; ++i) {
        Session session;
        const auto generator = session.make(kCheckerboard, {{"TileDimensionsWidth", {0.3}}});
        const auto filter = session.make(kBrightness, {{"Brightness", {0.2}}});
        filter->clip("Source").connect(rendered(*generator, kBytes, bounds));
        const auto image = rendered(*filter, kBytes, bounds);
        if (!first) first = image;
        EXPECT_TRUE(samePixels(*image, *first));
    }
}

} // namespace
