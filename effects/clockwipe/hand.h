// The geometry of a clock wipe: a hand that turns about the centre of the window.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

namespace clockwipe {

// A direction from the centre, an angle (radians) from 12 o'clock in the turn's direction.
struct Ray {
    float angle, sine, cosine;
};

struct Hand {
    Ray hand, wake;    // the edge of the turn, and where the feather ends far from the centre
    float feather;     // radians
    float nearSquared; // nearer to the centre than the root of this, the feather is wider
};

// One row, or a part of it: pixel i lies (column + i) stepX to the right of the centre, seen in the turn's direction,
// and v above it, in square pixels.
struct Row {
    float column, stepX, v;
};

// Rows of pixels of four components. Bytes mix in 256ths, truncated.
extern const simd::Function<void(const Hand&, const Row&, const std::uint8_t* from, const std::uint8_t* to,
                                 std::uint8_t* wiped, std::size_t pixels)>
    wipeByteRow;
extern const simd::Function<void(const Hand&, const Row&, const float* from, const float* to, float* wiped,
                                 std::size_t pixels)>
    wipeFloatRow;

} // namespace clockwipe
