// For *_simd.cpp files only: rows in which a mask chooses between two pictures, and mixes them where it is soft.
#pragma once

#include "pixelops/lanes.h"

namespace pixelops::SIMD_LEVEL {

// The mask at some pixels: which show one picture alone, and the weight with which the others are mixed.
struct Mask {
    Lanes::Truth from, to;
    Lanes weight;
};

// So many pixels from one on surely show one picture alone; a mask is told of them without working out each.
struct Run {
    float pixels; // any number below 1 is none
    bool from;    // which picture
};

// What follows a run is a new stream for the processor, which it begins to fetch too late by itself.
template <class T>
void prefetch(const T* from) {
    for (std::size_t line = 0; line < 8; ++line) __builtin_prefetch(from + line * 64 / sizeof(T));
}

inline float size(float x) { return x < 0 ? -x : x; }

// So many blocks are mixed before a run is looked for again.
inline constexpr int kMixedBlocks = 4;

// mask.at(x) gives the Mask at pixels, mask.run(x) the Run from one pixel on, x being their numbers from 0;
// mix(from, to, weight) mixes components, bytes as the numbers 0..255. Where one picture is shown the other is not
// read.
template <class T, class M, class Mix>
[[gnu::flatten]] void wipeRow(const T* from, const T* to, T* wiped, std::size_t pixels, const M& mask, const Mix& mix) {
    constexpr std::size_t kVector = 4 * Lanes::kCount, kBlock = kVector * sizeof(T) < 64 ? 64 / sizeof(T) : kVector;
    const auto mixVector = [&](auto streamed, std::size_t at, T* w, const T* f, const T* t) {
        const Mask m = mask.at(pixelNumbers<T>() + static_cast<float>(at / 4));
        const Pixel<Lanes> a = loadPixels(f), b = loadPixels(t);
        const auto component = [&](Lanes x, Lanes y) {
            return select(m.from, x, select(m.to, y, mix(x, y, m.weight)));
        };
        storePixels<streamed>(
            Pixel<Lanes>{component(a.r, b.r), component(a.g, b.g), component(a.b, b.b), component(a.a, b.a)}, w);
    };
    const auto mixBlock = [&](auto streamed, std::size_t at, T* w, const T* f, const T* t) {
        for (std::size_t i = 0; i < kBlock; i += kVector) mixVector(streamed, at + i, w + i, f + i, t + i);
    };
    // Whole blocks, in runs as long as they come.
    const auto wipeBlocks = [&](auto streamed, std::size_t at, std::size_t end) {
        while (at < end) {
            const Run run = mask.run(static_cast<float>(at / 4));
            const std::size_t blocks = (end - at) / kBlock;
            const float whole = run.pixels * 4 / kBlock, most = static_cast<float>(blocks);
            const std::size_t count = (whole < 1      ? 0
                                       : whole < most ? static_cast<std::size_t>(whole)
                                                      : blocks) *
                                      kBlock;
            const T* shown = run.from ? from : to;
            prefetch(from + at + count), prefetch(to + at + count);
            const hn::ScalableTag<T> d;
            for (std::size_t i = at; i < at + count; i += hn::Lanes(d))
                put<streamed>(hn::LoadU(d, shown + i), d, wiped + i);
            at += count;
            for (int i = 0; i < kMixedBlocks && count == 0 && at < end; ++i, at += kBlock)
                mixBlock(streamed, at, wiped + at, from + at, to + at);
        }
    };
    const std::size_t components = 4 * pixels;
    const auto [first, streamed] = streamedPart<kBlock, 4>(wiped, components, from, to);
    forCachedBlocks<kBlock>(0, wiped, first, mixBlock, from, to);
    wipeBlocks(Streamed(), first, first + streamed);
    const std::size_t cached = streamed == 0 ? components / kBlock * kBlock : first + streamed;
    if (streamed == 0) wipeBlocks(Cached(), 0, cached);
    forCachedBlocks<kBlock>(cached, wiped + cached, components - cached, mixBlock, from + cached, to + cached);
}

// 0 at 0, 1 at 1, level at both ends.
inline Lanes smoothstep(Lanes u) { return (3.0f - 2.0f * u) * u * u; }

// The arc tangent of 0..1, to 2e-8 and single precision's own rounding. Abramowitz and Stegun, 4.4.49.
inline Lanes atanOfUnit(Lanes t) {
    const Lanes s = t * t;
    Lanes sum = 0.0028662257f;
    for (const float c : {-0.0161657367f, 0.0429096138f, -0.0752896400f, 0.1065626393f, -0.1420889944f, 0.1999355085f,
                          -0.3333314528f, 1.0f})
        sum = sum * s + c;
    return sum * t;
}

// The angle of (u, v) from the v axis towards the u axis: 0..2 pi, with single precision's value of that.
inline Lanes angle(Lanes u, Lanes v) {
    const Lanes zero = 0.0f, size = max(abs(u), abs(v));
    const Lanes quotient = min(abs(u), abs(v)) / max(size, Lanes(1e-30f));
    Lanes result = atanOfUnit(quotient);
    result = select(abs(u) > abs(v), 1.5707964f - result, result);
    result = select(v < zero, 3.1415927f - result, result);
    return select(u < zero, 6.2831855f - result, result);
}

} // namespace pixelops::SIMD_LEVEL
