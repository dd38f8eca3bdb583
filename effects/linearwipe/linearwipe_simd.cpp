// The rows of the linear wipe.
#include "effects/linearwipe/sweep.h"
#include "pixelops/wipe.h"

namespace linearwipe {
namespace SIMD_LEVEL {
namespace {

using lanes::Lanes, lanes::size;

class Mask {
public:
    explicit Mask(const Row& row) : row_(row) {}

    lanes::Mask at(Lanes x) const {
        const Lanes place = abs((x + row_.column) * row_.stepX + row_.start) * row_.perLength;
        return {place > row_.high, place < row_.low, lanes::smoothstep((place - row_.low) * row_.perWidth)};
    }

    lanes::Run run(float x) const {
        const float place = size((x + row_.column) * row_.stepX + row_.start) * row_.perLength;
        const float beyond = place > row_.high ? place - row_.high : row_.low - place;
        // A pixel less for the rounding of places.
        return {beyond / (size(row_.stepX) * row_.perLength + 1e-9f) - 1, place > row_.high};
    }

private:
    const Row row_;
};

template <class T>
void wipe(const Row& row, const T* from, const T* to, T* wiped, std::size_t pixels) {
    lanes::wipeRow(from, to, wiped, pixels, Mask(row),
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
