// The blended rows of the checkerboard.
#include "effects/checkerboard/blend.h"
#include "pixelops/lanes.h"

namespace checkerboard {
namespace SIMD_LEVEL {
namespace {

namespace hn = lanes::hn;
constexpr std::size_t kCount = lanes::Lanes::kCount;

// Calls step(weightsOfA, weightsOfB, to) for every kCount pixels; the last ones go through memory of that size.
template <class Weight, class T, class Step>
void forColumns(const Weight* weightsOfA, const Weight* weightsOfB, T* to, std::size_t pixels, Step step) {
    for (; pixels >= kCount; weightsOfA += kCount, weightsOfB += kCount, to += 4 * kCount, pixels -= kCount) {
        step(weightsOfA, weightsOfB, to);
    }
    Weight restOfA[kCount] = {}, restOfB[kCount] = {};
    T rest[4 * kCount];
    std::memcpy(restOfA, weightsOfA, pixels * sizeof(Weight));
    std::memcpy(restOfB, weightsOfB, pixels * sizeof(Weight));
    step(restOfA, restOfB, rest);
    std::memcpy(to, rest, 4 * pixels * sizeof(T));
}

} // namespace

void blendByteRow(const std::uint8_t* a, const std::uint8_t* b, const std::uint32_t* weightsOfA,
                  const std::uint32_t* weightsOfB, std::uint8_t* to, std::size_t pixels) {
    // One lane is one pixel, and the sum's third byte is the result. Since the weights add up to 65536, the sum is
    // a 65536 + (b - a) weightOfB; below zero or not, it comes out right modulo 2^32.
    const hn::ScalableTag<std::uint32_t> d;
    using Sums = hn::Vec<decltype(d)>;
    const auto start = [&](std::size_t i) { return hn::Set(d, std::uint32_t{a[i]} << 16); };
    const auto way = [&](std::size_t i) { return hn::Set(d, std::uint32_t{b[i]} - a[i]); };
    const Sums starts[4] = {start(0), start(1), start(2), start(3)}, ways[4] = {way(0), way(1), way(2), way(3)};
    const Sums byte = hn::Set(d, 0xFF0000);
    const auto step = [=](const std::uint32_t*, const std::uint32_t* wb, std::uint8_t* t) {
        const auto blend = [&](std::size_t i) { return hn::Add(starts[i], hn::Mul(ways[i], hn::LoadU(d, wb))); };
        const auto first = hn::ShiftRight<16>(blend(0));
        const auto second = hn::ShiftRight<8>(hn::And(blend(1), byte));
        const auto third = hn::And(blend(2), byte);
        const auto fourth = hn::ShiftLeft<8>(hn::And(blend(3), byte));
        const hn::Repartition<std::uint8_t, decltype(d)> bytes;
        hn::StoreU(hn::BitCast(bytes, hn::Or(hn::Or(first, second), hn::Or(third, fourth))), bytes, t);
    };
    forColumns(weightsOfA, weightsOfB, to, pixels, step);
}

void blendFloatRow(const float* a, const float* b, const float* weightsOfA, const float* weightsOfB, float* to,
                   std::size_t pixels) {
    const lanes::Lanes::Tag d;
    forColumns(weightsOfA, weightsOfB, to, pixels, [&](const float* wa, const float* wb, float* t) {
        const lanes::Lanes weightOfA = hn::LoadU(d, wa), weightOfB = hn::LoadU(d, wb);
        const auto blend = [&](std::size_t i) { return (a[i] * weightOfA + b[i] * weightOfB).v; };
        hn::StoreInterleaved4(blend(0), blend(1), blend(2), blend(3), d, t);
    });
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(blendByteRow);
SIMD_FUNCTION(blendFloatRow);

} // namespace checkerboard
