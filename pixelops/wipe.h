// For *_simd.cpp files only: rows in which a mask chooses between two pictures, and mixes them where it is soft.
#pragma once

#include "pixelops/lanes.h"

namespace pixelops::SIMD_LEVEL {

// The mask at some pixels: which show one picture alone, and the weight with which the others are mixed.
struct Mask {
    Lanes::Truth from, to;
    Lanes weight;
};

template <bool streamed, class T>
void copyPixels(const T* from, T* to) {
    const hn::ScalableTag<T> d;
    for (std::size_t i = 0; i < 4 * Lanes::kCount; i += hn::Lanes(d)) put<streamed>(hn::LoadU(d, from + i), d, to + i);
}

// maskAt(x) gives the mask at pixels, x being their numbers from 0; mix(from, to, weight) mixes components, bytes as
// the numbers 0..255. Vectors of pixels that show one picture do not read the other.
template <class T, class MaskAt, class Mix>
void wipeRow(const T* from, const T* to, T* wiped, std::size_t pixels, const MaskAt& maskAt, const Mix& mix) {
    const auto step = [&](auto streamed, std::size_t first, T* w, const T* f, const T* t) {
        const Mask mask = maskAt(pixelNumbers<T>() + static_cast<float>(first));
        if (all(mask.from)) return copyPixels<streamed>(f, w);
        if (all(mask.to)) return copyPixels<streamed>(t, w);
        const Pixel<Lanes> a = loadPixels(f), b = loadPixels(t);
        const auto component = [&](Lanes x, Lanes y) {
            return select(mask.from, x, select(mask.to, y, mix(x, y, mask.weight)));
        };
        storePixels<streamed>(
            Pixel<Lanes>{component(a.r, b.r), component(a.g, b.g), component(a.b, b.b), component(a.a, b.a)}, w);
    };
    forVectors(wiped, pixels, step, from, to);
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
