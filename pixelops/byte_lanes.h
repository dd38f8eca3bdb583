// For *_simd.cpp files only: vectors of byte pixels in integer arithmetic. Every component is a lane of its own, alpha
// is every fourth; what is said of one component holds for all lanes.
#pragma once

#include "pixelops/lanes.h"

namespace pixelops::SIMD_LEVEL {

using Bytes = hn::ScalableTag<std::uint8_t>;
using Codes = hn::Vec<Bytes>;
inline constexpr std::size_t kCodes = HWY_LANES(std::uint8_t);

inline Codes codes(const std::uint8_t (&pixel)[4]) {
    std::uint32_t word;
    std::memcpy(&word, pixel, sizeof word);
    return hn::BitCast(Bytes(), hn::Set(hn::Repartition<std::uint32_t, Bytes>(), word));
}

// Twice as wide, to calculate with: the components of even and of odd lanes.
struct WideCodes {
    using Tag = hn::Repartition<std::uint16_t, Bytes>;
    using Lane = hn::Vec<Tag>;
    Lane even, odd;

    friend WideCodes operator+(WideCodes a, WideCodes b) { return {hn::Add(a.even, b.even), hn::Add(a.odd, b.odd)}; }
    friend WideCodes operator*(WideCodes a, WideCodes b) { return {hn::Mul(a.even, b.even), hn::Mul(a.odd, b.odd)}; }
    friend WideCodes difference(WideCodes a, WideCodes b) {
        const auto size = [](Lane x, Lane y) { return hn::Sub(hn::Max(x, y), hn::Min(x, y)); };
        return {size(a.even, b.even), size(a.odd, b.odd)};
    }
};

inline WideCodes widen(Codes c) {
    const auto pairs = hn::BitCast(WideCodes::Tag(), c);
    return {hn::And(pairs, hn::Set(WideCodes::Tag(), 0xFF)), hn::ShiftRight<8>(pairs)};
}

// Values must be below 256.
inline Codes narrow(WideCodes w) { return hn::BitCast(Bytes(), hn::Or(w.even, hn::ShiftLeft<8>(w.odd))); }

inline Codes narrowSaturated(WideCodes w) {
    const auto most = hn::Set(WideCodes::Tag(), 255);
    return narrow({hn::Min(w.even, most), hn::Min(w.odd, most)});
}

inline Codes difference(Codes a, Codes b) { return hn::Sub(hn::Max(a, b), hn::Min(a, b)); }

// Each pixel's alpha in all of its lanes.
inline Codes alphas(Codes c) {
    alignas(16) static constexpr std::uint8_t kAlphaOf[16] = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};
    return hn::TableLookupBytes(c, hn::LoadDup128(Bytes(), kAlphaOf));
}

// The colours of one pixel and the alpha of another.
inline Codes withAlpha(Codes colours, Codes alpha) {
    const auto lanes = codes({0, 0, 0, 255});
    return hn::Or(hn::AndNot(lanes, colours), hn::And(lanes, alpha));
}

// Colours above their alpha become the alpha.
inline Codes limited(Codes c) { return hn::Min(c, alphas(c)); }

// Each block of a row of pixels becomes map(from...), of Codes.
template <class Map, class... From>
void forCodes(std::uint8_t* to, std::size_t pixels, const Map& map, const From*... from) {
    constexpr std::size_t kBlock = 64;
    const auto step = [&map](auto streamed, std::size_t, std::uint8_t* t, const auto*... s) {
        for (std::size_t i = 0; i < kBlock; i += kCodes)
            put<streamed>(map(hn::LoadU(Bytes(), s + i)...), Bytes(), t + i);
    };
    forBlocks<kBlock, 4>(to, 4 * pixels, step, from...);
}

} // namespace pixelops::SIMD_LEVEL
