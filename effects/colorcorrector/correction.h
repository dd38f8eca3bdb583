// The arithmetic of the colour corrector: luma and two colour differences, in which three wheels push the colours, a
// curve moves luma, and a factor scales saturation.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

// In the order in which kernels and editors take them. A wheel is an angle in degrees and a magnitude from 0 to 1.
struct colorcorrectorValues {
    std::array<double, 2> low, mid, high;
    double saturation, gamma, gain;
    double offset; // in codes of 8 bits
};

namespace colorcorrector {

// The stages that a render needs, as bits. The others would change nothing.
enum Stage : unsigned { kTone = 1, kSaturation = 2, kWheels = 4 };
unsigned stagesOf(const colorcorrectorValues&);

// The exponent of the tone curve. Above 1 the parameter brightens, below it darkens, more steeply.
double exponentOf(double gamma);

// What depends on luma alone, in steps of a quarter of an 8-bit code, in units of the pixels, of which white has
// `white`. Where neither tone nor wheels are set, only the first entry's saturation is filled in.
struct Correction {
    static constexpr std::size_t kLevels = 1024;
    static constexpr double kStepsPerCode = 4;

    struct Entry {
        float pushV, pushU, luma, saturation;
    };
    Entry entries[kLevels];
};

void fill(Correction& correction, const colorcorrectorValues& values, unsigned stages, double white);

// Rows of four components, of which the first in memory counts as blue and the third as red. Colours are limited to
// 0..alpha, alpha stays; bytes are rounded to the nearest, ties to the even one. There must be a stage.
extern const simd::Function<void(const Correction& correction, unsigned stages, const std::uint8_t* from,
                                 std::uint8_t* to, std::size_t pixels)>
    correctBytes;
extern const simd::Function<void(const Correction& correction, unsigned stages, const float* from, float* to,
                                 std::size_t pixels)>
    correctFloats;

} // namespace colorcorrector
