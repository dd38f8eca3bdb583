// Clock wipe: controls and geometry.
#include "effects/clockwipe/clockwipe.h"

#include <cmath>

#include "kernels.h"

namespace {

using Values = clockwipeValues;

constexpr const char* kDirections[] = {"Clockwise", "Counterclockwise"};

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    OFX::transitionProgress<&Values::progress>,
    {.name = "Direction", .field = OFX::at<&Values::direction>, .options = kDirections,
     .hint = "Which way the hand turns from 12 o'clock."},
    {.name = "FeatherAngle", .label = "Feather angle", .field = OFX::at<&Values::featherAngle>, .initial = {30},
     .range = {0, 360}, .doubleType = OFX::DoubleType::Angle, .hint = "The angle over which the hand's trail fades, in degrees."},
};
// clang-format on

constexpr float kDegree = 0.017453292f, kTurn = 6.2831855f, kQuarter = 1.5707964f;

clockwipe::Ray ray(float angle) { return {angle, std::sin(angle), std::cos(angle)}; }

} // namespace

clockwipe::Hand clockwipeProcessorBase::hand() const {
    const float feather = static_cast<float>(values.featherAngle) * kDegree;
    const float swept = (feather + kTurn) * values.progress; // the last pixel and a whole feather at the end
    // Half a quarter is the widest that a pixel's distance from the centre can ask for.
    const float sine = feather < kQuarter / 2 ? std::sin(feather) : 1;
    return {ray(swept), ray(swept - feather), feather, 2.01f / (sine * sine)};
}

// --- Processors ---

template <class T, int N, int max, int bgra>
void clockwipeProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    if (copyAtEnds<T, N>(band)) return;
    const OFX::AspectScale aspect(destination->pixelAspect());
    const auto kx = static_cast<float>(aspect.x), ky = static_cast<float>(aspect.y);
    const clockwipe::Hand turn = hand();
    const int centerX = OFX::width(window) / 2;
    const auto centerY = static_cast<float>(OFX::height(window) / 2);

    mixRows<T, N>(band, [&](int x, int y, const T* from, const T* to, T* wiped, std::size_t pixels) {
        const auto column = static_cast<float>(x - window.x1 - centerX), row = static_cast<float>(window.y2 - 1 - y);
        const clockwipe::Row line{column, values.direction == 0 ? kx : -kx, (centerY + 0.5f - row) * ky};
        simd::forType<T>(clockwipe::wipeByteRow, clockwipe::wipeFloatRow)(turn, line, from, to, wiped, pixels);
    });
}

void clockwipeOpenCLProcessor::process() {
    const OFX::AspectScale aspect(destination->pixelAspect());
    pictureKernel()
        .arg(values.direction)
        .arg(values.progress)
        .arg(cl_float2{{static_cast<float>(aspect.x), static_cast<float>(aspect.y)}})
        .arg(static_cast<float>(values.featherAngle))
        .run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::clockwipe, {"k2f90d1a860"});

constinit const OFX::EffectTraits clockwipePlugin::traits = {
    .label = "Orvix Clock Wipe",
    .contexts = OFX::kTransition,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1288,
};

OFX_EFFECT(clockwipe)
