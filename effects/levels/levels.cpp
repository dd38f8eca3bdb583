// Levels: controls and processors.
#include "effects/levels/levels.h"

#include "kernels.h"

namespace {

using Values = levelsValues;

constexpr const char* kChannels[] = {"All", "Red", "Green", "Blue", "Alpha"};

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    {.name = "Channel", .field = OFX::at<&Values::channel>, .options = kChannels,
     .hint = "What is mapped: all colours, one of them, or all colours and alpha."},
    {.name = "InputStart", .label = "Input start", .field = OFX::at<&Values::inputStart>,
     .hint = "The level that becomes the output's start."},
    {.name = "InputEnd", .label = "Input end", .field = OFX::at<&Values::inputEnd>, .initial = {1},
     .hint = "The level that becomes the output's end."},
    {.name = "OutputStart", .label = "Output start", .field = OFX::at<&Values::outputStart>,
     .hint = "What the input's start becomes."},
    {.name = "OutputEnd", .label = "Output end", .field = OFX::at<&Values::outputEnd>, .initial = {1},
     .hint = "What the input's end becomes; below the output's start the picture is inverted."},
    {.name = "Gamma", .field = OFX::at<&Values::gamma>, .initial = {1}, .range = {0.45, 5},
     .hint = "Brightens the levels between above 1 and darkens them below; 1 is straight."},
};
// clang-format on

// The bytes of a pixel that a channel's table is applied to; the first in memory is the lowest.
std::uint32_t bytesOf(levels::Channel channel) {
    constexpr std::uint32_t kBytes[] = {0x00FFFFFF, 0x000000FF, 0x0000FF00, 0x00FF0000, 0xFFFFFFFF};
    return kBytes[channel];
}

} // namespace

// --- Processors ---

void levelsProcessorBase::preProcess() {
    mapping_ = levels::Mapping(values);
    table_ = levels::byteTable(mapping_);
    floats_ = levels::floatMapping(mapping_, channel());
}

template <class T, int N, int max, int bgra>
void levelsProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    OFX::mapRows<T, N>(band, *sources[0], *destination, abort(), [&](const T* from, T* to, int count) {
        const auto pixels = static_cast<std::size_t>(count);
        if constexpr (N == 1) {
            if (channel() != levels::Alpha) return pixelops::copyRow(from, to, pixels * sizeof(T));
            for (std::size_t i = 0; i < pixels; ++i) {
                if constexpr (max == 255) {
                    to[i] = from[i] == 0 ? T{} : table_.results[from[i]];
                } else {
                    to[i] = from[i] > 0 ? static_cast<T>(mapping_(from[i])) : T{};
                }
            }
        } else if constexpr (max == 255) {
            pixelops::applyTableTo(bytesOf(channel()), table_, from, to, pixels);
        } else {
            levels::mapFloats(floats_, from, to, pixels);
        }
    });
}

void levelsOpenCLProcessor::process() {
    const bool floats = destination->format().depth == OFX::Depth::Float;
    const levels::FloatMapping m = levels::floatMapping(levels::Mapping(values), channel());
    const cl_float4 range = {{m.inputStart, m.perInput, m.outputStart, m.outputRange}};
    const cl_float8 curve = {{m.threshold, m.slope, m.inner, m.scale, m.exponent, m.factor, m.outer, m.inputStartRest}};
    pictureKernel((floats ? 5u : 0u) + static_cast<unsigned>(channel())).arg(range).arg(curve).run(width(), height());
}

// --- The plug-in ---

// For bytes, then for floats, in the order of the channels.
static OpenCL::Program kernelProgram(kernels::levels,
                                     {"kebd3ac110", "kebd3ac111", "kebd3ac112", "kebd3ac113", "kebd3ac114",
                                      "kebd3ac115", "kebd3ac116", "kebd3ac117", "kebd3ac118", "kebd3ac119"});

constinit const OFX::EffectTraits levelsPlugin::traits = {
    .label = "Orvix Levels",
    .contexts = OFX::kFilter,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1268,
};

OFX_EFFECT(levels)
