// CIE L*a*b* of sRGB colours under D65 (IEC 61966-2-1, CIE 15), in double precision.
#pragma once

#include <cmath>

#include "pixelops/hsl.h"

namespace pixelops {

struct Lab {
    double l, a, b; // l 0..100
};

// The slope of the straight part of the curve, which is defined with the digits of a float.
inline constexpr double kLabSlope = 7.787f;
inline constexpr double kLabOffset = 16.0 / 116.0;
inline constexpr double kLabKnee = 0.008856;

inline double linearOf(double c) { return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92; }

inline double gammaOf(double c) { return c > 0.0031308 ? 1.055 * std::pow(c, 1 / 2.4) - 0.055 : 12.92 * c; }

inline double labCurve(double t) { return t <= kLabKnee ? t * kLabSlope + kLabOffset : std::cbrt(t); }

inline double labCurveInverse(double t) {
    const double cube = t * t * t;
    return cube > kLabKnee ? cube : (t - kLabOffset) / kLabSlope;
}

inline Lab toLab(const Rgb& c) {
    const double r = linearOf(c.r), g = linearOf(c.g), b = linearOf(c.b);
    const double x = labCurve((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.95047);
    const double y = labCurve(0.2126 * r + 0.7152 * g + 0.0722 * b);
    const double z = labCurve((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.08883);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

// Limited to 0..1. The white point has the digits of floats on this way.
inline Rgb toRgb(const Lab& c) {
    const double fy = (c.l + 16) / 116;
    const double x = labCurveInverse(c.a / 500 + fy) * double{0.95047f};
    const double y = labCurveInverse(fy);
    const double z = labCurveInverse(fy - c.b / 200) * double{1.08883f};
    return {clampedUnit(gammaOf(3.2406 * x - 1.5372 * y - 0.4986 * z)),
            clampedUnit(gammaOf(-0.9689 * x + 1.8758 * y + 0.0415 * z)),
            clampedUnit(gammaOf(0.0557 * x - 0.204 * y + 1.057 * z))};
}

} // namespace pixelops
