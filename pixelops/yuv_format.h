// The YUV formats: where each keeps its samples, as data, and the functions that take them in and out.
#pragma once

#include "pixelops/kr_pixelops.h"
#include "pixelops/yuv_rows.h"

namespace pixelops {

constexpr std::uint32_t fourCC(const char (&name)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) code |= static_cast<std::uint32_t>(static_cast<unsigned char>(name[i])) << (8 * i);
    return code;
}

// A row of a plane: so many bytes for every group of so many pixels, of which the last may be in use in part.
struct YuvGroups {
    std::uint32_t bytes, pixels;

    constexpr std::size_t before(std::size_t x) const { return x / pixels * bytes; } // x: where a group starts
    constexpr std::size_t rowBytes(std::size_t width) const { return (width + pixels - 1) / pixels * bytes; }
};

// How kernels address samples; their numbers are known to yuv.cl.
enum class YuvStorage : std::int32_t { Planar, Pairs, LumaFirst, ChromaFirst, Words, Tens };

struct YuvFormat {
    std::uint32_t fourcc;
    YuvStorage storage;
    int bits, planes;
    YuvGroups groups[2];        // of luma or of everything, and of each chroma plane
    bool halfWidth, halfHeight; // of chroma
    bool vFirst;                // of the chroma planes
    const YuvUnpack* unpack;    // null, as pack, where no layout is defined
    const YuvPack* pack;

    constexpr const YuvGroups& groupsOf(int plane) const { return groups[plane > 0 ? 1 : 0]; }
    constexpr std::uint32_t rowsOf(int plane, std::uint32_t height) const {
        return plane > 0 && halfHeight ? height / 2 + height % 2 : height;
    }
};

// What a conversion works on, checked: a format with functions, a matrix, sizes and pitches that make sense.
struct YuvConversion {
    const YuvFormat* format; // null when something is wrong
    const YuvCoefficients* coefficients;

    YuvConversion(const std::int32_t* pitches, std::uint32_t width, std::uint32_t height, std::uint32_t fourcc,
                  std::uint32_t matrixIndex);
};

// Whether rows of so many bytes, one pitch apart, are apart.
constexpr bool holds(std::int32_t pitch, std::size_t rowBytes) {
    return static_cast<std::size_t>(pitch < 0 ? -std::int64_t{pitch} : std::int64_t{pitch}) >= rowBytes;
}

} // namespace pixelops
