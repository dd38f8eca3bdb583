// The program orvix, run as its users run it: what it prints, and that the files it writes hold what the effects render
// in the library.
#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/text.h"
#include "tests/command_line.h"

namespace {

namespace fs = std::filesystem;
using namespace test;
using nlohmann::json;

using Listing = CommandLine;
using Pictures = CommandLine;
using Sequences = CommandLine;
using Chains = CommandLine;
using Values = CommandLine;
using Videos = CommandLine;

// ---- pictures

constexpr OfxRectI kBounds{0, 0, 37, 23};

// Straight colours with every kind of alpha, or opaque ones, which no premultiplication changes.
std::shared_ptr<Image> straightNoise(OIIO::TypeDesc::BASETYPE type, std::uint64_t seed = 1) {
    Random random(seed);
    const auto number = [&] { return random.integer(0, int(largest(type))) * 1.0; };
    return painted(type == kUint8 ? kBytes : kFloats, kBounds, [&](int, int) {
        return Pixel{number(), number(), number(), random.pick({0.0, largest(type), number()})};
    });
}
std::shared_ptr<Image> opaqueNoise(int seed) {
    Random random(static_cast<std::uint64_t>(seed));
    const auto number = [&] { return random.integer(0, 255) * 1.0; };
    return painted(kBytes, kBounds, [&](int, int) { return Pixel{number(), number(), number(), 255}; });
}

// The image that a file's numbers from 0 to max mean: bytes for bytes, floats for others.
std::shared_ptr<Image> premultiplied(const Image& file, double max) {
    return painted(file.format(), kBounds, [&](int x, int y) {
        Pixel p = pixelAt(file, x, y);
        for (std::size_t c = 0; c < 3; ++c) p[c] *= p[3] / max;
        for (double& number : p) number = file.format() == kBytes ? std::round(number) : number / max;
        return p;
    });
}

// The other way round, to the nearest number that the file can hold.
Expected straightened(const Image& image, int x, int y, double max) {
    const double one = image.format() == kBytes ? 255 : 1;
    Pixel p = pixelAt(image, x, y);
    const double alpha = p[3] / one;
    for (std::size_t c = 0; c < 3; ++c) p[c] = std::clamp(p[c] / one / (alpha > 0 ? alpha : 1), 0.0, 1.0) * max;
    p[3] = alpha * max;
    return {p, 0.55};
}

// What straight colours come back as: nothing is left of those that cannot be seen.
Expected kept(const Image& file, int x, int y) {
    const Pixel p = pixelAt(file, x, y);
    return {p[3] == 0 ? Pixel{} : p};
}

const Settings kSettings{{"Brightness", {0.1}}, {"Contrast", {0.3}}};
const std::string kTone = "render brightnessandcontrast --set Brightness=0.1 --set Contrast=0.3 ";

std::shared_ptr<Image> toned(const std::shared_ptr<Image>& source, const Settings& settings = kSettings) {
    Session session;
    const auto instance = session.make(kBrightness, settings);
    instance->clip("Source").connect(source);
    return rendered(*instance, source->format(), source->bounds());
}

// ---- what there is

TEST_F(Listing, HasTheEffectsThatCanBeUsedAndInJsonAll) {
    Words listed, built;
    for (const std::string& line : host::split(succeed("list"), '\n'))
        if (!line.empty()) listed.push_back(line.substr(0, line.find(' ')));
    EXPECT_EQ(listed, builtEffects());
    const json effects = json::parse(succeed("list --json"));
    EXPECT_EQ(effects.size(), 70u);
    for (const json& effect : effects)
        if (effect.at("built")) built.push_back(effect.at("identifier"));
    EXPECT_EQ(built, builtEffects());
}

TEST_F(Listing, DescribesParametersAsTextAndAsJson) {
    const std::string text = succeed("describe brightnessandcontrast");
    EXPECT_NE(text.find("a number from -1 to 1; default 0"), std::string::npos) << text;
    const json effect = json::parse(succeed("describe com.orvixstudioworks:brightnessandcontrast --json"));
    EXPECT_EQ(effect.at("identifier"), kBrightness);
    EXPECT_EQ(effect.at("contexts").at(0), "filter");
    std::map<std::string, json> parameters;
    for (const json& parameter : effect.at("parameters")) parameters[parameter.at("name")] = parameter;
    for (const auto& [name, parameter] : parameters)
        EXPECT_NE(parameter.at("kind") == "page" ? 0 : text.find(name), std::string::npos) << name;
    EXPECT_EQ(parameters.at("Contrast").at("minimum").at(0), -1);
    EXPECT_EQ(parameters.at("Contrast").at("maximum").at(0), 1);
    EXPECT_EQ(parameters.at("ContrastCenter").at("default").at(0), 0.5);
    EXPECT_EQ(parameters.at("ReferenceMode").at("options").size(), 3u);
}

// ---- still pictures

TEST_F(Pictures, WithStraightAlphaAreWhatTheEffectRenders) {
    for (const auto type : {kUint8, kUint16}) {
        const auto file = straightNoise(type);
        save("in.png", *file, type);
        succeed(kTone + "--in in.png --out out.png");
        const auto expected = toned(premultiplied(*file, largest(type)));
        const auto reference = [&](int x, int y) { return straightened(*expected, x, y, largest(type)); };
        EXPECT_TRUE(matches(*load("out.png", type), kBounds, reference)) << largest(type);
    }
}

TEST_F(Pictures, AsFloatsPassWithoutAnyRounding) {
    const auto image = picture(kFloats, kBounds); // with numbers below 0 and above 1
    save("in.exr", *image, kFloat);
    succeed(kTone + "--in in.exr --out out.exr --bits 32");
    EXPECT_TRUE(samePixels(*load("out.exr", kFloat), *toned(image)));
    succeed(kTone + "--in in.exr --out half.exr");
    const auto expected = toned(image);
    EXPECT_TRUE(matches(*load("half.exr", kHalf), kBounds, [&](int x, int y) {
        return Expected{pixelAt(*expected, x, y), 1e-3};
    }));
}

TEST_F(Pictures, HaveTheirTopRowFirst) {
    succeed(
        "render checkerboard --size 40x40 --set TileDimensionsWidth=0.5 --set Color1=1,0,0,1 --set Color2=0,0,1,0.5 "
        "--out out.png");
    const auto image = load("out.png", kUint8);
    const Pixel red{255, 0, 0, 255}, blue{0, 0, 255, 127}; // straight again
    EXPECT_EQ(pixelAt(*image, 5, 35), red);
    EXPECT_EQ(pixelAt(*image, 35, 5), red);
    EXPECT_EQ(pixelAt(*image, 35, 35), blue);
    EXPECT_EQ(pixelAt(*image, 5, 5), blue);
}

TEST_F(Pictures, KeepTheirColorsThroughPremultiplication) {
    const auto file = straightNoise(kUint8);
    save("in.png", *file, kUint8);
    succeed("render brightnessandcontrast --in in.png --bits 8 --out float.png --depth float");
    EXPECT_TRUE(matches(*load("float.png", kUint8), kBounds, [&](int x, int y) { return kept(*file, x, y); }));
}

TEST_F(Pictures, TakeStraightColorsAsTheEffectSaysTheyAre) {
    const auto source = opaqueNoise(1);
    save("in.png", *source, kUint8);
    succeed("render chromakeyer --in in.png --depth float --bits 16 --out out.png");
    const auto image = load("out.png", kUint16);
    int translucent = 0;
    EXPECT_TRUE(matches(*image, image->bounds(), [&](int x, int y) {
        Pixel p = pixelAt(*source, x, y);
        for (double& c : p) c *= 257;
        p[3] = pixelAt(*image, x, y)[3];
        translucent += p[3] > 0 && p[3] < 65535;
        return Expected{p, 1};
    }));
    EXPECT_GT(translucent, 100);
}

TEST_F(Pictures, AreTheSameInEitherChannelOrder) {
    save("in.png", *straightNoise(kUint8), kUint8);
    for (const auto& [depth, type] : {std::pair("byte", kUint8), std::pair("float", kUint16)}) {
        succeed(kTone + "--in in.png --out rgba.png --depth " + depth);
        succeed(kTone + "--in in.png --out bgra.png --order bgra --depth " + depth);
        EXPECT_TRUE(samePixels(*load("rgba.png", type), *load("bgra.png", type))) << depth;
    }
}

TEST_F(Pictures, MayReplaceTheirInput) {
    save("in.png", *opaqueNoise(1), kUint8);
    succeed(kTone + "--in in.png --out in.png");
    EXPECT_TRUE(samePixels(*load("in.png", kUint8), *toned(opaqueNoise(1))));
    EXPECT_EQ(files(), Words{"in.png"});
}

TEST_F(Pictures, ThatAreGeneratedAreMadeByOneThreadUnlessToldOtherwise) {
    const std::string render = "render checkerboard --size 40x30 --out "; // 7.5 tiles high: a second band starts anew
    succeed(render + "usual.png");
    succeed(render + "one.png --threads 1");
    succeed(render + "two.png --threads 2");
    EXPECT_TRUE(samePixels(*load("usual.png", kUint8), *load("one.png", kUint8)));
    EXPECT_FALSE(samePixels(*load("two.png", kUint8), *load("one.png", kUint8)));
}

// ---- sequences, chains, values

TEST_F(Sequences, KeepTheirFrameNumbers) {
    for (const int frame : {98, 99, 100, 101})
        save("in." + std::to_string(frame) + ".png", *opaqueNoise(frame), kUint8);
    save("in.0100.png", *opaqueNoise(7), kUint8); // of another sequence
    const Words inputs = files();
    succeed(kTone + "--in in.%d.png --out out.%04d.png");
    succeed(kTone + "--in in.%d.png --out part.%d.png --frames 99-100");
    Words expected{"out.0098.png", "out.0099.png", "out.0100.png", "out.0101.png", "part.100.png", "part.99.png"};
    expected.insert(expected.begin(), inputs.begin(), inputs.end());
    EXPECT_EQ(files(), expected);
    for (const char* file : {"out.0100.png", "part.100.png"})
        EXPECT_TRUE(samePixels(*load(file, kUint8), *toned(opaqueNoise(100)))) << file;
}

TEST_F(Sequences, WithAGapNameTheMissingFrameAndKeepWhatIsDone) {
    for (const int frame : {1, 2, 4}) save("in." + std::to_string(frame) + ".png", *opaqueNoise(frame), kUint8);
    const Result result = Child(folder, kTone + "--in in.%d.png --out out.%d.png").wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("no file in.3.png"), std::string::npos) << result.err;
    EXPECT_EQ(files(), Words({"in.1.png", "in.2.png", "in.4.png", "out.1.png", "out.2.png"}));
    EXPECT_TRUE(samePixels(*load("out.2.png", kUint8), *toned(opaqueNoise(2))));
}

TEST_F(Chains, AreOneEffectAfterTheOther) {
    const std::string board = "render checkerboard --size 64x48 --set Color2=0.8,0.4,0.2,1 ";
    succeed(board + "--out board.png");
    succeed(board +
            "+ brightnessandcontrast --set Brightness=0.3 + brightnessandcontrast --set Contrast=0.5 --out out.png");
    const Settings bright{{"Brightness", {0.3}}}, strong{{"Contrast", {0.5}}};
    EXPECT_TRUE(samePixels(*load("out.png", kUint8), *toned(toned(load("board.png", kUint8), bright), strong)));
}

TEST_F(Values, MoveFromKeyToKey) {
    save("in.png", *opaqueNoise(1), kUint8);
    succeed("render brightnessandcontrast --in in.png --key Brightness=10:0,20:0.5 --frames 14-15 --out %d.png");
    EXPECT_TRUE(samePixels(*load("14.png", kUint8), *toned(opaqueNoise(1), {{"Brightness", {0.2}}})));
    EXPECT_TRUE(samePixels(*load("15.png", kUint8), *toned(opaqueNoise(1), {{"Brightness", {0.25}}})));
    succeed("render checkerboard --size 8x8 --key Color1=0:0,0,0,1,4:1,0,0,1 --frames 2 --out color.png");
    EXPECT_EQ(pixelAt(*load("color.png", kUint8), 0, 7), (Pixel{127, 0, 0, 255}));
}

TEST_F(Values, CanBeSetByPressingAButton) {
    const auto grey = [](int x, int) { return x < 18 ? Pixel{150, 150, 150, 255} : Pixel{100, 100, 100, 255}; };
    save("in.png", *painted(kBytes, kBounds, grey), kUint8);
    succeed("render brightnessandcontrast --in in.png --press DoAnalysis --set Min=0.2 --out out.png");
    const auto result = load("out.png", kUint8);
    EXPECT_NEAR(pixelAt(*result, 36, 0)[0], 51, 2); // Min, which counts although it follows the button
    EXPECT_NEAR(pixelAt(*result, 0, 0)[0], 235, 2); // Max
}

// ---- video

TEST_F(Videos, WithoutLossKeepEveryPixelOfEveryFrame) {
    if (!hasVideo()) GTEST_SKIP() << "ffmpeg is not installed";
    const std::string pass = "render brightnessandcontrast --in ";
    for (const bool alpha : {false, true}) {
        const auto frame = [&](int n) { return alpha ? straightNoise(kUint8, std::uint64_t(n)) : opaqueNoise(n); };
        for (const int number : {3, 4, 5}) save("in." + std::to_string(number) + ".png", *frame(number), kUint8);
        const std::string depth = alpha ? " --depth float" : ""; // floats have room for straight alpha
        succeed(pass + "in.%d.png --out video.mkv" + depth);
        succeed(pass + "video.mkv --bits 8 --out out.%d.png" + depth);
        for (const int number : {0, 1, 2}) { // as videos count
            const auto original = frame(number + 3), result = load("out." + std::to_string(number) + ".png", kUint8);
            EXPECT_TRUE(matches(*result, kBounds, [&](int x, int y) { return kept(*original, x, y); })) << number;
        }
    }
    EXPECT_FALSE(fs::exists(folder / "out.3.png"));
}

TEST_F(Videos, AreReadFromAnyFrameAndKeepTheirRate) {
    if (!hasVideo()) GTEST_SKIP() << "ffmpeg is not installed";
    const std::string moving = "render checkerboard --size 32x32 --key GridOffsetX=0:0,99:1 ";
    succeed(moving + "--frames 0-99 --rate 30000/1001 --out in.mkv");
    succeed(moving + "--frames 77 --out expected.png");
    succeed("render brightnessandcontrast --in in.mkv --frames 70-77 --out part.mkv");
    succeed("render brightnessandcontrast --in part.mkv --frames 7 --out 77.png");
    EXPECT_TRUE(samePixels(*load("77.png", kUint8), *load("expected.png", kUint8)));
    const std::string file = (folder / "part.mkv").string();
    const std::string probed = output("ffprobe -v error -count_packets -show_streams '" + file + "'");
    EXPECT_NE(probed.find("r_frame_rate=30000/1001"), std::string::npos) << probed;
    EXPECT_NE(probed.find("nb_read_packets=8"), std::string::npos) << probed;
}

// ---- OpenCL

class OnDevices : public CommandLine {};

TEST_F(OnDevices, PicturesAreThoseOfTheProcessor) {
    const Result devices = Child(folder, "devices").wait();
    if (devices.status != 0) {
        EXPECT_NE(devices.err.find("there is no OpenCL device"), std::string::npos) << devices.err;
        GTEST_SKIP() << devices.err;
    }
    EXPECT_EQ(devices.out.substr(0, 3), "0  ");
    const std::string chain =
        "render checkerboard --size 96x64 --set TileDimensionsWidth=0.125 "
        "+ brightnessandcontrast --set Contrast=-0.5 --set ContrastCenter=0.25 ";
    for (const std::string depth : {"byte", "float"}) {
        succeed(chain + "--depth " + depth + " --out cpu.exr --bits 32");
        succeed(chain + "--depth " + depth + " --opencl --device 0 --out device.exr --bits 32");
        const auto cpu = load("cpu.exr", kFloat);
        EXPECT_TRUE(matches(*load("device.exr", kFloat), cpu->bounds(), [&](int x, int y) {
            return Expected{pixelAt(*cpu, x, y), 4e-6};
        })) << depth;
    }
}

TEST_F(OnDevices, ThatAreNotThereOrCannotServeAreNamed) {
    expectFailures(1, {{"render checkerboard --opencl --device 99 --out a.png", {"OpenCL device"}}});
    expectFailures(2, {{"render checkerboard --device 1 --out a.png", {"--opencl"}},
                       {"render checkerboard --opencl --device -1 --out a.png", {"--device"}}});
}

} // namespace
