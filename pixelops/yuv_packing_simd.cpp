// YUV samples in and out of their places in memory. Plain loops: compilers turn them into vectors.
#include <cstring>

#include "pixelops/yuv_rows.h"

namespace pixelops {
namespace SIMD_LEVEL {
namespace {

using std::size_t, std::uint16_t, std::uint32_t, std::uint8_t;

template <class T>
T read(const uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <class T>
void write(uint8_t* to, T value) {
    std::memcpy(to, &value, sizeof value);
}

constexpr size_t pairs(size_t pixels) { return pixels / 2 + pixels % 2; }

void widen(const uint8_t* from, uint16_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) to[i] = from[i];
}

void narrow(const uint16_t* from, uint8_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(from[i]);
}

// Four bytes at once: two luma samples and their chroma. Shifts are those of the first luma sample and of u.
template <int yShift, int uShift>
void splitPacked(const uint8_t* from, uint16_t* __restrict y, uint16_t* __restrict u, uint16_t* __restrict v,
                 size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const auto word = read<uint32_t>(from + 4 * i);
        y[2 * i] = static_cast<uint16_t>(word >> yShift & 255);
        y[2 * i + 1] = static_cast<uint16_t>(word >> (yShift + 16) & 255);
        u[i] = static_cast<uint16_t>(word >> uShift & 255);
        v[i] = static_cast<uint16_t>(word >> (uShift + 16) & 255);
    }
}

template <int yShift, int uShift>
void joinPacked(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t luma = uint32_t{y[2 * i]} | uint32_t{y[2 * i + 1]} << 16;
        const uint32_t chroma = uint32_t{u[i]} | uint32_t{v[i]} << 16;
        write<uint32_t>(to + 4 * i, luma << yShift | chroma << uShift);
    }
}

void widenTens(const uint8_t* from, uint16_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) to[i] = read<uint16_t>(from + 2 * i) >> 6;
}

void narrowTens(const uint16_t* from, uint8_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) write<uint16_t>(to + 2 * i, static_cast<uint16_t>(from[i] << 6));
}

void splitPairs(const uint8_t* from, uint16_t* __restrict u, uint16_t* __restrict v, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const auto pair = read<uint16_t>(from + 2 * i);
        u[i] = pair & 255;
        v[i] = pair >> 8;
    }
}

void joinPairs(const uint16_t* u, const uint16_t* v, uint8_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) write<uint16_t>(to + 2 * i, static_cast<uint16_t>(u[i] | v[i] << 8));
}

void splitTenPairs(const uint8_t* from, uint16_t* __restrict u, uint16_t* __restrict v, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const auto pair = read<uint32_t>(from + 4 * i);
        u[i] = static_cast<uint16_t>((pair & 0xFFFF) >> 6);
        v[i] = static_cast<uint16_t>(pair >> 22);
    }
}

void joinTenPairs(const uint16_t* u, const uint16_t* v, uint8_t* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i) write<uint32_t>(to + 4 * i, uint32_t{u[i]} << 6 | uint32_t{v[i]} << 22);
}

// Six pixels of ten bits: 12 samples in the order u y v y, three to each 32 bits.
constexpr size_t kGroupPixels = 6, kGroupBytes = 16, kGroupSamples = 12;
constexpr size_t kMostSamples = kYuvStep / kGroupPixels * kGroupSamples;

constexpr size_t groups(size_t pixels) { return (pixels + kGroupPixels - 1) / kGroupPixels; }

void splitTens(const uint8_t* from, uint16_t* __restrict y, uint16_t* __restrict u, uint16_t* __restrict v,
               size_t samples) {
    uint16_t all[kMostSamples];
    for (size_t i = 0; i < samples / 3; ++i) {
        const auto word = read<uint32_t>(from + 4 * i);
        all[3 * i] = word & 1023;
        all[3 * i + 1] = word >> 10 & 1023;
        all[3 * i + 2] = word >> 20 & 1023;
    }
    for (size_t i = 0; i < samples / 4; ++i) {
        u[i] = all[4 * i], y[2 * i] = all[4 * i + 1];
        v[i] = all[4 * i + 2], y[2 * i + 1] = all[4 * i + 3];
    }
}

void joinTens(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* __restrict to, size_t samples) {
    uint16_t all[kMostSamples];
    for (size_t i = 0; i < samples / 4; ++i) {
        all[4 * i] = u[i], all[4 * i + 1] = y[2 * i];
        all[4 * i + 2] = v[i], all[4 * i + 3] = y[2 * i + 1];
    }
    for (size_t i = 0; i < samples / 3; ++i)
        write<uint32_t>(to + 4 * i,
                        uint32_t{all[3 * i]} | uint32_t{all[3 * i + 1]} << 10 | uint32_t{all[3 * i + 2]} << 20);
}

} // namespace

void unpackPlanar(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    widen(planes[0], y, pixels);
    widen(planes[1], u, pairs(pixels));
    widen(planes[2], v, pairs(pixels));
}

void packPlanar(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    narrow(y, planes[0], pixels);
    if (u == nullptr) return;
    narrow(u, planes[1], pairs(pixels));
    narrow(v, planes[2], pairs(pixels));
}

void unpackPairs(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    widen(planes[0], y, pixels);
    splitPairs(planes[1], u, v, pairs(pixels));
}

void packPairs(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    narrow(y, planes[0], pixels);
    if (u != nullptr) joinPairs(u, v, planes[1], pairs(pixels));
}

void unpackLumaFirst(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    splitPacked<0, 8>(planes[0], y, u, v, pairs(pixels));
}

void packLumaFirst(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    joinPacked<0, 8>(y, u, v, planes[0], pairs(pixels));
}

void unpackChromaFirst(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    splitPacked<8, 0>(planes[0], y, u, v, pairs(pixels));
}

void packChromaFirst(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    joinPacked<8, 0>(y, u, v, planes[0], pairs(pixels));
}

void unpackWords(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    widenTens(planes[0], y, pixels);
    splitTenPairs(planes[1], u, v, pairs(pixels));
}

void packWords(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    narrowTens(y, planes[0], pixels);
    if (u != nullptr) joinTenPairs(u, v, planes[1], pairs(pixels));
}

void unpackFullWords(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    widenTens(planes[0], y, pixels);
    splitTenPairs(planes[1], u, v, pixels);
}

void packFullWords(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    narrowTens(y, planes[0], pixels);
    if (u != nullptr) joinTenPairs(u, v, planes[1], pixels);
}

void unpackTens(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    for (size_t x = 0; x < pixels; x += kYuvStep) {
        const size_t count = pixels - x < kYuvStep ? pixels - x : kYuvStep;
        splitTens(planes[0] + x / kGroupPixels * kGroupBytes, y + x, u + x / 2, v + x / 2,
                  groups(count) * kGroupSamples);
    }
}

void packTens(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    for (size_t x = 0; x < pixels; x += kYuvStep) {
        const size_t count = pixels - x < kYuvStep ? pixels - x : kYuvStep;
        joinTens(y + x, u + x / 2, v + x / 2, planes[0] + x / kGroupPixels * kGroupBytes,
                 groups(count) * kGroupSamples);
    }
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(unpackPlanar);
SIMD_FUNCTION(packPlanar);
SIMD_FUNCTION(unpackPairs);
SIMD_FUNCTION(packPairs);
SIMD_FUNCTION(unpackLumaFirst);
SIMD_FUNCTION(packLumaFirst);
SIMD_FUNCTION(unpackChromaFirst);
SIMD_FUNCTION(packChromaFirst);
SIMD_FUNCTION(unpackWords);
SIMD_FUNCTION(packWords);
SIMD_FUNCTION(unpackFullWords);
SIMD_FUNCTION(packFullWords);
SIMD_FUNCTION(unpackTens);
SIMD_FUNCTION(packTens);

} // namespace pixelops
