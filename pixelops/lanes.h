// For *_simd.cpp files only: vectors of floats that arithmetic written for one float takes as well, and the loops that
// feed them. Results are those of single floats: every operation is rounded by itself, divisions are real ones, and the
// pixels that do not fill a vector take the same road through a padded copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#define HWY_COMPILE_ONLY_STATIC
#define HWY_DISABLE_PCLMUL_AES // no part of the levels
#include <hwy/highway.h>

#include "pixelops/pixel.h"
#include "pixelops/rows.h"

namespace pixelops::SIMD_LEVEL {

namespace hn = hwy::HWY_NAMESPACE;

struct Lanes {
    using Tag = hn::ScalableTag<float>;
    static constexpr std::size_t kCount = HWY_LANES(float);
    struct Truth {
        hn::Mask<Tag> mask;
    };

    Lanes(hn::Vec<Tag> vector) : v(vector) {}
    Lanes(float value) : v(hn::Set(Tag(), value)) {}

    friend Lanes operator+(Lanes a, Lanes b) { return hn::Add(a.v, b.v); }
    friend Lanes operator-(Lanes a, Lanes b) { return hn::Sub(a.v, b.v); }
    friend Lanes operator*(Lanes a, Lanes b) { return hn::Mul(a.v, b.v); }
    friend Lanes operator/(Lanes a, Lanes b) { return hn::Div(a.v, b.v); }
    friend Truth operator<(Lanes a, Lanes b) { return {hn::Lt(a.v, b.v)}; }
    friend Truth operator<=(Lanes a, Lanes b) { return {hn::Le(a.v, b.v)}; }
    friend Lanes select(Truth t, Lanes yes, Lanes no) { return hn::IfThenElse(t.mask, yes.v, no.v); }
    friend bool any(Truth t) { return !hn::AllFalse(Tag(), t.mask); }

    hn::Vec<Tag> v;
};

// Whether vectors go past the caches.
using Cached = std::false_type;
using Streamed = std::true_type;

template <bool streamed, class V, class D, class T>
void put(V v, D d, T* to) {
    if constexpr (streamed) {
        hn::Stream(v, d, to);
    } else {
        hn::StoreU(v, d, to);
    }
}

// Calls step(from, to, Cached) for consecutive blocks of a row; what does not fill a block is padded with zeros.
template <std::size_t kBlock, class T, class Step>
[[gnu::noinline, gnu::flatten]] void forCachedBlocks(const T* from, T* to, std::size_t count, const Step& step) {
    while (count != 0) {
        const bool full = count >= kBlock;
        const std::size_t n = full ? kBlock : count;
        alignas(64) T block[kBlock];
        if (!full) {
            std::memcpy(block, from, n * sizeof(T));
            std::memset(block + n, 0, (kBlock - n) * sizeof(T));
        }
        step(full ? from : block, full ? to : block, Cached());
        if (!full) std::memcpy(to, block, n * sizeof(T));
        from += n, to += n, count -= n;
    }
}

// Calls step(from, to, Cached or Streamed) for the blocks of a row. Streamed ones start on a cache line, so that no
// line is written in part. Pixels of kPixel components are never torn apart.
template <std::size_t kBlock, std::size_t kPixel, class T, class Step>
[[gnu::flatten]] void forBlocks(const T* from, T* to, std::size_t count, const Step& step) {
    constexpr std::size_t kLine = 64;
    static_assert(kBlock * sizeof(T) % kLine == 0 && kBlock % kPixel == 0);
    const std::size_t gap = -reinterpret_cast<std::uintptr_t>(to) % kLine;
    if (count * sizeof(T) >= kStreamedRow && from != to && gap % (kPixel * sizeof(T)) == 0) {
        const std::size_t head = gap / sizeof(T);
        forCachedBlocks<kBlock>(from, to, head, step);
        from += head, to += head, count -= head;
        for (; count >= kBlock; from += kBlock, to += kBlock, count -= kBlock) step(from, to, Streamed());
    }
    forCachedBlocks<kBlock>(from, to, count, step);
}

// Turns four vectors of pixels into four of components, and back: a 4 x 4 transposition in every 16 bytes.
inline void transpose(Lanes& a, Lanes& b, Lanes& c, Lanes& d) {
    const Lanes::Tag f;
    const hn::RepartitionToWide<Lanes::Tag> pair;
    const auto ab = hn::BitCast(pair, hn::InterleaveLower(f, a.v, b.v));
    const auto AB = hn::BitCast(pair, hn::InterleaveUpper(f, a.v, b.v));
    const auto cd = hn::BitCast(pair, hn::InterleaveLower(f, c.v, d.v));
    const auto CD = hn::BitCast(pair, hn::InterleaveUpper(f, c.v, d.v));
    a = hn::BitCast(f, hn::InterleaveLower(pair, ab, cd));
    b = hn::BitCast(f, hn::InterleaveUpper(pair, ab, cd));
    c = hn::BitCast(f, hn::InterleaveLower(pair, AB, CD));
    d = hn::BitCast(f, hn::InterleaveUpper(pair, AB, CD));
}

// Each pixel of a row, four floats with alpha last, becomes map(Pixel<Lanes>). Which pixels share a vector is not told.
template <class Map>
void mapPixels(const float* from, float* to, std::size_t pixels, Map map) {
    constexpr std::size_t n = Lanes::kCount;
    forBlocks<4 * n, 4>(from, to, 4 * pixels, [map](const float* s, float* t, auto streamed) {
        const Lanes::Tag d;
        Pixel<Lanes> p{hn::LoadU(d, s), hn::LoadU(d, s + n), hn::LoadU(d, s + 2 * n), hn::LoadU(d, s + 3 * n)};
        transpose(p.r, p.g, p.b, p.a);
        p = map(p);
        transpose(p.r, p.g, p.b, p.a);
        put<streamed>(p.r.v, d, t);
        put<streamed>(p.g.v, d, t + n);
        put<streamed>(p.b.v, d, t + 2 * n);
        put<streamed>(p.a.v, d, t + 3 * n);
    });
}

} // namespace pixelops::SIMD_LEVEL

namespace lanes = pixelops::SIMD_LEVEL;
