// The rows of the linear wipe.
#include "effects/linearwipe/sweep.h"
#include "pixelops/wipe.h"

namespace linearwipe {
namespace SIMD_LEVEL {
namespace {

using lanes::Lanes;

template <class T>
void wipe(const Row& row, const T* from, const T* to, T* wiped, std::size_t pixels) {
    const auto maskAt = [&row](Lanes x) -> lanes::Mask {
        const Lanes place = abs((x + row.column) * row.stepX + row.start) * row.perLength;
        return {place > row.high, place < row.low, lanes::smoothstep((place - row.low) * row.perWidth)};
    };
    lanes::wipeRow(from, to, wiped, pixels, maskAt,
                   [](Lanes f, Lanes t, Lanes weight) { return t + (f - t) * weight; });
}

} // namespace

void wipeByteRow(const Row& row, const std::uint8_t* from, const std::uint8_t* to, std::uint8_t* wiped,
                 std::size_t pixels) {
    wipe(row, from, to, wiped, pixels);
}

void wipeFloatRow(const Row& row, const float* from, const float* to, float* wiped, std::size_t pixels) {
    wipe(row, from, to, wiped, pixels);
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(wipeByteRow);
SIMD_FUNCTION(wipeFloatRow);

} // namespace linearwipe
