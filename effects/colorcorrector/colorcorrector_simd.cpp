// The corrector's rows: one routine per combination of stages.
#include "effects/colorcorrector/correction.h"
#include "pixelops/lanes_math.h"

namespace colorcorrector {
namespace SIMD_LEVEL {
namespace {

using lanes::Lanes;

template <class T>
constexpr float kWhite = 1;
template <>
constexpr float kWhite<std::uint8_t> = 255;

template <class T, unsigned kStages>
void correct(const Correction& correction, const T* from, T* to, std::size_t pixels) {
    constexpr float kSteps = 255 * static_cast<float>(Correction::kStepsPerCode) / kWhite<T>; // of the table, per unit
    const float* const table = &correction.entries[0].pushV;
    const Lanes saturation = correction.entries[0].saturation;
    lanes::mapPixels(from, to, pixels, [=](const pixelops::Pixel<Lanes>& p) {
        const Lanes blue = p.r, green = p.g, red = p.b; // by their places in memory, whatever the order
        Lanes luma = green * 0.587f + red * 0.299f + blue * 0.114f;
        Lanes u = (blue - luma) * 0.492f, v = (red - luma) * 0.877f;
        if constexpr ((kStages & (kTone | kWheels)) != 0) {
            Lanes step = luma * kSteps;
            if constexpr (kWhite<T> == 1) step = min(max(step, 0.0f), Correction::kLevels - 1.0f);
            const auto [pushV, pushU, newLuma, same] = lanes::lookUp(table, lanes::nearest(step));
            luma = newLuma;
            if constexpr ((kStages & kWheels) != 0) u = u + pushU, v = v + pushV;
        }
        if constexpr ((kStages & kSaturation) != 0) u = u * saturation, v = v * saturation;
        const auto limited = [&p](Lanes c) { return min(max(c, 0.0f), p.a); };
        return pixelops::Pixel<Lanes>{limited(luma + u * 2.0325203f), limited(luma - u * 0.39473134f - v * 0.5808092f),
                                      limited(luma + v * 1.1402509f), p.a};
    });
}

template <class T>
using Routine = void(const Correction&, const T*, T*, std::size_t);

// By stages; without any there is nothing to do.
template <class T>
constexpr Routine<T>* kRoutines[8] = {nullptr,       correct<T, 1>, correct<T, 2>, correct<T, 3>,
                                      correct<T, 4>, correct<T, 5>, correct<T, 6>, correct<T, 7>};

} // namespace

void correctBytes(const Correction& correction, unsigned stages, const std::uint8_t* from, std::uint8_t* to,
                  std::size_t pixels) {
    kRoutines<std::uint8_t>[stages](correction, from, to, pixels);
}

void correctFloats(const Correction& correction, unsigned stages, const float* from, float* to, std::size_t pixels) {
    kRoutines<float>[stages](correction, from, to, pixels);
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(correctBytes);
SIMD_FUNCTION(correctFloats);

} // namespace colorcorrector
