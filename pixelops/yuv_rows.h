// Loops over one row of a YUV picture: between memory and rows of samples, and between samples and pixels. Samples are
// codes in 16 bits each, whatever their depth, so that the arithmetic exists once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"
#include "pixelops/yuv_matrix.h"

namespace pixelops {

// The rows of samples, and of pixels, that the arithmetic works on have room for a whole number of these, whatever is
// used of them: vectors of any level, and groups of six, fit in.
inline constexpr std::size_t kYuvStep = 192;

// Samples to and from memory, which is read and written to the byte. Where chroma is halved there is one sample for two
// pixels, rounded up. In planes: the row of each; those that a format has not are not looked at.
using YuvUnpack = simd::Function<void(const std::uint8_t* const* planes, std::uint16_t* y, std::uint16_t* u,
                                      std::uint16_t* v, std::size_t pixels)>;
// Without u and v, the chroma planes stay as they are. Samples follow up to the end of a group of pixels.
using YuvPack = simd::Function<void(const std::uint16_t* y, const std::uint16_t* u, const std::uint16_t* v,
                                    std::uint8_t* const* planes, std::size_t pixels)>;

// 8 bits: three planes, half chroma.
extern const YuvUnpack unpackPlanar;
extern const YuvPack packPlanar;
// 8 bits: a plane of luma and one of chroma pairs, half chroma.
extern const YuvUnpack unpackPairs;
extern const YuvPack packPairs;
// 8 bits, one plane: luma first or chroma first in each pair of bytes, half chroma.
extern const YuvUnpack unpackLumaFirst, unpackChromaFirst;
extern const YuvPack packLumaFirst, packChromaFirst;
// 10 bits in the high bits of words: a plane of luma and one of chroma pairs, half and full chroma.
extern const YuvUnpack unpackWords, unpackFullWords;
extern const YuvPack packWords, packFullWords;
// 10 bits, six pixels in 16 bytes, half chroma.
extern const YuvUnpack unpackTens;
extern const YuvPack packTens;

// Samples to opaque pixels, blue first. Halved: u and v have one sample for two pixels.
extern const simd::Function<void(const YuvToRgb& c, const std::uint16_t* y, const std::uint16_t* u,
                                 const std::uint16_t* v, std::uint8_t* pixels, std::size_t count, bool halved)>
    yuvToPixels;

// Pixels, blue first, to luma; and two rows of them to the chroma of each pair of columns, or of each column.
extern const simd::Function<void(const RgbToYuv& c, const std::uint8_t* pixels, std::uint16_t* y, std::size_t count)>
    pixelsToLuma;
extern const simd::Function<void(const RgbToYuv& c, const std::uint8_t* upper, const std::uint8_t* lower,
                                 std::uint16_t* u, std::uint16_t* v, std::size_t count, bool halved)>
    pixelsToChroma;

} // namespace pixelops
