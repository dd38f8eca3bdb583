// Packed colours of user interfaces, in integers on a scale of 0..240.
#include <algorithm>
#include <cstdint>

#include "pixelops/kr_pixelops.h"

namespace {

constexpr std::uint32_t byteOf(std::uint32_t packed, int index) { return packed >> (8 * index) & 255; }

constexpr std::uint32_t packed(std::uint32_t first, std::uint32_t second, std::uint32_t third) {
    return (first & 255) | (second & 255) << 8 | (third & 255) << 16;
}

// One colour channel at its hue. A hue below 0 has wrapped around and is beyond every limit; the slope down ends in a
// step. Both are part of the conversion.
constexpr std::uint32_t channel(std::uint32_t m1, std::uint32_t m2, std::uint32_t hue) {
    if (hue >= 240) hue -= 240;
    const std::uint32_t level = hue < 40    ? m1 + ((m2 - m1) * hue + 20) / 40
                                : hue < 120 ? m2
                                : hue < 160 ? m1 + ((m2 - m1) * 160 - hue + 20) / 40
                                            : m1;
    return (level * 255 + 120) / 240;
}

} // namespace

std::uint32_t KrRGBtoHSL(std::uint32_t rgb) {
    const int r = static_cast<int>(byteOf(rgb, 0)), g = static_cast<int>(byteOf(rgb, 1));
    const int b = static_cast<int>(byteOf(rgb, 2));
    const int most = std::max({r, g, b}), least = std::min({r, g, b}), sum = most + least, d = most - least;
    const int l = (sum * 240 + 256) >> 9; // of 512 on purpose: white stays below 240
    if (d == 0) return packed(160, 0, static_cast<std::uint32_t>(l));

    const int whole = l < 121 ? sum : 512 - sum;
    const int s = (d * 240 + whole / 2) / whole;
    const auto distance = [&](int component) { return ((most - component) * 40 + d / 2) / d; };
    int h = most == r   ? distance(b) - distance(g)
            : most == g ? 80 + distance(r) - distance(b)
                        : 160 + distance(g) - distance(r);
    if (h < 0) h += 240;
    if (h > 240) h -= 240;
    return packed(static_cast<std::uint32_t>(h), static_cast<std::uint32_t>(s), static_cast<std::uint32_t>(l));
}

std::uint32_t KrHSLtoRGB(std::uint32_t hsl) {
    const std::uint32_t h = byteOf(hsl, 0), s = byteOf(hsl, 1), l = byteOf(hsl, 2);
    if (s == 0) return packed(l * 255 / 240, l * 255 / 240, l * 255 / 240);
    const std::uint32_t m2 = l <= 120 ? (l * (240 + s) + 120) / 240 : l + s - (l * s + 120) / 240;
    const std::uint32_t m1 = 2 * l - m2;
    return packed(channel(m1, m2, h + 80), channel(m1, m2, h), channel(m1, m2, h - 80));
}
