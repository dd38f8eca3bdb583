// The YUV matrices: real-valued, and as the fixed-point numbers that the row loops take.
#pragma once

#include <cstdint>

namespace pixelops {

// Coefficients of full-range values: R, G, B 0..1 to luma 0..1 and chroma -0.5..0.5, and back.
struct YuvMatrix {
    double y[3], u[3], v[3]; // of red, green, blue
    double redFromV, greenFromU, greenFromV, blueFromU;
};

inline constexpr YuvMatrix kBT601 = {
    {0.299, 0.587, 0.114}, {-0.1687, -0.3313, 0.5}, {0.5, -0.4187, -0.0813}, 1.402, -0.3441, -0.7141, 1.772};
inline constexpr YuvMatrix kBT709 = {
    {0.2126, 0.7152, 0.0722}, {-0.1146, -0.3854, 0.5}, {0.5, -0.4542, -0.0458}, 1.5748, -0.1873, -0.4681, 1.8556};
inline constexpr YuvMatrix kBT2020 = {
    {0.2627, 0.678, 0.0593}, {-0.1396, -0.3604, 0.5}, {0.5, -0.4598, -0.0402}, 1.4746, -0.1646, -0.5714, 1.8814};

// The codes that luma 0..1 and chroma 0..1 span at a depth of bits, what black is, and what no chroma is.
struct YuvRange {
    int luma, chroma, black, middle;
};

constexpr YuvRange fullRange(int bits) { return {(1 << bits) - 1, (1 << bits) - 1, 0, 1 << (bits - 1)}; }

constexpr YuvRange nominalRange(int bits) {
    const int one = 1 << (bits - 8);
    return {219 * one, 224 * one, 16 * one, 128 * one};
}

constexpr std::int32_t fixedPoint(double value, int bits) {
    const double scaled = value * (1 << bits);
    return static_cast<std::int32_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

// RGB codes of 8 bits to YUV codes. 30 - bits fraction bits (22 for 8-bit codes), the most that sums in 32 bits have
// room for.
struct RgbToYuv {
    std::int32_t y[3], u[3], v[3];
    int fractionBits, black, middle;

    constexpr RgbToYuv(const YuvMatrix& m, const YuvRange& range, int bits)
        : y{}, u{}, v{}, fractionBits(30 - bits), black(range.black), middle(range.middle) {
        for (int i = 0; i < 3; ++i) {
            y[i] = fixedPoint(m.y[i] * range.luma / 255, fractionBits);
            u[i] = fixedPoint(m.u[i] * range.chroma / 255, fractionBits);
            v[i] = fixedPoint(m.v[i] * range.chroma / 255, fractionBits);
        }
    }
};

// YUV codes to RGB codes of 8 bits: 22 fraction bits for chroma, of which six meet those of luma.
struct YuvToRgb {
    static constexpr int kFractionBits = 22, kSumBits = 6;
    std::int32_t redFromV, greenFromU, greenFromV, blueFromU;
    int bits, middle;
    std::uint16_t luma; // of a code that fills 16 bits
    std::int16_t black; // what to take from luma then, less half a code for rounding

    constexpr YuvToRgb(const YuvMatrix& m, const YuvRange& range, int bits_)
        : redFromV(chroma(m.redFromV, range)),
          greenFromU(chroma(m.greenFromU, range)),
          greenFromV(chroma(m.greenFromV, range)),
          blueFromU(chroma(m.blueFromU, range)),
          bits(bits_),
          middle(range.middle),
          luma(static_cast<std::uint16_t>(fixedPoint(255.0 / range.luma, kSumBits + bits_))),
          black(static_cast<std::int16_t>((range.black * luma >> bits_) - (1 << (kSumBits - 1)))) {}

private:
    static constexpr std::int32_t chroma(double coefficient, const YuvRange& range) {
        return fixedPoint(coefficient * 255 / range.chroma, kFractionBits);
    }
};

// What one depth has for one matrix index.
struct YuvCoefficients {
    RgbToYuv toYuv;
    YuvToRgb toRgb;

    constexpr YuvCoefficients(const YuvMatrix& matrix, const YuvRange& range, int bits)
        : toYuv(matrix, range, bits), toRgb(matrix, range, bits) {}
};

// By matrix index: the three standards at full range, then at nominal range.
inline constexpr int kYuvMatrices = 6;
inline constexpr const YuvMatrix* kYuvStandards[3] = {&kBT601, &kBT709, &kBT2020};

constexpr YuvRange yuvRange(std::uint32_t matrixIndex, int bits) {
    return matrixIndex < 3 ? fullRange(bits) : nominalRange(bits);
}

} // namespace pixelops
