// The tone curve's constants and its value.
#include "pixelops/tone_curve.h"

#include <cmath>

namespace pixelops {

ToneCurve::ToneCurve(double g) : exponent(g) {
    if (g == 1) return;
    const double r = 1 / g;
    threshold = std::pow(r, -0.9418051973077521) * 0.03818376618407356;
    slope = std::pow(r, 1.8836103946155043);
    if (g < 1) {
        const double power = std::pow(threshold, g);
        offset = (slope * threshold - power) / (power - 1);
    } else {
        const double root = std::pow(slope * threshold, r);
        offset = (threshold - root) / (root - 1);
        scale = 1 / (offset + 1);
    }
}

double ToneCurve::operator()(double x) const {
    if (x < 0) return -(*this)(-x);
    if (!(x >= threshold)) return x * slope;
    return exponent > 1 ? std::pow((offset + x) * scale, exponent) : std::pow(x, exponent) * (offset + 1) - offset;
}

} // namespace pixelops
