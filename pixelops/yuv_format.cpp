// The table of YUV formats, and what belongs to each matrix index.
#include "pixelops/yuv_format.h"

namespace pixelops {
namespace {

constexpr YuvFormat kFormats[] = {
    {fourCC("NV12"), YuvStorage::Pairs, 8, 2, {{1, 1}, {2, 2}}, true, true, false, &unpackPairs, &packPairs},
    {fourCC("YV12"), YuvStorage::Planar, 8, 3, {{1, 1}, {1, 2}}, true, true, true, &unpackPlanar, &packPlanar},
    {fourCC("YV16"), YuvStorage::Planar, 8, 3, {{1, 1}, {1, 2}}, true, false, true, &unpackPlanar, &packPlanar},
    {fourCC("YUYV"), YuvStorage::LumaFirst, 8, 1, {{4, 2}, {}}, true, false, false, &unpackLumaFirst, &packLumaFirst},
    {fourCC("UYVY"),
     YuvStorage::ChromaFirst,
     8,
     1,
     {{4, 2}, {}},
     true,
     false,
     false,
     &unpackChromaFirst,
     &packChromaFirst},
    {fourCC("I420"), YuvStorage::Planar, 8, 3, {{1, 1}, {1, 2}}, true, true, false, &unpackPlanar, &packPlanar},
    {fourCC("P410"), YuvStorage::Words, 10, 2, {{2, 1}, {4, 1}}, false, false, false, &unpackFullWords, &packFullWords},
    {fourCC("PL10"), YuvStorage::Words, 10, 0, {}, false, false, false, nullptr, nullptr},
    {fourCC("A410"), YuvStorage::Words, 10, 0, {}, false, false, false, nullptr, nullptr},
    {fourCC("P010"), YuvStorage::Words, 10, 2, {{2, 1}, {4, 2}}, true, true, false, &unpackWords, &packWords},
    {fourCC("P210"), YuvStorage::Words, 10, 2, {{2, 1}, {4, 2}}, true, false, false, &unpackWords, &packWords},
    {fourCC("v210"), YuvStorage::Tens, 10, 1, {{16, 6}, {}}, true, false, false, &unpackTens, &packTens},
};

constexpr YuvCoefficients coefficientsOf(std::uint32_t matrixIndex, int bits) {
    return {*kYuvStandards[matrixIndex % 3], yuvRange(matrixIndex, bits), bits};
}

template <int bits>
constexpr YuvCoefficients kCoefficients[kYuvMatrices] = {coefficientsOf(0, bits), coefficientsOf(1, bits),
                                                         coefficientsOf(2, bits), coefficientsOf(3, bits),
                                                         coefficientsOf(4, bits), coefficientsOf(5, bits)};

// So that neither positions in a row nor the halves of an odd size pass 32 bits.
constexpr std::uint32_t kLargest = 1u << 30;

} // namespace

YuvConversion::YuvConversion(const std::int32_t* pitches, std::uint32_t width, std::uint32_t height,
                             std::uint32_t fourcc, std::uint32_t matrixIndex)
    : format(nullptr), coefficients(nullptr) {
    if (pitches == nullptr || width == 0 || height == 0 || width > kLargest || height > kLargest) return;
    if (matrixIndex >= kYuvMatrices) return;
    for (const YuvFormat& candidate : kFormats) {
        if (candidate.fourcc != fourcc || candidate.unpack == nullptr) continue;
        for (int plane = 0; plane < candidate.planes; ++plane) {
            if (!holds(pitches[plane], candidate.groupsOf(plane).rowBytes(width))) return;
        }
        format = &candidate;
        coefficients = candidate.bits == 8 ? &kCoefficients<8>[matrixIndex] : &kCoefficients<10>[matrixIndex];
    }
}

} // namespace pixelops
