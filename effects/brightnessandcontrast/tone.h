// The arithmetic of float pixels: straight colours plus offset, then (colour - center) factor + center.
#pragma once

#include <cstddef>

#include "pixelops/simd.h"

namespace brightnessandcontrast {

struct Tone {
    bool shifts = false, scales = false;
    float offset = 0, factor = 1, center = 0;
};

// Four floats per pixel, alpha last; both channel orders.
extern const simd::Function<void(const Tone& tone, const float* from, float* to, std::size_t pixels)> toneRow;

} // namespace brightnessandcontrast
