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

void widen(const uint8_t* from, uint16_t* to, size_t count) {
    for (size_t i = 0; i < count; ++i) to[i] = from[i];
}

void narrow(const uint16_t* from, uint8_t* to, size_t count) {
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
void joinPacked(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* to, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t luma = uint32_t{y[2 * i]} | uint32_t{y[2 * i + 1]} << 16;
        const uint32_t chroma = uint32_t{u[i]} | uint32_t{v[i]} << 16;
        write<uint32_t>(to + 4 * i, luma << yShift | chroma << uShift);
    }
}

void unpackWordPairs(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels,
                     size_t samples) {
    for (size_t i = 0; i < pixels; ++i) y[i] = read<uint16_t>(planes[0] + 2 * i) >> 6;
    for (size_t i = 0; i < samples; ++i) {
        const auto pair = read<uint32_t>(planes[1] + 4 * i);
        u[i] = static_cast<uint16_t>((pair & 0xFFFF) >> 6);
        v[i] = static_cast<uint16_t>(pair >> 22);
    }
}

void packWordPairs(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels,
                   size_t samples) {
    for (size_t i = 0; i < pixels; ++i) write<uint16_t>(planes[0] + 2 * i, static_cast<uint16_t>(y[i] << 6));
    if (u == nullptr) return;
    for (size_t i = 0; i < samples; ++i) write<uint32_t>(planes[1] + 4 * i, uint32_t{u[i]} << 6 | uint32_t{v[i]} << 22);
}

// Three samples of ten bits, from bit 0 up.
struct Three {
    uint16_t a, b, c;
};

Three tens(const uint8_t* from) {
    const auto word = read<uint32_t>(from);
    return {static_cast<uint16_t>(word & 1023), static_cast<uint16_t>(word >> 10 & 1023),
            static_cast<uint16_t>(word >> 20 & 1023)};
}

uint32_t tens(uint32_t a, uint32_t b, uint32_t c) { return a | b << 10 | c << 20; }

// The group of six pixels at a place; y has six samples, u and v three each.
void readGroup(const uint8_t* from, uint16_t* y, uint16_t* u, uint16_t* v) {
    const Three first = tens(from), second = tens(from + 4), third = tens(from + 8), fourth = tens(from + 12);
    u[0] = first.a, y[0] = first.b, v[0] = first.c;
    y[1] = second.a, u[1] = second.b, y[2] = second.c;
    v[1] = third.a, y[3] = third.b, u[2] = third.c;
    y[4] = fourth.a, v[2] = fourth.b, y[5] = fourth.c;
}

void writeGroup(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* to) {
    write<uint32_t>(to, tens(u[0], y[0], v[0]));
    write<uint32_t>(to + 4, tens(y[1], u[1], y[2]));
    write<uint32_t>(to + 8, tens(v[1], y[3], u[2]));
    write<uint32_t>(to + 12, tens(y[4], v[2], y[5]));
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
    for (size_t i = 0; i < pairs(pixels); ++i) {
        const auto pair = read<uint16_t>(planes[1] + 2 * i);
        u[i] = pair & 255;
        v[i] = pair >> 8;
    }
}

void packPairs(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    narrow(y, planes[0], pixels);
    if (u == nullptr) return;
    for (size_t i = 0; i < pairs(pixels); ++i)
        write<uint16_t>(planes[1] + 2 * i, static_cast<uint16_t>(u[i] | v[i] << 8));
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
    unpackWordPairs(planes, y, u, v, pixels, pairs(pixels));
}

void packWords(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    packWordPairs(y, u, v, planes, pixels, pairs(pixels));
}

void unpackFullWords(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    unpackWordPairs(planes, y, u, v, pixels, pixels);
}

void packFullWords(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    packWordPairs(y, u, v, planes, pixels, pixels);
}

void unpackTens(const uint8_t* const* planes, uint16_t* y, uint16_t* u, uint16_t* v, size_t pixels) {
    for (size_t i = 0; i < pixels; i += 6) readGroup(planes[0] + i / 6 * 16, y + i, u + i / 2, v + i / 2);
}

void packTens(const uint16_t* y, const uint16_t* u, const uint16_t* v, uint8_t* const* planes, size_t pixels) {
    for (size_t i = 0; i < pixels; i += 6) writeGroup(y + i, u + i / 2, v + i / 2, planes[0] + i / 6 * 16);
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
