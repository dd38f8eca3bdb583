// Flash: controls, amounts, and the stages of its diffusion.
#include "effects/flash/flash.h"

#include <algorithm>
#include <cmath>

#include "kernels.h"

namespace {

using Values = flashValues;

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    OFX::transitionProgress<&Values::progress>,
    {.name = "HorizontalDiffusion", .label = "Horizontal diffusion", .field = OFX::at<&Values::horizontal>,
     .hint = "How far the tinted glow spreads to the sides: at 1 by up to a quarter of the picture's longer side."},
    {.name = "VerticalDiffusion", .label = "Vertical diffusion", .field = OFX::at<&Values::vertical>,
     .hint = "How far the tinted glow spreads up and down."},
    {.name = "Tint", .field = OFX::at<&Values::tint>, .hasDefault = false,
     .hint = "Color of the glow of the picture's bright parts; black adds white alone."},
};
// clang-format on

} // namespace

flashProcessorBase::Strength flashProcessorBase::strength() const {
    const float p = values.progress, a = 2 * (second() ? 1 - p : p);
    return {a * a, 1 - (1 - a) * (1 - a)};
}

flashProcessorBase::Sigmas flashProcessorBase::sigmas() const {
    const double aspect = destination->pixelAspect();
    const OFX::AspectScale scale(aspect);
    const double size = std::trunc(std::max(OFX::width(window) * scale.x, OFX::height(window) * scale.y));
    const double radius = 0.25 * size * strength().gain;
    return {pixelops::sigmaAtRadius(values.horizontal * radius / aspect),
            pixelops::sigmaAtRadius(values.vertical * radius)};
}

// --- Processors ---

// The glow takes nothing of the blurred picture but its luma, so only that is blurred.
template <class T, int N, int max, int bgra>
void flashProcessor<T, N, max, bgra>::preProcess() {
    const Sigmas sigma = sigmas();
    const OFX::RectI area = this->area();
    if ((sigma.x <= 0 && sigma.y <= 0) || OFX::empty(area)) return;
    luma_.emplace(effect_, OFX::width(area), OFX::height(area), 1);
    OFX::stageRows(area, [&](const OFX::RectI& rows) {
        OFX::readRows<T, N>(rows, source(), abort(), [&](int x, int y, const T* pixels, std::size_t count) {
            simd::forType<T>(flash::lumaOfByteRow, flash::lumaOfFloatRow)(bgra, pixels, lumaAt(x, y), count);
        });
    });
    if (!aborted()) luma_->blur(sigma.x, sigma.y);
}

template <class T, int N, int max, int bgra>
void flashProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    const auto [white, gain] = strength();
    if (gain == 0) return OFX::copyRows<T, N>(band, source(), *destination, abort());
    const auto tint = [this](std::size_t i) { return static_cast<float>(values.tint[i]); };
    const flash::Light light = {gain, white, {tint(bgra ? 2 : 0), tint(1), tint(bgra ? 0 : 2)}, bgra != 0};
    const auto row = [&](int x, int y, const auto& from, T* to, std::size_t pixels) {
        const float* luma = luma_ ? lumaAt(x, y) : nullptr;
        simd::forType<T>(flash::lightByteRow, flash::lightFloatRow)(light, from[0], luma, to, pixels);
    };
    OFX::joinRows<T, N>(band, std::array{&source()}, *destination, abort(), row);
}

enum Kernel { kLight, kGaussian };

void flashOpenCLProcessor::process() {
    const auto [white, gain] = strength();
    const auto [sigmaX, sigmaY] = sigmas();
    const cl_mem picture = device(&source());
    const OFX::DeviceBlur blurred(blurTarget(kGaussian), picture, sigmaX, sigmaY);
    const auto tint = [this](std::size_t i) { return static_cast<float>(values.tint[i]); };
    kernel(kLight)
        .arg(picture)
        .arg(blurred.first())
        .arg(blurred.second())
        .arg(blurred.share())
        .arg(device(destination))
        .arg(width())
        .arg(height())
        .arg(white)
        .arg(cl_float4{{tint(0), tint(1), tint(2), gain}})
        .run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::flash, {"k0f4ab6d310", OFX_GAUSSIAN_KERNELS}, kernels::gaussian);

constinit const OFX::EffectTraits flashPlugin::traits = {
    .label = "Orvix Flash",
    .contexts = OFX::kTransition,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1291,
};

OFX_EFFECT(flash)
