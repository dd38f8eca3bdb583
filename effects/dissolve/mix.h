// What the rows of a dissolve need, worked out once per render, for bytes and for floats.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "pixelops/simd.h"

namespace dissolve {

enum Mode {
    Additive,
    Subtractive,
    SubtractiveCrossfade,
    ColorBleed,
    ColorMorph,
    ThresholdDissolve,
    ThresholdAppear,
    ThroughGray,
    ThroughColor,
    ChannelByChannel,
    kModes
};

// Arrays hold a number for each component, in the order of memory. Full scale is 255 or 1; a fade from 0 to full scale
// mixes two pixels, a weight from 0 to 1024 or to 1 scales one.
template <class T>
struct Mix {
    static constexpr bool kBytes = std::is_same_v<T, std::uint8_t>;

    Mode mode;
    bool second;                                               // the half in which "SourceTo" leads
    std::conditional_t<kBytes, std::uint16_t, float> weight;   // of the other picture; in the crossfade, the progress
    std::conditional_t<kBytes, std::int32_t, float> threshold; // of R + G + B
    T fade[4];                                                 // the factors of all blends
    T drain[4], fill[4];                                       // ColorBleed
    T step[4];                                                 // ColorMorph
    T color[4];                                                // ThroughColor, premultiplied
};

// Rows of pixels of four components, premultiplied, alpha last.
extern const simd::Function<void(const Mix<std::uint8_t>&, const std::uint8_t* from, const std::uint8_t* to,
                                 std::uint8_t* mixed, std::size_t pixels)>
    mixByteRow;
extern const simd::Function<void(const Mix<float>&, const float* from, const float* to, float* mixed,
                                 std::size_t pixels)>
    mixFloatRow;

} // namespace dissolve
