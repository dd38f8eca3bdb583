// Linear wipe: controls and geometry.
#include "effects/linearwipe/linearwipe.h"

#include <cmath>
#include <limits>

#include "kernels.h"

namespace {

using Values = linearwipeValues;

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    OFX::transitionProgress<&Values::progress>,
    {.name = "Angle", .field = OFX::at<&Values::angle>, .range = {0, 360}, .doubleType = OFX::DoubleType::Angle,
     .hint = "Where the edge starts, in degrees: 0 on the left, 90 at the top, 180 on the right, 270 at the bottom."},
    {.name = "Feather", .field = OFX::at<&Values::feather>, .initial = {0.1},
     .hint = "Softness of the edge: at 1 it is half as wide as its whole way."},
};
// clang-format on

} // namespace

linearwipe::Sweep linearwipeProcessorBase::sweep() const {
    const OFX::AspectScale aspect(destination->pixelAspect());
    const auto kx = static_cast<float>(aspect.x), ky = static_cast<float>(aspect.y);
    const auto w = static_cast<float>(OFX::width(window) - 1), h = static_cast<float>(OFX::height(window) - 1);
    const auto a = static_cast<float>(values.angle);
    const auto slope = [kx](float degrees) { return std::tan(degrees * 0.017453292f) * kx; };
    // A sweep of no length leaves every pixel at its start.
    const auto along = [](float stepX, float stepY, float offset, float length) {
        return linearwipe::Sweep{stepX, stepY, offset, length == 0 ? 0 : 1 / length};
    };

    // The bands of a thousandth of a degree around the axes keep the tangent finite.
    if (a <= 0.001f || a > 359.999f) return along(kx, 0, 0, w * kx);
    if (a > 89.999f && a <= 90.001f) return along(0, -ky, 0, h * ky);
    if (a > 179.999f && a <= 180.001f) return along(-kx, 0, w * kx, w * kx);
    if (a > 269.999f && a <= 270.001f) return along(0, ky, -h * ky, h * ky);
    const float s = slope((a < 180 ? 90.0f : 270.0f) - a); // positive in the first and third quarter
    if (a < 90) return along(s, ky, 0, w * s + h * ky);
    if (a < 180) return along(s, ky, -w * s, h * ky - w * s);
    if (a < 270) return along(s, ky, -h * ky - w * s, h * ky + w * s);
    return along(s, ky, -h * ky, h * ky - w * s);
}

linearwipe::Edge linearwipeProcessorBase::edge() const {
    const auto feather = static_cast<float>(values.feather);
    const float half = feather * 0.25f, p = values.progress;
    // At the ends well outside, so that no rounding leaves a pixel behind.
    const float at = p <= 0 ? -1 : p >= 1 ? 2 : (1 + 2 * half) * p - half;
    return {at, half, 2 / feather};
}

// --- Processors ---

template <class T, int N, int max, int bgra>
void linearwipeProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    const linearwipe::Sweep s = sweep();
    const linearwipe::Edge e = edge();
    // A hard edge has nothing to mix: a pixel right on it shows "SourceTo".
    const bool hard = values.feather == 0;
    const float low = hard ? std::nextafter(e.at, std::numeric_limits<float>::infinity()) : e.at - e.half;

    mixRows<T, N>(band, [&](int x, int y, const T* from, const T* to, T* wiped, std::size_t pixels) {
        const auto column = static_cast<float>(x - window.x1), row = static_cast<float>(window.y2 - 1 - y);
        const linearwipe::Row line{column, s.stepX,       row * s.stepY + s.offset, s.perLength,
                                   low,    e.at + e.half, hard ? 0 : e.perWidth};
        simd::forType<T>(linearwipe::wipeByteRow, linearwipe::wipeFloatRow)(line, from, to, wiped, pixels);
    });
}

void linearwipeOpenCLProcessor::process() {
    const auto [stepX, stepY, offset, perLength] = sweep();
    const auto [at, half, perWidth] = edge();
    const auto aspect = static_cast<float>(destination->pixelAspect());
    pictureKernel()
        .arg(cl_float8{{at, aspect, stepX, stepY, offset, perLength, half, perWidth}})
        .run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::linearwipe, {"k7c41be0950"});

constinit const OFX::EffectTraits linearwipePlugin::traits = {
    .label = "Orvix Linear Wipe",
    .contexts = OFX::kTransition,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1293,
};

OFX_EFFECT(linearwipe)
