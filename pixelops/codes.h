// Numbers to code values, defined for every number there is: doubles that no integer holds, infinities, and NaN.
#pragma once

#include <cstdint>

namespace pixelops {

// A code 0..255 as 0..1.
inline double fromCode(std::uint8_t code) { return code * 0.00392156862745098; }

// Toward zero; at the ends of the type it stops. NaN is 0.
inline std::int32_t truncated(double value) {
    if (value >= 2147483647.0) return INT32_MAX;
    if (value <= -2147483648.0) return INT32_MIN;
    return value == value ? static_cast<std::int32_t>(value) : 0;
}

// 0..1 as a code; numbers outside wrap around.
inline std::uint8_t wrappedCode(double value) { return static_cast<std::uint8_t>(truncated(value * 255)); }

// NaN is 0.
inline double clampedUnit(double value) { return value > 0 ? value < 1 ? value : 1 : 0; }

} // namespace pixelops
