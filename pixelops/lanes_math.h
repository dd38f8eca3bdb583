// For *_simd.cpp files only: look-ups and powers for vectors, with the same result for every length of vector.
#pragma once

#include "pixelops/lanes.h"

namespace pixelops::SIMD_LEVEL {

// Places in a table, one per lane.
struct Indices {
    using Tag = hn::RebindToSigned<Lanes::Tag>;
    friend Lanes numbers(Indices i) { return hn::ConvertTo(Lanes::Tag(), i.v); }

    hn::Vec<Tag> v;
};

// The nearest integers, ties to the even one.
inline Indices nearest(Lanes a) { return {hn::NearestInt(a.v)}; }

// A vector of the table's entries at consecutive places in memory, four floats each.
template <class D>
hn::Vec<D> joined(D d, const float* table, const std::int32_t* places) {
    if constexpr (hn::MaxLanes(d) == 4) {
        return hn::LoadU(d, table + 4 * *places);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, joined(half, table, places + hn::MaxLanes(half)), joined(half, table, places));
    }
}

// The entries of a table of four floats each, one per lane, by components. A load per lane and a transposition take
// less than half as long as a gather per component.
inline Pixel<Lanes> lookUp(const float* table, Indices at) {
    alignas(64) std::int32_t places[Lanes::kCount];
    hn::Store(at.v, Indices::Tag(), places);
    const Lanes::Tag d;
    Pixel<Lanes> p{joined(d, table, places), joined(d, table, places + 1), joined(d, table, places + 2),
                   joined(d, table, places + 3)};
    transpose(p.r, p.g, p.b, p.a);
    return p;
}

// log2 of positive normal numbers, within a few 1e-7 of the result or of 1, whichever is larger. Other numbers give
// something, too.
inline Lanes log2(Lanes x) {
    // x = m 2^e with m from sqrt(1/2) to sqrt(2); the series of the area tangent converges fast there.
    constexpr std::int32_t kRootOfHalf = 0x3F3504F3; // its bits
    const Indices::Tag d;
    const auto bits = hn::BitCast(d, x.v);
    const auto e = hn::ShiftRight<23>(hn::Sub(bits, hn::Set(d, kRootOfHalf)));
    const Lanes m = hn::BitCast(Lanes::Tag(), hn::Sub(bits, hn::ShiftLeft<23>(e)));
    const Lanes s = (m - 1.0f) / (m + 1.0f), q = s * s;
    const Lanes series = s * ((2.88539008f + q * 0.961796694f) + q * q * (0.577078016f + q * 0.412198583f));
    return numbers(Indices{e}) + series;
}

// 2^x for x from -126 to 127, within a few 1e-7 of the result. Other numbers give something, too.
inline Lanes exp2(Lanes x) {
    const Indices::Tag d;
    const Indices whole = nearest(x);
    const Lanes f = (x - numbers(whole)) * 0.693147181f; // the natural exponent, at most half of ln 2
    const Lanes q = f * f, tail = (1.0f / 24 + f * (1.0f / 120)) + q * (1.0f / 720);
    const Lanes series = (1.0f + f) + q * ((0.5f + f * (1.0f / 6)) + q * tail);
    const Lanes power = hn::BitCast(Lanes::Tag(), hn::ShiftLeft<23>(hn::Add(whole.v, hn::Set(d, 127))));
    return series * power;
}

// x^y for positive x, where the result is a normal number.
inline Lanes pow(Lanes x, Lanes y) { return exp2(log2(x) * y); }

} // namespace pixelops::SIMD_LEVEL
