// Brightness and contrast: controls, arithmetic, and the analysis that sets them.
#include "effects/brightnessandcontrast/brightnessandcontrast.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "kernels.h"

namespace {

using Values = brightnessandcontrastValues;

// --- Controls ---

constexpr const char* kReferenceModes[] = {"RM_CurrentFrame", "RM_CurrentMedia", "RM_EachFrameIndependently"};
enum ReferenceMode { CurrentFrame, CurrentMedia, EachFrame };

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    {.name = "Brightness", .field = OFX::at<&Values::brightness>, .range = {-1, 1},
     .hint = "Added to every colour: 1 turns black into white."},
    {.name = "Contrast", .field = OFX::at<&Values::contrast>, .range = {-1, 1},
     .hint = "-1 leaves only the centre, 0 changes nothing, 1 leaves only black and white."},
    {.name = "ContrastCenter", .label = "Contrast center", .field = OFX::at<&Values::center>, .initial = {0.5},
     .hint = "The level that contrast leaves where it is."},
    {.name = "Group", .kind = OFX::Kind::Group},
    {.name = "GroupInput", .kind = OFX::Kind::Group, .parent = "Group"},
    {.name = "GroupOutput", .kind = OFX::Kind::Group, .parent = "Group"},
    {.name = "Percent", .kind = OFX::Kind::Double, .parent = "GroupInput", .initial = {0.01}, .range = {0, 0.5},
     .increment = 0.01, .animates = false,
     .hint = "Share of the darkest and of the brightest pixels that the analysis leaves out."},
    {.name = "Min", .kind = OFX::Kind::Double, .parent = "GroupOutput", .initial = {15 / 255.0}, .range = {0, 0.99},
     .animates = false, .hint = "The level that the analysis moves the darkest pixels to."},
    {.name = "Max", .kind = OFX::Kind::Double, .parent = "GroupOutput", .initial = {235 / 255.0}, .range = {0.01, 1},
     .display = {0.1, 1}, .animates = false, .hint = "The level that the analysis moves the brightest pixels to."},
    {.name = "ReferenceMode", .kind = OFX::Kind::Choice, .parent = "Group", .initial = {CurrentMedia},
     .animates = false, .options = kReferenceModes,
     .hint = "What the analysis measures: the current frame, all frames together, or each frame for keys of its own."},
    {.name = "DoAnalysis", .kind = OFX::Kind::PushButton, .parent = "Group",
     .hint = "Set brightness and contrast so that the footage fills the range from Min to Max."},
};
// clang-format on

// --- Arithmetic ---

// A smaller change than this is none.
constexpr double kThreshold = 1e-6;
// Keeps full contrast finite. Bytes and floats use different limits, on purpose.
constexpr double kByteLimit = 1.0000001, kFloatLimit = 1.000001;

double contrastFactor(double contrast, double limit) { return contrast > 0 ? 1 / (limit - contrast) : contrast + 1; }

} // namespace

pixelops::ByteTable brightnessandcontrast::byteTable(const Values& v) {
    const double factor = contrastFactor(v.contrast, kByteLimit);
    pixelops::ByteTable table{};
    for (std::size_t i = 0; i < std::size(table.results); ++i) {
        const double level = static_cast<double>(i) / 255;
        const double x = ((level + v.brightness - v.center) * factor + v.center) * 255;
        table.results[i] = static_cast<std::uint8_t>(std::clamp(x, 0.0, 255.0));
    }
    return table;
}

brightnessandcontrast::Tone brightnessandcontrast::tone(const Values& v) {
    return {.shifts = std::abs(v.brightness) > kThreshold,
            .scales = std::abs(v.contrast) > kThreshold,
            .offset = static_cast<float>(v.brightness),
            .factor = static_cast<float>(contrastFactor(v.contrast, kFloatLimit)),
            .center = static_cast<float>(v.center)};
}

// --- Processors ---

void brightnessandcontrastProcessorBase::preProcess() {
    table_ = brightnessandcontrast::byteTable(values);
    tone_ = brightnessandcontrast::tone(values);
}

template <class T, int N, int max, int bgra>
void brightnessandcontrastProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    OFX::mapRows<T, N>(band, *sources[0], *destination, abort(), [&](const T* from, T* to, int count) {
        const auto pixels = static_cast<std::size_t>(count);
        if constexpr (N == 1) {
            pixelops::copyRow(from, to, pixels * sizeof(T)); // no colour, nothing to change
        } else if constexpr (max == 255) {
            pixelops::applyTable(table_, from, to, pixels);
        } else {
            brightnessandcontrast::toneRow(tone_, from, to, pixels);
        }
    });
}

void brightnessandcontrastOpenCLProcessor::process() {
    const cl_float4 tone = {{static_cast<float>(values.brightness), static_cast<float>(values.contrast),
                             static_cast<float>(values.center), 0}};
    pictureKernel().arg(tone).run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::brightnessandcontrast, {"kdd97a7f20"});

constinit const OFX::EffectTraits brightnessandcontrastPlugin::traits = {
    .label = "Orvix Brightness and Contrast",
    .contexts = OFX::kFilter,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1248,
};

bool brightnessandcontrastPlugin::neutral(const Values& v) const {
    return std::abs(v.brightness) <= kThreshold && std::abs(v.contrast) <= kThreshold;
}

void brightnessandcontrastPlugin::changedParam(const OFX::ChangeArguments& arguments, const char* name) {
    if (std::strcmp(name, "DoAnalysis") == 0) analyse(arguments.time);
}

// The setting that moves the footage's darkest and brightest levels to Min and Max; nothing for a flat picture.
std::optional<Values> brightnessandcontrastPlugin::settingFor(const OFX::LumaHistogram& histogram, double time) const {
    const double share = param("Percent").number(), min = param("Min").number(), max = param("Max").number();
    const double low = histogram.low(share), high = histogram.high(share);
    if (histogram.empty() || high <= low) return std::nullopt;
    const double center = param<&Values::center>().valueAt(time).numbers[0];
    const double factor = (max - min) / (high - low);
    const double contrast = factor <= 1 ? factor - 1 : kByteLimit - 1 / factor;
    const double brightness = (min - center) / factor + center - low;
    return Values{std::clamp(brightness, -1.0, 1.0), std::clamp(contrast, -1.0, 1.0), center};
}

// Measures the frames that the mode names and sets brightness and contrast, as one step of the undo list. Nothing is
// set when the user cancels or a frame cannot be had.
void brightnessandcontrastPlugin::analyse(double time) {
    const auto refuse = [this](const char* why) { showMessage(kOfxMessageError, why); };
    const OFX::Clip& source = sources()[0];
    if (!source.connected()) return refuse("There is no source to analyse.");
    if (param("Min").number() >= param("Max").number()) return refuse("Min must be below Max.");
    const int mode = static_cast<int>(param("ReferenceMode").number());
    OfxRangeD range{time, time};
    if (mode != CurrentFrame && !source.frameRange(range)) return refuse("The host does not tell the source's frames.");

    OFX::LumaHistogram histogram;
    std::vector<std::pair<double, Values>> settings;
    const auto settle = [&](double at) {
        if (const auto setting = settingFor(histogram, at)) settings.emplace_back(at, *setting);
        histogram = {};
    };
    {
        const OFX::Progress progress(*this, "Analysing the footage");
        const int frames = static_cast<int>(std::clamp(range.max - range.min, 0.0, 1e7)) + 1;
        for (int i = 0; i < frames; ++i) {
            if (!progress.update(static_cast<double>(i) / frames)) return;
            histogram.add(OFX::Image(source, range.min + i));
            if (mode == EachFrame) settle(range.min + i);
        }
    }
    if (mode != EachFrame) settle(time);
    if (settings.empty()) return refuse("The footage is flat: its darkest and brightest levels are the same.");

    const OFX::EditBlock block(*this, "Analyse brightness and contrast");
    for (const auto& [at, setting] : settings) {
        if (mode == EachFrame) {
            param<&Values::brightness>().setNumberAt(at, setting.brightness);
            param<&Values::contrast>().setNumberAt(at, setting.contrast);
        } else {
            param<&Values::brightness>().setNumber(setting.brightness);
            param<&Values::contrast>().setNumber(setting.contrast);
        }
    }
}

OFX_EFFECT(brightnessandcontrast)
