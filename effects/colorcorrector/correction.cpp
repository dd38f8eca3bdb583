// The corrector's stages and its table.
#include "effects/colorcorrector/correction.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pixelops/tone_curve.h"

namespace colorcorrector {
namespace {

// A wheel's weight over luma: exp(-narrowness (luma - center)^2), in 8-bit codes.
struct Weight {
    double center, narrowness;
};

constexpr Weight kLow{0, 9.518927955800229e-5}, kMid{127.5, 0.00026399289035467123}, kHigh{255, 9.518927955800229e-5};

constexpr double kPushPerMagnitude = 127.5, kLongestPush = 162;

struct Push {
    double u = 0, v = 0;

    void add(const std::array<double, 2>& wheel, const Weight& weight, double luma) {
        const auto [angle, magnitude] = wheel;
        const double distance = luma - weight.center, radians = angle * std::numbers::pi / 180;
        const double w = std::exp(-weight.narrowness * distance * distance) * magnitude * magnitude;
        u += kPushPerMagnitude * w * std::cos(radians);
        v += kPushPerMagnitude * w * std::sin(radians);
    }
    void limit() {
        const double square = u * u + v * v;
        if (square < kLongestPush * kLongestPush) return;
        const double factor = kLongestPush / std::sqrt(square);
        u *= factor, v *= factor;
    }
};

} // namespace

unsigned stagesOf(const colorcorrectorValues& v) {
    unsigned stages = 0;
    if (v.offset != 0 || v.gamma != 1 || v.gain != 1) stages |= kTone;
    if (v.saturation != 1) stages |= kSaturation;
    if (v.low[1] != 0 || v.mid[1] != 0 || v.high[1] != 0) stages |= kWheels;
    return stages;
}

double exponentOf(double gamma) {
    const double t = 2 - gamma;
    return t > 1 ? 2 * (t - 1) + 1 : 1 - 0.8 * (1 - t);
}

void fill(Correction& correction, const colorcorrectorValues& values, unsigned stages, double white) {
    const auto saturation = static_cast<float>(values.saturation);
    correction.entries[0] = {0, 0, 0, saturation};
    if ((stages & (kTone | kWheels)) == 0) return;
    const pixelops::ToneCurve curve(exponentOf(values.gamma));
    const auto inPixels = [white](double code) { return static_cast<float>(code * (white / 255)); };
    for (std::size_t k = 0; k < Correction::kLevels; ++k) {
        double luma = static_cast<double>(k) / Correction::kStepsPerCode;
        if (stages & kTone) luma = std::clamp(curve(luma / 255) * 255 * values.gain + values.offset, 0.0, 255.0);
        Push push;
        if (stages & kWheels) {
            push.add(values.low, kLow, luma);
            push.add(values.mid, kMid, luma);
            push.add(values.high, kHigh, luma);
            push.limit();
        }
        correction.entries[k] = {inPixels(push.v), inPixels(push.u), inPixels(luma), saturation};
    }
}

} // namespace colorcorrector
