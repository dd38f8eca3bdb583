// The colour corrector: controls and processors.
#include "effects/colorcorrector/colorcorrector.h"

#include "kernels.h"
#include "pixelops/rows.h"
#include "pixelops/tone_curve.h"

namespace {

using Values = colorcorrectorValues;

constexpr OFX::Param wheel(const char* name, OFX::Field field, double level, const char* hint) {
    return {.name = name,
            .field = field,
            .range = {0, 360},
            .others = OFX::Range{0, 1},
            .doubleType = OFX::DoubleType::Chrominance,
            .wheelLevel = level,
            .hint = hint};
}

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    wheel("Low", OFX::at<&Values::low>, 0.4,
          "Pushes the shadows: a hue angle in degrees, and a magnitude from 0, which changes nothing, to 1."),
    wheel("Mid", OFX::at<&Values::mid>, 0.55,
          "Pushes the mid-tones: a hue angle in degrees, and a magnitude from 0, which changes nothing, to 1."),
    wheel("High", OFX::at<&Values::high>, 0.7,
          "Pushes the highlights: a hue angle in degrees, and a magnitude from 0, which changes nothing, to 1."),
    {.name = "Saturation", .field = OFX::at<&Values::saturation>, .initial = {1}, .range = {0, 3},
     .hint = "0 leaves grey, 1 changes nothing. Scales what the wheels push as well."},
    {.name = "Gamma", .field = OFX::at<&Values::gamma>, .initial = {1}, .range = {0, 2},
     .hint = "Brightens the mid-tones above 1 and darkens them below; 1 changes nothing."},
    {.name = "Gain", .field = OFX::at<&Values::gain>, .initial = {1}, .range = {0, 2},
     .hint = "A factor for luma, after gamma; 1 changes nothing."},
    {.name = "Offset", .field = OFX::at<&Values::offset>, .range = {-254, 254},
     .hint = "Added to luma, after gain, in codes of 8 bits: 255 would turn black into white."},
};
// clang-format on

} // namespace

// --- Processors ---

void colorcorrectorProcessorBase::preProcess() {
    const bool bytes = destination->format().depth == OFX::Depth::Byte;
    stages_ = colorcorrector::stagesOf(values);
    colorcorrector::fill(correction_, values, stages_, bytes ? 255 : 1);
}

template <class T, int N, int max, int bgra>
void colorcorrectorProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    const auto never = [] { return false; }; // eachRow asks the host
    eachRow(band, [&](const OFX::RectI& line) {
        OFX::mapRows<T, N>(line, *sources[0], *destination, never, [&](const T* from, T* to, int count) {
            const auto pixels = static_cast<std::size_t>(count);
            if constexpr (N == 1) {
                pixelops::copyRow(from, to, pixels * sizeof(T)); // no colour, nothing to change
            } else if constexpr (max == 255) {
                colorcorrector::correctBytes(correction_, stages_, from, to, pixels);
            } else {
                colorcorrector::correctFloats(correction_, stages_, from, to, pixels);
            }
        });
    });
}

void colorcorrectorOpenCLProcessor::process() {
    const auto single = [](double x) { return static_cast<float>(x); };
    const auto& [low, mid, high, saturation, gamma, gain, offset] = values;
    const pixelops::ToneCurve curve(colorcorrector::exponentOf(gamma));
    const cl_float16 block = {{single(low[0]), single(low[1]), single(mid[0]), single(mid[1]), single(high[0]),
                               single(high[1]), single(offset / 255), 0, single(gain), single(saturation),
                               single(curve.exponent), single(curve.threshold), single(curve.offset),
                               single(curve.slope), single(curve.scale), 0}};
    const auto stages = static_cast<int>(colorcorrector::stagesOf(values));
    const auto flag = [stages](unsigned stage) { return (static_cast<unsigned>(stages) & stage) != 0 ? 1 : 0; };
    kernel()
        .arg(device(sources[0]))
        .arg(device(destination))
        .arg(block)
        .arg(flag(colorcorrector::kTone))
        .arg(flag(colorcorrector::kSaturation))
        .arg(flag(colorcorrector::kWheels))
        .arg(stages)
        .arg(width())
        .arg(height())
        .run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::colorcorrector, {"kf224af560"});

constinit const OFX::EffectTraits colorcorrectorPlugin::traits = {
    .label = "Orvix Color Corrector",
    .contexts = OFX::kFilter,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1255,
};

bool colorcorrectorPlugin::neutral(const Values& v) const { return colorcorrector::stagesOf(v) == 0; }

OFX_EFFECT(colorcorrector)
