// The matte of single pixels, in double precision: the measure that the rows follow.
#include "effects/chromakeyer/key.h"

#include <algorithm>
#include <cmath>

#include "pixelops/hsl.h"

namespace chromakeyer {
namespace {

double distance(const Color& key, const pixelops::Rgb& c) {
    const pixelops::Hsl hsl = pixelops::toHsl(c);
    const double turn = std::abs(hsl.h - key.h), dh = turn > 0.5 ? 1 - turn : turn;
    const double dr = c.r - key.r, dg = c.g - key.g, db = c.b - key.b;
    const double rgb = std::sqrt(dr * dr + dg * dg + db * db);
    return (rgb * 1.7320508 + (2 * dh + std::abs(hsl.l - key.l) + std::abs(hsl.s - key.s)) / 3) * 0.5;
}

} // namespace

Color colorOf(double r, double g, double b) {
    const pixelops::Hsl hsl = pixelops::toHsl({r, g, b});
    return {r, g, b, hsl.h, hsl.s, hsl.l};
}

std::uint8_t matteOf(const Key& key, std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a) {
    const double straight = a == 0 ? 1 : 255.0 / a;
    const auto component = [straight](std::uint8_t c) { return c / 255.0 * straight; };
    const double d = distance(key.color, {component(r), component(g), component(b)});
    if (d < key.low) return 0;
    if (!(d <= key.high - 1e-6)) return 255;
    return static_cast<std::uint8_t>(std::clamp((d - key.low) * key.scale * 255, 0.0, 255.0));
}

} // namespace chromakeyer
