// The rows of the flash.
#include "effects/flash/light.h"
#include "pixelops/byte_lanes.h"

namespace flash {
namespace SIMD_LEVEL {
namespace {

namespace hn = lanes::hn;
using lanes::Lanes, lanes::Bytes, lanes::Codes;
using Pixel = pixelops::Pixel<Lanes>;

Lanes lumaOf(bool bgra, const Pixel& p) {
    const Lanes red = bgra ? p.b : p.r, blue = bgra ? p.r : p.b;
    return red * 0.299f + p.g * 0.587f + blue * 0.114f;
}

// Full scale is 255 or 1; bytes are limited to it and to their alpha.
template <class T>
Pixel lit(const Light& light, const Pixel& p, Lanes luma) {
    constexpr bool kBytes = sizeof(T) == 1;
    const Lanes full = kBytes ? 255.0f : 1.0f, white = light.white * full, glow = luma * light.gain;
    const Lanes alpha = min(glow + white + p.a, full);
    const auto component = [&](Lanes c, float tint) {
        const Lanes sum = glow * tint + white + c;
        return kBytes ? min(max(sum, Lanes(0.0f)), alpha) : sum;
    };
    return {component(p.r, light.tint[0]), component(p.g, light.tint[1]), component(p.b, light.tint[2]), alpha};
}

// What every component of an opaque byte pixel gains under a black tint, where that is the same whole code for all; -1
// where roundings could differ.
int wholeWhite(const Light& light) {
    if (light.tint[0] != 0 || light.tint[1] != 0 || light.tint[2] != 0) return -1;
    const float white = light.white * 255;
    const int whole = static_cast<int>(white + 0.5f);
    const float beyond = white - static_cast<float>(whole);
    return beyond > -0.499f && beyond < 0.499f ? whole : -1;
}

template <class T>
void lightRow(const Light& light, const T* from, const float* luma, T* to, std::size_t pixels) {
    if (luma == nullptr) {
        lanes::mapPixels(from, to, pixels, [&](const Pixel& p) { return lit<T>(light, p, lumaOf(light.bgra, p)); });
    } else {
        const auto step = [&](auto streamed, std::size_t first, T* t, const T* f) {
            lanes::storePixels<streamed>(lit<T>(light, lanes::loadPixels(f), lanes::loadNumbers<T>(luma + first)), t);
        };
        lanes::forVectors(to, pixels, step, from);
    }
}

} // namespace

void lightByteRow(const Light& light, const std::uint8_t* from, const float* luma, std::uint8_t* to,
                  std::size_t pixels) {
    const int white = wholeWhite(light);
    if (white < 0) return lightRow(light, from, luma, to, pixels);
    // The usual flash of usual pictures: a saturated sum.
    const Bytes d;
    const Codes more = hn::Set(d, static_cast<std::uint8_t>(white)), colours = lanes::codes({255, 255, 255, 0});
    const auto step = [&](auto streamed, std::size_t first, std::uint8_t* t, const std::uint8_t* f) {
        const Codes c = hn::LoadU(d, f);
        if (hn::AllTrue(d, hn::Eq(hn::Or(c, colours), hn::Set(d, 255))))
            return lanes::put<streamed>(hn::SaturatedAdd(c, more), d, t);
        const Pixel p = lanes::loadPixels(f);
        const Lanes glow = luma != nullptr ? lanes::loadNumbers<std::uint8_t>(luma + first) : lumaOf(light.bgra, p);
        lanes::storePixels<streamed>(lit<std::uint8_t>(light, p, glow), t);
    };
    lanes::forVectors(to, pixels, step, from);
}
void lightFloatRow(const Light& light, const float* from, const float* luma, float* to, std::size_t pixels) {
    lightRow(light, from, luma, to, pixels);
}

void lumaOfByteRow(bool bgra, const std::uint8_t* from, float* luma, std::size_t pixels) {
    lanes::numberPixels(from, luma, pixels, [bgra](const auto*, const Pixel& p) { return lumaOf(bgra, p); });
}
void lumaOfFloatRow(bool bgra, const float* from, float* luma, std::size_t pixels) {
    lanes::numberPixels(from, luma, pixels, [bgra](const auto*, const Pixel& p) { return lumaOf(bgra, p); });
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(lightByteRow);
SIMD_FUNCTION(lightFloatRow);
SIMD_FUNCTION(lumaOfByteRow);
SIMD_FUNCTION(lumaOfFloatRow);

} // namespace flash
