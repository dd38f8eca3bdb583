// What the tests share.
#include "tests/support.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "host/plugin.h"

namespace test {

Session::Session(host::Options options) : host(std::move(options)), binary(host, bundlePath()) {}

Session::~Session() {
    for (const std::string& misuse : host.misuse()) ADD_FAILURE() << misuse;
}

std::unique_ptr<Instance> Session::make(const std::string& effect, const Settings& settings) {
    auto instance = plugin(effect).createInstance(plugin(effect).contexts().front());
    set(*instance, settings);
    return instance;
}

host::Options oneThread() {
    host::Options options;
    options.threads = 1;
    return options;
}

host::Options withSuite(const char* name, const void* suite, unsigned threads) {
    host::Options options;
    options.threads = threads;
    options.suiteFilter = [name, suite](const std::string& asked, int, const void* ours) {
        return asked == name ? suite : ours;
    };
    return options;
}

std::string bundlePath() { return ORVIX_BUNDLE; }

const std::vector<std::string>& builtEffects() {
    static const std::vector<std::string> built = [] {
        std::vector<std::string> identifiers;
        Session session;
        for (const auto& plugin : session.binary.plugins()) {
            try {
                plugin->describe();
                identifiers.push_back(plugin->identifier());
            } catch (const host::Error& error) {
                if (error.status() != kOfxStatErrMissingHostFeature) throw;
            }
        }
        return identifiers;
    }();
    return built;
}

std::string shortName(const std::string& effect) { return effect.substr(effect.find(':') + 1); }

void set(Instance& instance, const Settings& settings) {
    for (const auto& [name, numbers] : settings) {
        host::Value value;
        std::copy(numbers.begin(), numbers.end(), value.numbers.begin());
        instance.parameters().at(name).set(value);
    }
}

void setUnusual(Instance& instance) {
    for (const auto& parameter : instance.parameters().all()) {
        const std::string type = parameter->kind().type;
        if (type != kOfxParamTypeDouble && type != kOfxParamTypeDouble2D) continue;
        host::Value value = parameter->defaultValue();
        for (int i = 0; i < parameter->kind().components; ++i) {
            double& number = value.numbers[static_cast<std::size_t>(i)];
            number += (parameter->properties().get<double>(kOfxParamPropMax, i) - number) / 3;
        }
        parameter->set(value);
    }
    if (instance.parameters().find("Color1")) set(instance, {{"Color1", {0.9, 0.4, 0.1, 0.8}}});
}

void connect(Instance& instance, Format format, OfxRectI bounds, Layout layout) {
    std::uint64_t seed = 1;
    for (const auto& clip : instance.clips())
        if (!clip->isOutput()) clip->connect(picture(format, bounds, seed++, layout));
}

std::unique_ptr<Instance> EveryEffect::ready(Session& session, Format format, OfxRectI bounds, Layout layout) {
    auto instance = session.make(GetParam());
    setUnusual(*instance);
    connect(*instance, format, bounds, layout);
    return instance;
}

std::shared_ptr<Image> EveryEffect::painted(host::Options options, Format format, OfxRectI bounds) {
    Session session(std::move(options));
    const auto instance = ready(session, format, bounds);
    return rendered(*instance, format, bounds);
}

// ---- numbers

std::uint64_t Random::next() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

double Random::real(double low, double high) {
    return low + (high - low) * (static_cast<double>(next() >> 11) / 9007199254740992.0);
}

int Random::integer(int low, int high) {
    return low + static_cast<int>(next() % (static_cast<std::uint64_t>(high - low) + 1));
}

// ---- pixels

namespace {

// Where the component stands in memory.
std::size_t place(const Format& format, std::size_t component) {
    if (format.components == Components::Alpha) return 0;
    return format.order == Order::BGRA && component != 1 && component != 3 ? 2 - component : component;
}

template <class T>
void exchange(const Format& format, std::byte* at, Pixel& pixel, bool write) {
    for (std::size_t c = format.components == Components::Alpha ? 3 : 0; c < 4; ++c) {
        std::byte* const from = at + place(format, c) * sizeof(T);
        T component = static_cast<T>(pixel[c]);
        if (write)
            std::memcpy(from, &component, sizeof component);
        else
            std::memcpy(&component, from, sizeof component), pixel[c] = static_cast<double>(component);
    }
}

void exchange(Image& image, int x, int y, Pixel& pixel, bool write) {
    const Format& format = image.format();
    std::byte* const at = image.row(y) + static_cast<std::ptrdiff_t>(x - image.bounds().x1) * format.pixelBytes();
    if (format.depth == Depth::Byte)
        exchange<std::uint8_t>(format, at, pixel, write);
    else
        exchange<float>(format, at, pixel, write);
}

Pixel noise(Depth depth, Random& random) {
    if (depth == Depth::Byte) {
        const int alpha = random.pick({0, 255, 255, random.integer(1, 254)});
        const auto color = [&] { return static_cast<double>(random.integer(0, alpha)); };
        return {color(), color(), color(), static_cast<double>(alpha)};
    }
    const double alpha = random.pick({0.0, 5e-7, 2e-6, 1.0, 1.0, 1.25, random.real(0, 1), random.real(0, 1)});
    const auto color = [&] { return random.real(-0.25, 1.5) * alpha; };
    return {color(), color(), color(), alpha};
}

std::ptrdiff_t usedBytes(const Image& image) {
    return static_cast<std::ptrdiff_t>(image.width()) * image.format().pixelBytes();
}

bool contains(const OfxRectI& area, int x, int y) { return x >= area.x1 && x < area.x2 && y >= area.y1 && y < area.y2; }

std::string text(const Pixel& p) {
    std::string text;
    for (const double component : p) text += (text.empty() ? "(" : ", ") + testing::PrintToString(component);
    return text + ")";
}

} // namespace

Pixel pixelAt(const Image& image, int x, int y) {
    Pixel pixel{};
    exchange(const_cast<Image&>(image), x, y, pixel, false);
    return pixel;
}

void put(Image& image, int x, int y, const Pixel& pixel) {
    Pixel copy = pixel;
    exchange(image, x, y, copy, true);
}

std::shared_ptr<Image> blank(Format format, OfxRectI bounds, Layout layout) {
    auto image = std::make_shared<Image>(format, bounds, layout);
    image->fill(kUntouched);
    return image;
}

std::shared_ptr<Image> picture(Format format, OfxRectI bounds, std::uint64_t seed, Layout layout) {
    auto image = blank(format, bounds, layout);
    Random random(seed);
    for (int y = bounds.y1; y < bounds.y2; ++y)
        for (int x = bounds.x1; x < bounds.x2; ++x) put(*image, x, y, noise(format.depth, random));
    return image;
}

std::shared_ptr<Image> screened(Format format, OfxRectI bounds) {
    auto image = blank(format, bounds);
    Random random(9);
    const bool bytes = format.depth == Depth::Byte;
    for (int y = bounds.y1; y < bounds.y2; ++y)
        for (int x = bounds.x1; x < bounds.x2; ++x) {
            const double inside = std::clamp((16 - std::hypot(x - 30, y - 22)) / 4 + 0.5, 0.0, 1.0);
            const double noise = random.real(-0.01, 0.01);
            Pixel p = {0.7 * inside + 0.1 + noise, 0.8 - 0.2 * inside, 0.25 * inside + 0.15 - noise, 1};
            for (double& c : p) c = bytes ? std::round(c * 255) : static_cast<double>(static_cast<float>(c));
            put(*image, x, y, p);
        }
    return image;
}

std::shared_ptr<Image> flat(Format format, OfxRectI bounds, const Pixel& pixel) {
    auto image = blank(format, bounds);
    for (int y = bounds.y1; y < bounds.y2; ++y)
        for (int x = bounds.x1; x < bounds.x2; ++x) put(*image, x, y, pixel);
    return image;
}

std::shared_ptr<Image> rendered(Instance& instance, Format format, OfxRectI bounds, Layout layout) {
    auto image = blank(format, bounds, layout);
    EXPECT_EQ(render(instance, image, bounds), kOfxStatOK);
    return image;
}

OfxStatus render(Instance& instance, const std::shared_ptr<Image>& output, OfxRectI window, double time) {
    host::RenderRequest request;
    request.time = time;
    request.output = output;
    request.window = window;
    return instance.render(request);
}

// ---- comparisons

testing::AssertionResult samePixels(const Image& left, const Image& right) {
    if (left.width() != right.width() || left.height() != right.height() ||
        left.format().pixelBytes() != right.format().pixelBytes())
        return testing::AssertionFailure() << "the images differ in size or format";
    for (int y = 0; y < left.height(); ++y) {
        const std::byte* const one = left.row(left.bounds().y1 + y);
        const std::byte* const other = right.row(right.bounds().y1 + y);
        for (std::ptrdiff_t i = 0; i < usedBytes(left); ++i)
            if (one[i] != other[i])
                return testing::AssertionFailure()
                       << "pixel (" << i / left.format().pixelBytes() << ", " << y << ") differs: "
                       << text(pixelAt(left, left.bounds().x1 + static_cast<int>(i) / left.format().pixelBytes(),
                                       left.bounds().y1 + y))
                       << " and "
                       << text(pixelAt(right, right.bounds().x1 + static_cast<int>(i) / left.format().pixelBytes(),
                                       right.bounds().y1 + y));
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult untouchedOutside(const Image& image, OfxRectI area) {
    if (!image.guardsIntact()) return testing::AssertionFailure() << "something was written beyond the image";
    const int size = image.format().pixelBytes();
    const std::ptrdiff_t pitch = std::abs(image.rowBytes());
    for (int y = image.bounds().y1; y < image.bounds().y2; ++y)
        for (std::ptrdiff_t i = 0; i < pitch; ++i) {
            const int x = image.bounds().x1 + static_cast<int>(i / size);
            if (i < usedBytes(image) && contains(area, x, y)) continue;
            if (image.row(y)[i] != kUntouched)
                return testing::AssertionFailure() << "(" << x << ", " << y << ") was written";
        }
    return testing::AssertionSuccess();
}

testing::AssertionResult matches(const Image& image, OfxRectI area,
                                 const std::function<Expected(int x, int y)>& reference) {
    for (int y = area.y1; y < area.y2; ++y)
        for (int x = area.x1; x < area.x2; ++x) {
            const Pixel is = pixelAt(image, x, y);
            const Expected expected = reference(x, y);
            for (std::size_t c = 0; c < 4; ++c)
                if (!(std::abs(is[c] - expected.value[c]) <= expected.tolerance))
                    return testing::AssertionFailure() << "pixel (" << x << ", " << y << ") is " << text(is)
                                                       << " and should be " << text(expected.value);
        }
    return testing::AssertionSuccess();
}

// ---- processes

std::string output(const std::string& command) {
    std::string text;
    FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return text;
    for (int c; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    pclose(pipe);
    return text;
}

std::string runChild(const std::string& environment, const std::string& disabledTest) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string text =
        output("env " + environment + " '" + self + "' --gtest_also_run_disabled_tests --gtest_filter=" + disabledTest);
    EXPECT_NE(text.find("[  PASSED  ] 1 test."), std::string::npos) << text;
    return text;
}

} // namespace test
