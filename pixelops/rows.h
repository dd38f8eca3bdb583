// Loops over the pixels of one row, as fast as the processor allows. Pointers need no alignment; source and destination
// may be the same row or must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

namespace pixelops {

// Rows of at least this many bytes are written past the caches: pictures of such rows do not stay there anyway. Copying
// alone, that saves 10 to 20 % from 2.4 MB per picture on. When the result is read at once it costs 45 % at 3.7 MB
// (1280 x 720 bytes), is about even at 8 MB (1920 x 1080 bytes) and saves 6 to 17 % from 16 MB on.
inline constexpr std::size_t kStreamedRow = 6144;

// Orders what the loops wrote past the caches before whatever the thread writes next. Needed once before others are
// told that rows are ready; the framework does so after every band.
void finishRows();

// One result for every code value.
struct ByteTable {
    std::uint8_t results[256];
};

// Copies bytes.
extern const simd::Function<void(const void* from, void* to, std::size_t bytes)> copyRow;

// Four bytes per pixel, alpha last: each colour becomes min(result of the colour, alpha), alpha stays.
extern const simd::Function<void(const ByteTable& table, const std::uint8_t* from, std::uint8_t* to,
                                 std::size_t pixels)>
    applyTable;

// The same for chosen bytes of each pixel, 0xFF in `chosen`, whose lowest byte stands for the first in memory. Other
// bytes stay; a chosen alpha becomes its result. A pixel with alpha 0 becomes four zeros.
extern const simd::Function<void(std::uint32_t chosen, const ByteTable& table, const std::uint8_t* from,
                                 std::uint8_t* to, std::size_t pixels)>
    applyTableTo;

} // namespace pixelops
