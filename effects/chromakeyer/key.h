// The distance of colours to a key colour, and the rows that turn it into a matte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

namespace chromakeyer {

// Red, green, blue, 0..1, and the same colour's hue, saturation and lightness, 0..1.
struct Color {
    double r, g, b, h, s, l;
};

Color colorOf(double r, double g, double b);

// A distance below low is transparent, one above high less a little opaque, between them the matte rises.
struct Key {
    Color color;
    double low, high;
    double scale; // 1 / (high - low); 0 where they are the same
    bool bgra;    // pixels are blue first
    bool showMatte;
};

// The matte of one byte pixel, in double precision: 0..255.
std::uint8_t matteOf(const Key& key, std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a);

// Rows of pixels of four components. Mattes have one number for each pixel: 0..255, whole, for bytes; 0..1 for floats.
extern const simd::Function<void(const Key&, const std::uint8_t* from, float* matte, std::size_t pixels)> matteByteRow;
extern const simd::Function<void(const Key&, const float* from, float* matte, std::size_t pixels)> matteFloatRow;

// Alpha limited by the matte, or the matte itself as an opaque grey.
extern const simd::Function<void(const Key&, const std::uint8_t* from, std::uint8_t* to, std::size_t pixels)>
    keyByteRow;
extern const simd::Function<void(const Key&, const float* from, float* to, std::size_t pixels)> keyFloatRow;

// Three rows of a matte, of which the pixel before the first exists as well, and up to a vector after the last.
struct Neighbourhood {
    const float *above, *row, *below;
};

// Next to a pixel of matte 0, the smaller of the matte and the mean of its eight neighbours; elsewhere the matte. Tells
// which pixels those are, 255 or 0 each. Writes up to a vector more than the row.
extern const simd::Function<void(const Neighbourhood&, float* refined, std::uint8_t* edges, std::size_t pixels)>
    refineRow;

// Alpha limited by a soft matte; at edges, the key's dominant component, by its place in memory, is limited to the
// larger of the other two. Reads up to a vector more of the matte and of the edges than the row.
struct SoftKey {
    int dominant;
    bool showMatte;
};
extern const simd::Function<void(const SoftKey&, const std::uint8_t* from, const float* soft, const std::uint8_t* edges,
                                 std::uint8_t* to, std::size_t pixels)>
    softByteRow;
extern const simd::Function<void(const SoftKey&, const float* from, const float* soft, const std::uint8_t* edges,
                                 float* to, std::size_t pixels)>
    softFloatRow;

} // namespace chromakeyer
