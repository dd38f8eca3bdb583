// Hue, saturation and lightness of colours, in double precision.
#pragma once

#include <algorithm>
#include <optional>

#include "pixelops/codes.h"

namespace pixelops {

struct Rgb {
    double r, g, b; // 0..1
};

struct Hsl {
    double h, s, l; // 0..1; h = 1 is one full turn
};

inline Hsl toHsl(const Rgb& c) {
    const double most = std::max({c.r, c.g, c.b}), least = std::min({c.r, c.g, c.b});
    const double l = (most + least) / 2, d = most - least;
    if (l <= 0 || d <= 0) return {0, 0, l};
    const double s = l <= 0.5 ? d / (most + least) : d / (2 - most - least);
    double sixths;
    if (c.r == most) {
        sixths = c.g == least ? 5 + (most - c.b) / d : 1 - (most - c.g) / d;
    } else if (c.g == most) {
        sixths = c.b == least ? 1 + (most - c.r) / d : 3 - (most - c.b) / d;
    } else {
        sixths = c.r == least ? 3 + (most - c.g) / d : 5 - (most - c.r) / d;
    }
    return {sixths / 6, s, l};
}

// Nothing for hues of 7/6 and more, or -1/6 and less, unless there is no light. Results are not limited to 0..1.
inline std::optional<Rgb> toRgb(const Hsl& c) {
    const double v = c.l <= 0.5 ? c.l * (1 + c.s) : c.l + c.s - c.l * c.s;
    if (v <= 0) return Rgb{0, 0, 0};
    const double m = 2 * c.l - v, sv = (v - m) / v;
    const std::int32_t sextant = truncated(c.h * 6);
    const double vsf = v * sv * (c.h * 6 - sextant), rising = m + vsf, falling = v - vsf;
    switch (sextant) {
        case 0:
        case 6:
            return Rgb{v, rising, m};
        case 1:
            return Rgb{falling, v, m};
        case 2:
            return Rgb{m, v, rising};
        case 3:
            return Rgb{m, falling, v};
        case 4:
            return Rgb{rising, m, v};
        case 5:
            return Rgb{v, m, falling};
        default:
            return std::nullopt;
    }
}

} // namespace pixelops
