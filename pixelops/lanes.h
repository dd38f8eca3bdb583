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
    friend Truth operator>(Lanes a, Lanes b) { return b < a; }
    friend Truth operator>=(Lanes a, Lanes b) { return b <= a; }
    friend Truth operator&&(Truth a, Truth b) { return {hn::And(a.mask, b.mask)}; }
    friend Truth operator||(Truth a, Truth b) { return {hn::Or(a.mask, b.mask)}; }
    friend Lanes select(Truth t, Lanes yes, Lanes no) { return hn::IfThenElse(t.mask, yes.v, no.v); }
    friend bool any(Truth t) { return !hn::AllFalse(Tag(), t.mask); }
    friend bool all(Truth t) { return hn::AllTrue(Tag(), t.mask); }
    friend Lanes abs(Lanes a) { return hn::Abs(a.v); }
    friend Lanes sqrt(Lanes a) { return hn::Sqrt(a.v); }
    friend Lanes trunc(Lanes a) { return hn::Trunc(a.v); }
    // The second number where one of them is none.
#if HWY_ARCH_X86
    friend Lanes min(Lanes a, Lanes b) { return hn::Min(a.v, b.v); }
    friend Lanes max(Lanes a, Lanes b) { return hn::Max(a.v, b.v); }
#else
    friend Lanes min(Lanes a, Lanes b) { return select(a < b, a, b); }
    friend Lanes max(Lanes a, Lanes b) { return select(b < a, a, b); }
#endif

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

// Calls step(Cached, at, to, from...) for consecutive blocks of a row, the first of which is the row's component `at`.
// What does not fill a block is padded with zeros. All sources have the row's type.
template <std::size_t kBlock, class T, class Step, class... From>
[[gnu::noinline, gnu::flatten]] void forCachedBlocks(std::size_t at, T* to, std::size_t count, const Step& step,
                                                     const From*... from) {
    for (; count >= kBlock; at += kBlock, to += kBlock, count -= kBlock) {
        step(Cached(), at, to, from...);
        ((from += kBlock), ...);
    }
    if (count == 0) return;
    alignas(64) T blocks[sizeof...(From) + 1][kBlock];
    T* next = blocks[0];
    const auto padded = [&](const T* row) {
        T* block = next;
        next += kBlock;
        std::memcpy(block, row, count * sizeof(T));
        std::memset(block + count, 0, (kBlock - count) * sizeof(T));
        return block;
    };
    step(Cached(), at, blocks[sizeof...(From)], padded(from)...);
    std::memcpy(to, blocks[sizeof...(From)], count * sizeof(T));
}

// The part of a row that goes past the caches in whole blocks, as components from `first` on; none in short rows, and
// where pixels would be torn apart. It starts on a cache line, so that no line is written in part.
struct StreamedPart {
    std::size_t first = 0, count = 0;
};

template <std::size_t kBlock, std::size_t kPixel, class T, class... From>
StreamedPart streamedPart(T* to, std::size_t count, const From*... from) {
    constexpr std::size_t kLine = 64;
    static_assert(kBlock * sizeof(T) % kLine == 0 && kBlock % kPixel == 0);
    const std::size_t gap = -reinterpret_cast<std::uintptr_t>(to) % kLine, head = gap / sizeof(T);
    const bool streams = count * sizeof(T) >= kStreamedRow && (... && (from != to)) && gap % (kPixel * sizeof(T)) == 0;
    return streams ? StreamedPart{head, (count - head) / kBlock * kBlock} : StreamedPart();
}

// Calls step(Cached or Streamed, at, to, from...) for the blocks of a row, the first of which is the row's component
// `at`.
template <std::size_t kBlock, std::size_t kPixel, class T, class Step, class... From>
[[gnu::flatten]] void forBlocks(T* to, std::size_t count, const Step& step, const From*... from) {
    const auto [first, streamed] = streamedPart<kBlock, kPixel>(to, count, from...);
    const std::size_t end = first + streamed;
    forCachedBlocks<kBlock>(0, to, first, step, from...);
    for (std::size_t at = first; at < end; at += kBlock) step(Streamed(), at, to + at, from + at...);
    forCachedBlocks<kBlock>(end, to + end, count - end, step, from + end...);
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

// So many pixels as a vector has lanes, by components in the order of memory: floats, or bytes as the numbers 0..255.
// Which pixel is in which lane is told by pixelNumbers.
inline Pixel<Lanes> loadPixels(const float* from) {
    constexpr std::size_t n = Lanes::kCount;
    const Lanes::Tag d;
    Pixel<Lanes> p{hn::LoadU(d, from), hn::LoadU(d, from + n), hn::LoadU(d, from + 2 * n), hn::LoadU(d, from + 3 * n)};
    transpose(p.r, p.g, p.b, p.a);
    return p;
}

inline Pixel<Lanes> loadPixels(const std::uint8_t* from) {
    const hn::Repartition<std::uint8_t, Lanes::Tag> bytes;
    const hn::RebindToSigned<Lanes::Tag> words;
    const auto pixels = hn::BitCast(hn::RebindToUnsigned<Lanes::Tag>(), hn::LoadU(bytes, from));
    const auto byte = hn::Set(hn::RebindToUnsigned<Lanes::Tag>(), 0xFF);
    const auto number = [&](auto v) -> Lanes { return hn::ConvertTo(Lanes::Tag(), hn::BitCast(words, v)); };
    return {number(hn::And(pixels, byte)), number(hn::And(hn::ShiftRight<8>(pixels), byte)),
            number(hn::And(hn::ShiftRight<16>(pixels), byte)), number(hn::ShiftRight<24>(pixels))};
}

// The number of each lane's pixel, 0 for the vector's first one: bytes are in order, floats as transposing leaves them.
template <class T>
struct PixelOrder {
    constexpr PixelOrder() {
        constexpr std::size_t n = Lanes::kCount;
        for (std::size_t lane = 0; lane < n; ++lane) {
            const std::size_t pixel = std::is_same_v<T, float> ? lane % 4 * (n / 4) + lane / 4 : lane;
            numbers[lane] = static_cast<float>(pixel);
            pixelOf[lane] = static_cast<std::int32_t>(pixel);
            laneOf[pixel] = static_cast<std::int32_t>(lane);
        }
    }
    alignas(64) float numbers[Lanes::kCount]{};
    alignas(64) std::int32_t pixelOf[Lanes::kCount]{}, laneOf[Lanes::kCount]{};
};
template <class T>
inline constexpr PixelOrder<T> kPixelOrder;

template <class T>
Lanes pixelNumbers() {
    return hn::Load(Lanes::Tag(), kPixelOrder<T>.numbers);
}

// Rows with one number for each pixel, into and out of the lanes of pixels of a type.
template <class T>
Lanes inOrder(Lanes numbers) {
    if constexpr (!std::is_same_v<T, float>) return numbers;
    const Lanes::Tag d;
    return hn::TableLookupLanes(numbers.v, hn::SetTableIndices(d, kPixelOrder<T>.pixelOf));
}
template <class T>
Lanes loadNumbers(const float* from) {
    return inOrder<T>(hn::LoadU(Lanes::Tag(), from));
}
template <class T>
Lanes loadNumbers(const std::uint8_t* from) {
    const hn::RebindToSigned<Lanes::Tag> words;
    const hn::Rebind<std::uint8_t, Lanes::Tag> bytes;
    return inOrder<T>(hn::ConvertTo(Lanes::Tag(), hn::PromoteTo(words, hn::LoadU(bytes, from))));
}
template <class T>
void storeNumbers(Lanes numbers, float* to) {
    const Lanes::Tag d;
    if constexpr (!std::is_same_v<T, float>) return hn::StoreU(numbers.v, d, to);
    hn::StoreU(hn::TableLookupLanes(numbers.v, hn::SetTableIndices(d, kPixelOrder<T>.laneOf)), d, to);
}

template <bool streamed>
void storePixels(Pixel<Lanes> p, float* to) {
    constexpr std::size_t n = Lanes::kCount;
    const Lanes::Tag d;
    transpose(p.r, p.g, p.b, p.a);
    put<streamed>(p.r.v, d, to);
    put<streamed>(p.g.v, d, to + n);
    put<streamed>(p.b.v, d, to + 2 * n);
    put<streamed>(p.a.v, d, to + 3 * n);
}

// Bytes are rounded to the nearest, ties to the even one; the numbers must round to 0..255.
template <bool streamed>
void storePixels(const Pixel<Lanes>& p, std::uint8_t* to) {
    const hn::RebindToUnsigned<Lanes::Tag> words;
    // This sum's lowest bits are the rounded number.
    const auto code = [&](Lanes v) { return hn::BitCast(words, (v + 12582912.0f).v); };
    const auto byte = hn::Set(words, 0xFF);
    const auto rg = hn::Or(hn::And(code(p.r), byte), hn::ShiftLeft<8>(hn::And(code(p.g), byte)));
    const auto ba = hn::Or(hn::And(code(p.b), byte), hn::ShiftLeft<8>(code(p.a)));
    const hn::Repartition<std::uint8_t, decltype(words)> bytes;
    put<streamed>(hn::BitCast(bytes, hn::Or(rg, hn::ShiftLeft<16>(ba))), bytes, to);
}

// Calls step(Cached or Streamed, index of the first pixel, to, from...) for every vector of pixels of a row of four
// components.
template <class T, class Step, class... From>
void forVectors(T* to, std::size_t pixels, const Step& step, const From*... from) {
    constexpr std::size_t n = 4 * Lanes::kCount, kLine = 64 / sizeof(T);
    constexpr std::size_t kBlock = n > kLine ? n : kLine;
    const auto block = [&step](auto streamed, std::size_t at, T* t, const auto*... s) {
        for (std::size_t i = 0; i < kBlock; i += n) step(streamed, (at + i) / 4, t + i, s + i...);
    };
    forBlocks<kBlock, 4>(to, 4 * pixels, block, from...);
}

// Each pixel becomes map(from...), of Pixel<Lanes>; bytes as in load and store.
template <class T, class Map, class... From>
void forPixels(T* to, std::size_t pixels, const Map& map, const From*... from) {
    const auto step = [&map](auto streamed, std::size_t, T* t, const auto*... s) {
        storePixels<streamed>(map(loadPixels(s)...), t);
    };
    forVectors(to, pixels, step, from...);
}

// Each pixel becomes a number: numberOf(its vector in memory, the vector of Pixel<Lanes>).
template <class T, class NumberOf>
void numberPixels(const T* from, float* numbers, std::size_t pixels, const NumberOf& numberOf) {
    constexpr std::size_t n = Lanes::kCount;
    for (; pixels >= n; from += 4 * n, numbers += n, pixels -= n)
        storeNumbers<T>(numberOf(from, loadPixels(from)), numbers);
    T rest[4 * n] = {};
    float last[n];
    std::memcpy(rest, from, 4 * pixels * sizeof(T));
    storeNumbers<T>(numberOf(static_cast<const T*>(rest), loadPixels(static_cast<const T*>(rest))), last);
    std::memcpy(numbers, last, pixels * sizeof(float));
}

template <class T, class Map>
void mapPixels(const T* from, T* to, std::size_t pixels, const Map& map) {
    forPixels(to, pixels, map, from);
}

template <class T, class Mix>
void mixPixels(const T* a, const T* b, T* to, std::size_t pixels, const Mix& mix) {
    forPixels(to, pixels, mix, a, b);
}

} // namespace pixelops::SIMD_LEVEL

namespace lanes = pixelops::SIMD_LEVEL;
