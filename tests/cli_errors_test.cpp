// What the program orvix does when something goes wrong: what its message says, its exit status, 2 for arguments and 1
// for work that failed, and that it leaves nothing behind, also when it is stopped; and where it looks for bundles.
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "host/platform.h"
#include "tests/command_line.h"

namespace {

namespace fs = std::filesystem;
using namespace test;
using nlohmann::json;

using Errors = CommandLine;
using Videos = CommandLine;
using Stop = CommandLine;
using Bundles = CommandLine;

constexpr OfxRectI kBounds{0, 0, 37, 23};
const std::string kTone = "render brightnessandcontrast --set Contrast=0.3 ";

template <class Condition>
bool comesTrue(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return condition();
}

TEST_F(Errors, NameWhatIsUnknownAndWhatIsNearToIt) {
    expectFailures(2, {{"rendr", {"'rendr'", "render?"}},
                       {"render chekerboard --out out.png", {"'chekerboard'", "checkerboard?"}},
                       {"describe brightnesandcontrast", {"brightnessandcontrast?"}},
                       {"render checkerboard --sise 8x8 --out out.png", {"--sise", "--size?"}},
                       {"render checkerboard --set Colour1=1,1,1,1 --out out.png", {"Colour1", "Color1"}},
                       {"render checkerboard --key GridOfsetX=0:0 --out out.png", {"GridOfsetX", "GridOffsetX"}}});
}

TEST_F(Errors, SayWhatAValueMayBe) {
    save("in.png", *flat(kBytes, kBounds, {}), kUint8);
    const std::string tone = "render brightnessandcontrast --in in.png --out out.png ";
    const std::string board = "render checkerboard --size 8x8 --out out.png ";
    expectFailures(2, {{tone + "--set Contrast=1.01", {"Contrast", "1.01", "from -1 to 1"}},
                       {tone + "--key Contrast=0:0,9:-2", {"Contrast", "-2", "from -1 to 1"}},
                       {tone + "--set Contrast=high", {"\"high\" is not a number", "from -1 to 1"}},
                       {tone + "--set Contrast=nan", {"\"nan\" is not a number"}},
                       {tone + "--set ReferenceMode=RM_Nothing", {"RM_Nothing", "RM_CurrentFrame"}},
                       {tone + "--key Percent=0:0.1", {"Percent", "cannot be animated"}},
                       {tone + "--key Contrast=0.5", {"0.5", "time:value"}},
                       {tone + "--set Contrast", {"Name=value"}},
                       {tone + "--set DoAnalysis=1", {"DoAnalysis", "button"}},
                       {tone + "--press Contrast", {"Contrast", "DoAnalysis"}},
                       {board + "--set TileDimensionsSquare=perhaps", {"perhaps", "true or false"}},
                       {board + "--set Color1=1,0", {"2 of 4 components", "4 numbers"}}});
}

TEST_F(Errors, SayWhatAnOptionMayBe) {
    const std::string board = "render checkerboard --out out.png ";
    std::vector<Mistake> mistakes;
    for (const char* frames : {"9-3", "x", "1-", "1.5", "99999999999"})
        mistakes.push_back({board + "--frames " + frames, {std::string("--frames ") + frames}});
    for (const char* size : {"0x8", "8x", "8x8x8", "99999x8"})
        mistakes.push_back({board + "--size " + size, {std::string("--size ") + size, "WIDTHxHEIGHT"}});
    expectFailures(2, mistakes);
    expectFailures(2, {{board + "--depth half", {"half", "byte and float"}},
                       {board + "--order argb", {"argb", "rgba and bgra"}},
                       {board + "--threads 0", {"--threads", "1 to 1024"}},
                       {board + "--bits 32", {"PNG", "32", "8, 16"}},
                       {board + "--rate fast", {"fast", "30000/1001"}},
                       {"render checkerboard --out out.gif", {"out.gif", ".png", ".mkv"}},
                       {"render checkerboard --out %04x.png", {"%04x.png", "%04d"}},
                       {"render checkerboard", {"--out is missing"}},
                       {"render --out out.png", {"EFFECT"}}});
}

TEST_F(Errors, TellWhatGoesTogether) {
    save("in.png", *flat(kBytes, kBounds, {}), kUint8);
    save("shot.4.png", *flat(kBytes, kBounds, {}), kUint8);
    save("shot.5.png", *flat(kBytes, {0, 0, 64, 8}, {}), kUint8);
    const std::string tone = "render brightnessandcontrast --out out.png ";
    expectFailures(2, {{tone, {"brightnessandcontrast", "--in FILE"}},
                       {"render checkerboard --in in.png --out out.png", {"checkerboard", "without input"}},
                       {tone + "--from in.png --to in.png", {"2 inputs", "--in FILE"}},
                       {tone + "--from in.png", {"--from and --to go together"}},
                       {tone + "--in in.png --from in.png", {"--in is for filters"}},
                       {tone + "--in in.png + checkerboard", {"checkerboard", "without input"}},
                       {tone + "--in in.png + brightnessandcontrast --in in.png", {"takes its result"}},
                       {tone + "--in in.png +", {"after the last +"}},
                       {tone + "--in in.png --size 8x8", {"--size 8x8", "37x23"}},
                       {tone + "--in shot.%d.png --frames 5-6", {"--frames 5-6", "4-5"}},
                       {tone + "--in shot.%d.png", {"2 frames", "%04d"}}});
    expectFailures(1, {{tone + "--in shot.%d.png --frames 5", {"shot.5.png is 64x8", "37x23"}}});
}

TEST_F(Errors, NameFilesThatCannotBeReadOrWritten) {
    save("in.png", *flat(kBytes, kBounds, {}), kUint8);
    std::ofstream(folder / "text.png") << "no picture";
    fs::create_directory(folder / "shots.png");
    expectFailures(1, {{kTone + "--in none.png --out out.png", {"no file none.png"}},
                       {kTone + "--in none.%04d.png --out out.%04d.png", {"no file none.%04d.png"}},
                       {kTone + "--in none.mkv --out out.mkv", {"no file none.mkv"}},
                       {kTone + "--in text.png --out out.png", {"cannot read text.png"}},
                       {kTone + "--in shots.png --out out.png", {"shots.png is a folder"}},
                       {kTone + "--in in.png --out none/out.png", {"none/out.png", "no folder none"}},
                       {kTone + "--in in.png --out shots.png", {"shots.png", "it is a folder"}},
                       {kTone + "--in in.png --out /proc/out.png", {"/proc/out.png", "no permission"}}});
}

TEST_F(Errors, ComeWithEveryFormatThatIsCutOff) {
    std::vector<Mistake> mistakes;
    std::string board = "render checkerboard --size 200x100 --set EdgeBlendingHorizontal=1 ";
    for (const char* ending : {".png", ".jpg", ".tif", ".exr", ".dpx"}) {
        const std::string file = std::string("in") + ending;
        succeed(board + "--out " + file);
        board = kTone + "--in " + file + " "; // it can be read as long as it is whole
        mistakes.push_back({kTone + "--in " + file + " --out out.png", {"cannot read " + file}});
    }
    for (const std::string& file : files()) fs::resize_file(folder / file, fs::file_size(folder / file) * 2 / 3);
    expectFailures(1, mistakes);
}

TEST_F(Errors, SayThatAPlannedEffectIsNotBuiltYet) {
    const json effects = json::parse(succeed("list --json"));
    const auto planned = std::find_if(effects.begin(), effects.end(), [](const json& e) { return !e.at("built"); });
    if (planned == effects.end()) GTEST_SKIP() << "every effect is built";
    const std::string name = planned->at("identifier");
    expectFailures(1, {{"render " + name + " --out out.png", {name, "not built yet"}},
                       {"describe " + shortName(name), {shortName(name), "not built yet"}}});
}

TEST_F(Videos, ThatFailHalfwayLeaveTheOldFileAsItWas) {
    if (!hasVideo()) GTEST_SKIP() << "ffmpeg is not installed";
    for (const int frame : {1, 2, 4}) save("in." + std::to_string(frame) + ".png", *flat(kBytes, kBounds, {}), kUint8);
    std::ofstream(folder / "old.mkv") << "old";
    expectFailures(1, {{kTone + "--in in.%d.png --out old.mkv", {"no file in.3.png"}},
                       {kTone + "--in old.mkv --out new.mkv", {"cannot read old.mkv"}}});
    EXPECT_EQ(fs::file_size(folder / "old.mkv"), 3u);
}

TEST_F(Videos, NeedFfmpegAndSaySo) {
    const Result result = Child(folder, "render checkerboard --size 8x8 --out out.mkv", "PATH=/nowhere").wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("needs ffmpeg"), std::string::npos) << result.err;
    EXPECT_EQ(files(), Words());
}

// ---- stop

TEST_F(Stop, InTheMiddleOfASequenceLeavesWholePicturesOnly) {
    Child child(folder, "render checkerboard --size 320x240 --frames 0-9999 --out out.%d.png");
    ASSERT_TRUE(comesTrue([&] { return fs::exists(folder / "out.9.png"); }));
    child.send(SIGINT);
    const Result result = child.wait();
    EXPECT_EQ(result.status, 130);
    EXPECT_NE(result.err.find("stopped"), std::string::npos) << result.err;
    for (const std::string& file : files()) {
        ASSERT_TRUE(file.starts_with("out.")) << file;
        EXPECT_EQ(load(file, kUint8)->width(), 320) << file;
    }
}

TEST_F(Stop, InTheMiddleOfAVideoLeavesNothing) {
    if (!hasVideo()) GTEST_SKIP() << "ffmpeg is not installed";
    Child child(folder, "render checkerboard --size 320x240 --frames 0-9999 --out out.mkv");
    ASSERT_TRUE(comesTrue([&] { // the probe of the folder comes and goes, empty
        const Words begun = files();
        std::error_code gone;
        return begun.size() == 1 && fs::file_size(folder / begun[0], gone) > 0 && !gone;
    }));
    child.send(SIGTERM);
    EXPECT_EQ(child.wait().status, 128 + SIGTERM);
    EXPECT_EQ(files(), Words());
}

// ---- bundles

TEST_F(Bundles, AreTheOnesThatTheUserNames) {
    fs::create_directory_symlink(bundlePath(), folder / "Other.ofx.bundle");
    fs::create_directory_symlink(bundlePath(), folder / "OrvixEffects.ofx.bundle");
    expectFailures(1, {{"list --bundle none.ofx.bundle", {"none.ofx.bundle"}},
                       {"render checkerboard --bundle . --out out.png", {"is no bundle"}},
                       {"list --bundle Other.ofx.bundle", {"has no binary"}}}); // of that name
    const json effects = json::parse(succeed("list --json --bundle OrvixEffects.ofx.bundle"));
    EXPECT_EQ(effects.at(0).at("bundle"), "OrvixEffects.ofx.bundle");
}

TEST_F(Bundles, AreFoundInTheFoldersOfTheEnvironmentAndBrokenOnesLeftOut) {
    fs::copy_file(ORVIX_PROGRAM, folder / "orvix"); // no bundle lies beside this one
    const fs::path broken = folder / "plugins" / "Broken.ofx.bundle";
    fs::create_directories(broken / "Contents" / host::kArchitectureFolder);
    std::ofstream(broken / "Contents" / host::kArchitectureFolder / "Broken.ofx") << "no library";
    const fs::path bundle = folder / "plugins" / "more" / "OrvixEffects.ofx.bundle";
    fs::create_directory(bundle.parent_path());
    fs::create_directory_symlink(bundlePath(), bundle);

    const std::string environment = "OFX_PLUGIN_PATH=/nowhere:" + (folder / "plugins").string();
    const Result list = Child(folder, "list --json", environment, folder / "orvix").wait();
    EXPECT_EQ(list.status, 0);
    EXPECT_NE(list.err.find("leaving out " + broken.string()), std::string::npos) << list.err;
    EXPECT_EQ(json::parse(list.out).at(0).at("bundle"), bundle.string());
}

} // namespace
