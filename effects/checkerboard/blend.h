// Blending of a row's two colours, column by column.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixelops/simd.h"

namespace checkerboard {

// Each pixel of the row becomes a weightsOfA + b weightsOfB. The colours have four components in the order of the row.
// Weights of floats add up to 1; those of bytes to 65536, and fractions of a code value are cut off.
template <class T, class Weight>
using BlendRow = simd::Function<void(const T* a, const T* b, const Weight* weightsOfA, const Weight* weightsOfB, T* to,
                                     std::size_t pixels)>;
extern const BlendRow<std::uint8_t, std::uint32_t> blendByteRow;
extern const BlendRow<float, float> blendFloatRow;

} // namespace checkerboard
