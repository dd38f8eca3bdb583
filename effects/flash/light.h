// The light of a flash, worked out once per render.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

namespace flash {

// Component c becomes gain luma tint[c] + white + c, alpha gain luma + white + alpha; luma is that of the picture or of
// its blur, in BT.601 weights.
struct Light {
    float gain, white;
    float tint[3]; // in the order of memory
    bool bgra;
};

// A row of pixels of four components. `luma` has one number per pixel, and may be read up to a vector beyond the last;
// null takes the pixels' own. Bytes are rounded to the nearest, with 255 for 1.
extern const simd::Function<void(const Light&, const std::uint8_t* from, const float* luma, std::uint8_t* lit,
                                 std::size_t pixels)>
    lightByteRow;
extern const simd::Function<void(const Light&, const float* from, const float* luma, float* lit, std::size_t pixels)>
    lightFloatRow;

// The luma of a row of pixels, in the pixels' own scale.
extern const simd::Function<void(bool bgra, const std::uint8_t* from, float* luma, std::size_t pixels)> lumaOfByteRow;
extern const simd::Function<void(bool bgra, const float* from, float* luma, std::size_t pixels)> lumaOfFloatRow;

} // namespace flash
