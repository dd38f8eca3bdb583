// A power curve whose start is a straight line, so that its slope stays finite at black.
#pragma once

namespace pixelops {

// The curve for an exponent g > 0: odd, with 0 at 0 and 1 at 1. With r = 1 / g the line has the slope
// r^1.8836103946155043 and ends at the threshold 0.03818376618407356 r^-0.9418051973077521, where the power follows:
// x^g (A + 1) - A for g < 1, ((A + x) C)^g for g > 1. An exponent of 1 gives the identity.
struct ToneCurve {
    ToneCurve() = default;
    explicit ToneCurve(double g);

    double operator()(double x) const;

    double exponent = 1;
    double threshold = 100; // no power within reach
    double slope = 1;       // of the line
    double offset = 0;      // A
    double scale = 1;       // C
};

} // namespace pixelops
