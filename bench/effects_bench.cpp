// Times every built effect through the real bundle and our host, each frame in turn with a plain streaming copy of a
// frame of the same size and depth, and reports the ratio:
// orvix_bench [EFFECT...] [--markdown FILE] [--benchmark_...]. With ORVIX_SIMD set: large frames on one thread alone.
// The YUV converters follow, unless effects are named.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <set>

#include "bench/frames.h"
#include "bench/pixelops_bench.h"
#include "bench/report.h"
#include "bench/timing.h"
#include "host/binary.h"
#include "host/host.h"

namespace {

using namespace bench;

// What to set beside the defaults. Effects without a row here run at their defaults.
struct Setting {
    std::string effect, name;
    std::vector<std::pair<std::string, std::string>> values;
};

const std::vector<Setting> kSettings = {
    {"checkerboard", "hard", {}},
    {"checkerboard", "soft", {{"EdgeBlendingHorizontal", "1"}}},
    {"brightnessandcontrast", "neutral", {}},
    {"brightnessandcontrast", "both", {{"Brightness", "0.1"}, {"Contrast", "0.3"}}},
    {"chromakeyer", "default", {}},
    {"chromakeyer", "blur", {{"BlurAmount", "0.02"}}},
    {"colorcorrector", "tone", {{"Gamma", "1.2"}}},
    {"colorcorrector", "saturation", {{"Saturation", "1.3"}}},
    {"colorcorrector", "tone+saturation", {{"Gamma", "1.2"}, {"Saturation", "1.3"}}},
    {"colorcorrector", "wheels", {{"Mid", "100,0.4"}}},
    {"colorcorrector", "tone+wheels", {{"Gamma", "1.2"}, {"Mid", "100,0.4"}}},
    {"colorcorrector", "saturation+wheels", {{"Saturation", "1.3"}, {"Mid", "100,0.4"}}},
    {"colorcorrector", "all", {{"Gamma", "1.2"}, {"Saturation", "1.3"}, {"Mid", "100,0.4"}}},
    {"levels", "plain", {{"InputStart", "0.1"}, {"OutputEnd", "0.9"}}},
    {"levels", "gamma", {{"InputStart", "0.1"}, {"OutputEnd", "0.9"}, {"Gamma", "1.4"}}},
    {"dissolve", "additive", {{"Transition", "0.4"}, {"Type", "0"}}},
    {"dissolve", "subtractive", {{"Transition", "0.4"}, {"Type", "1"}}},
    {"dissolve", "crossfade", {{"Transition", "0.4"}, {"Type", "2"}}},
    {"dissolve", "bleed", {{"Transition", "0.4"}, {"Type", "3"}}},
    {"dissolve", "morph", {{"Transition", "0.4"}, {"Type", "4"}}},
    {"dissolve", "threshold", {{"Transition", "0.4"}, {"Type", "5"}}},
    {"dissolve", "appear", {{"Transition", "0.4"}, {"Type", "6"}}},
    {"dissolve", "gray", {{"Transition", "0.4"}, {"Type", "7"}}},
    {"dissolve", "color", {{"Transition", "0.4"}, {"Type", "8"}}},
    {"dissolve", "channels", {{"Transition", "0.4"}, {"Type", "9"}}},
    {"linearwipe", "45 degrees", {{"Transition", "0.4"}, {"Angle", "45"}}},
    {"linearwipe", "45 degrees, soft", {{"Transition", "0.4"}, {"Angle", "45"}, {"Feather", "1"}}},
    {"clockwipe", "default", {{"Transition", "0.4"}}},
    {"flash", "no diffusion", {{"Transition", "0.4"}}},
    {"flash", "diffusion", {{"Transition", "0.4"}, {"HorizontalDiffusion", "0.2"}, {"VerticalDiffusion", "0.2"}}},
    {"clockwipe", "full feather", {{"Transition", "0.4"}, {"FeatherAngle", "360"}}},
};

std::string shortName(const std::string& identifier) { return identifier.substr(identifier.rfind(':') + 1); }

std::vector<Setting> settingsOf(const std::string& effect) {
    std::vector<Setting> found;
    for (const Setting& setting : kSettings) {
        if (effect == setting.effect) found.push_back(setting);
    }
    if (found.empty()) found.push_back({effect, "default", {}});
    return found;
}

// One effect in one host with so many threads.
class Subject {
public:
    Subject(const std::string& effect, unsigned threads)
        : host_(optionsFor(threads)), binary_(host_, ORVIX_BUNDLE), plugin_(binary_.plugin(effect)) {}

    host::Instance& make(const Setting& setting) {
        instance_ = plugin_.createInstance(plugin_.contexts().front());
        for (const auto& [name, value] : setting.values) instance_->edit(name, value);
        return *instance_;
    }

    // Sources take the frames in turn, so that no input lies in a cache.
    std::size_t connect(Frames& frames) {
        std::size_t inputs = 0;
        for (const auto& clip : instance_->clips()) {
            if (clip->isOutput()) continue;
            clip->connect([&frames, inputs](double) { return frames.source(inputs); }, frames.format());
            ++inputs;
        }
        return inputs;
    }

    void render(const std::shared_ptr<host::Image>& output) {
        host::RenderRequest request;
        request.output = output;
        if (instance_->render(request) != kOfxStatOK) throw std::runtime_error("a render failed");
    }

private:
    static host::Options optionsFor(unsigned threads) {
        host::Options options;
        options.threads = threads;
        return options;
    }

    host::Host host_;
    host::Binary binary_;
    host::Plugin& plugin_;
    std::unique_ptr<host::Instance> instance_;
};

// Time from opening the bundle to the first frame.
double firstFrame(const std::string& effect) {
    Frames frames({1920, 1080}, host::Depth::Byte, 0);
    return milliseconds([&] {
        Subject subject(effect, 2);
        subject.make({effect, "default", {}});
        subject.connect(frames);
        subject.render(frames.destination());
    });
}

// The same in a process that has not opened the bundle before.
double firstFrameOf(const std::string& program, const std::string& effect) {
    const std::string command = "'" + program + "' --first-frame " + effect;
    double result = 0;
    std::FILE* output = popen(command.c_str(), "r");
    const bool told = output != nullptr && std::fscanf(output, "%lf", &result) == 1;
    if (output != nullptr) pclose(output);
    if (!told) throw std::runtime_error("no first frame of " + effect);
    return result;
}

Row measure(const std::string& effect, const Setting& setting, Size size, host::Depth depth, unsigned threads) {
    Frames frames(size, depth);
    Subject subject(effect, threads);
    subject.make(setting);
    Row row{effect, setting.name, size, depth, threads};
    row.inputs = subject.connect(frames);

    const PeakMemory peak;
    subject.render(frames.destination());
    std::vector<double> copies, triads, renders;
    for (int i = 0; i < kRepeats; ++i) {
        frames.advance();
        copies.push_back(milliseconds([&] { frames.copy(); }));
        if (row.inputs > 1) {
            frames.advance();
            triads.push_back(milliseconds([&] { frames.triad(); }));
        }
        frames.advance();
        renders.push_back(milliseconds([&] { subject.render(frames.destination()); }));
    }
    row.milliseconds = median(renders);
    row.copy = median(copies);
    if (!triads.empty()) row.triad = median(triads);
    row.peakBytes = peak.bytes();
    return row;
}

std::vector<std::string> builtEffects(const std::set<std::string>& wanted) {
    host::Host host;
    host::Binary binary(host, ORVIX_BUNDLE);
    for (const std::string& name : wanted) binary.plugin(name).describe(); // throws with the nearest names
    std::vector<std::string> effects;
    for (const auto& plugin : binary.plugins()) {
        try {
            plugin->describe();
        } catch (const std::exception&) {
            continue; // not built yet
        }
        if (wanted.empty() || wanted.contains(shortName(plugin->identifier()))) effects.push_back(plugin->identifier());
    }
    return effects;
}

// One benchmark per row. The library reports and writes JSON; the measuring is ours, since a ratio needs both times
// from the same moments.
void add(const Row& wanted, const Setting& setting, std::vector<Row>& rows) {
    const auto run = [wanted, setting, &rows](benchmark::State& state) {
        for (auto _ : state) {
            const Row row = measure(wanted.effect, setting, wanted.size, wanted.depth, wanted.threads);
            state.SetIterationTime(row.milliseconds / 1000);
            state.counters["copy_ms"] = row.copy;
            state.counters["multiple"] = row.milliseconds / row.copy;
            if (row.triad > 0) state.counters["triad_multiple"] = row.milliseconds / row.triad;
            state.counters["peak_MiB"] = static_cast<double>(row.peakBytes) / (1 << 20);
            rows.push_back(row);
        }
    };
    benchmark::RegisterBenchmark(wanted.name("/").c_str(), run)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

// All sizes and numbers of threads, or for a level the large frames on one thread.
void addRows(const std::string& effect, bool level, std::vector<Row>& rows) {
    for (const Setting& setting : settingsOf(shortName(effect))) {
        for (const Size size : {Size{1920, 1080}, Size{3840, 2160}}) {
            for (const host::Depth depth : {host::Depth::Byte, host::Depth::Float}) {
                for (const unsigned threads : {1u, 2u}) {
                    if (level && (size.width < 3840 || threads > 1)) continue;
                    add({effect, setting.name, size, depth, threads}, setting, rows);
                }
            }
        }
    }
}

} // namespace

int main(int argc, char** argv) try {
    // A row counts the host's threads: the bundle's own loops, which read this when it is opened, add none unless
    // asked.
    setenv("OMP_NUM_THREADS", "1", 0);
    benchmark::Initialize(&argc, argv);
    const auto isOption = [&](int i, const char* name) { return argv[i] == std::string(name) && i + 1 < argc; };
    std::set<std::string> wanted;
    std::string markdown;
    for (int i = 1; i < argc; ++i) {
        if (isOption(i, "--first-frame")) {
            std::cout << firstFrame(argv[i + 1]) << '\n';
            return 0;
        }
        if (isOption(i, "--markdown")) {
            markdown = argv[++i];
        } else {
            wanted.insert(argv[i]);
        }
    }
    const char* variable = std::getenv("ORVIX_SIMD");
    const std::string level = variable != nullptr ? variable : "";
    if (level > bestLevel()) throw std::runtime_error("this machine has no level " + level);

    std::vector<Row> rows;
    std::vector<std::pair<std::string, double>> firstFrames;
    for (const std::string& effect : builtEffects(wanted)) {
        if (level.empty()) firstFrames.emplace_back(shortName(effect), firstFrameOf(argv[0], effect));
        addRows(effect, !level.empty(), rows);
    }
    std::vector<YuvRow> yuvRows;
    if (wanted.empty()) addYuvRows(yuvRows);
    benchmark::RunSpecifiedBenchmarks();
    if (markdown.empty()) return 0;
    level.empty() ? writePage(markdown, rows, firstFrames) : appendLevel(markdown, level, rows);
    if (level.empty() && !yuvRows.empty()) appendYuv(markdown, yuvRows);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "bench: " << error.what() << '\n';
    return 1;
}
