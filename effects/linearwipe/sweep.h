// The geometry of a linear wipe: an edge that sweeps across the window.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

namespace linearwipe {

// A pixel's place along the sweep is |x stepX + y stepY + offset| perLength: 0 where the edge starts, 1 at the far end.
// x counts from the left column, y from the top row.
struct Sweep {
    float stepX, stepY, offset, perLength;
};

// The place of the edge's middle at a progress, and half the width of the feather around it.
struct Edge {
    float at, half, perWidth;
};

// One row, or a part of it: the place of pixel i is |(column + i) stepX + start| perLength. Below `low` it shows
// "SourceTo", above `high` "SourceFrom".
struct Row {
    float column, stepX, start, perLength;
    float low, high, perWidth;
};

// Rows of pixels of four components; mixed bytes are rounded to the nearest.
extern const simd::Function<void(const Row&, const std::uint8_t* from, const std::uint8_t* to, std::uint8_t* wiped,
                                 std::size_t pixels)>
    wipeByteRow;
extern const simd::Function<void(const Row&, const float* from, const float* to, float* wiped, std::size_t pixels)>
    wipeFloatRow;

} // namespace linearwipe
