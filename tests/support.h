// What the tests share: the built bundle in a host, images of known content, and images compared pixel by pixel.
#pragma once
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/binary.h"
#include "host/host.h"

namespace test {

using host::Components, host::Depth, host::Format, host::Image, host::Instance, host::Layout, host::Order;

inline constexpr const char* kCheckerboard = "com.orvixstudioworks:checkerboard";
inline constexpr const char* kKeyer = "com.orvixstudioworks:chromakeyer";
inline constexpr const char* kBrightness = "com.orvixstudioworks:brightnessandcontrast";
inline constexpr const char* kCorrector = "com.orvixstudioworks:colorcorrector";
inline constexpr const char* kLevels = "com.orvixstudioworks:levels";

inline constexpr Format kBytes{Depth::Byte}, kFloats{Depth::Float};
inline constexpr Format kBytesBGRA{Depth::Byte, Components::RGBA, Order::BGRA};
inline constexpr Format kFloatsBGRA{Depth::Float, Components::RGBA, Order::BGRA};
inline constexpr Format kRendered[] = {kBytes, kFloats, kBytesBGRA, kFloatsBGRA};

// Parameters by name, in the numbers of their components.
using Settings = std::map<std::string, std::vector<double>>;

// The built bundle, open in a host of its own.
class Session {
public:
    explicit Session(host::Options options = {});
    ~Session(); // expects that the bundle broke no rule of the host

    host::Host host;
    host::Binary binary;

    host::Plugin& plugin(const std::string& effect) { return *binary.find(effect); }
    // In the effect's first context; filters get a source only by connecting it.
    std::unique_ptr<Instance> make(const std::string& effect, const Settings& settings = {});
};

// One thread, so that grids that restart per band are whole.
host::Options oneThread();
// A host with one of its suites exchanged; null takes it away.
host::Options withSuite(const char* name, const void* suite, unsigned threads = 1);

std::string bundlePath();
// Identifiers of the plug-ins that are not merely planned, in registry order.
const std::vector<std::string>& builtEffects();
// The part after the colon: the name of a test that runs for each effect.
std::string shortName(const std::string& effect);
inline std::string effectName(const testing::TestParamInfo<std::string>& test) { return shortName(test.param); }

void set(Instance& instance, const Settings& settings);
// Every ranged number a third of the way from its default to its maximum, so that no effect is neutral, and colours
// that tell the channels apart.
void setUnusual(Instance& instance);
// A picture of its own for every input.
void connect(Instance& instance, Format format, OfxRectI bounds, Layout layout = {});

// Numbers that are the same on every machine.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next();
    double real(double low, double high);
    int integer(int low, int high); // both included
    template <class T>
    T pick(std::initializer_list<T> choices) {
        return choices.begin()[integer(0, static_cast<int>(choices.size()) - 1)];
    }

private:
    std::uint64_t state_;
};

// Red, green, blue, alpha as stored: bytes 0..255, floats as they are. Alpha images have no colour.
using Pixel = std::array<double, 4>;
Pixel pixelAt(const Image& image, int x, int y);
void put(Image& image, int x, int y, const Pixel& pixel);

// What nobody has written to.
inline constexpr std::byte kUntouched{0xA5};
std::shared_ptr<Image> blank(Format format, OfxRectI bounds, Layout layout = {});
// Premultiplied noise with every kind of alpha. It depends on the seed, the depth and the distance from the lower left
// corner only.
std::shared_ptr<Image> picture(Format format, OfxRectI bounds, std::uint64_t seed = 1, Layout layout = {});
// A bright disc with a soft edge before a green screen, opaque, with a little noise in red and blue.
std::shared_ptr<Image> screened(Format format, OfxRectI bounds);
std::shared_ptr<Image> flat(Format format, OfxRectI bounds, const Pixel& pixel);

// Renders into a new untouched image, and expects that this succeeds.
std::shared_ptr<Image> rendered(Instance& instance, Format format, OfxRectI bounds, Layout layout = {});
OfxStatus render(Instance& instance, const std::shared_ptr<Image>& output, OfxRectI window, double time = 0);

// The same pixels, bit by bit, whatever the origins and layouts are.
testing::AssertionResult samePixels(const Image& left, const Image& right);
// The whole image is what blank() made, except inside the area.
testing::AssertionResult untouchedOutside(const Image& image, OfxRectI area);

struct Expected {
    Pixel value;
    double tolerance = 0; // bytes: 0
};
// Every pixel of the area is what the reference says.
testing::AssertionResult matches(const Image& image, OfxRectI area,
                                 const std::function<Expected(int x, int y)>& reference);

inline constexpr OfxRectI kBounds = {0, 0, 37, 21};

// The base of tests that run for each effect, by its identifier.
class EveryEffect : public testing::TestWithParam<std::string> {
protected:
    // An instance that is not neutral and has all its sources.
    static std::unique_ptr<Instance> ready(Session& session, Format format = kBytes, OfxRectI bounds = kBounds,
                                           Layout layout = {});
    // What such an instance paints in a host of its own.
    static std::shared_ptr<Image> painted(host::Options options, Format format = kBytes, OfxRectI bounds = kBounds);
    static std::shared_ptr<Image> painted(Format format = kBytes, OfxRectI bounds = kBounds) {
        return painted(oneThread(), format, bounds);
    }
};

// Runs a disabled test of this program in a process of its own, with the given settings of the environment. Answers
// what it wrote to both streams; expects that it passed.
std::string runChild(const std::string& environment, const std::string& disabledTest);
// The same for any command of the shell, whatever its exit status.
std::string output(const std::string& command);

} // namespace test
