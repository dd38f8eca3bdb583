// The float row of levels.
#include "effects/levels/mapping.h"
#include "pixelops/lanes_math.h"

namespace levels {
namespace SIMD_LEVEL {
namespace {

using lanes::Lanes;

template <bool kCurved>
void mapRow(const FloatMapping& m, const float* from, float* to, std::size_t pixels) {
    const auto mapped = [m](Lanes x) {
        Lanes place = min(max((x - m.inputStart - m.inputStartRest) * m.perInput, 0.0f), 1.0f);
        if constexpr (kCurved) {
            const Lanes bent = lanes::pow((place + m.inner) * m.scale, m.exponent) * m.factor + m.outer;
            place = select(place < m.threshold, place * m.slope, bent);
        }
        return place * m.outputRange + m.outputStart;
    };
    const bool all = m.channel == All || m.channel == Alpha;
    const bool r = all || m.channel == Red, g = all || m.channel == Green, b = all || m.channel == Blue;
    lanes::mapPixels(from, to, pixels, [=](pixelops::Pixel<Lanes> p) {
        const Lanes alpha = p.a, zero = 0.0f;
        const auto there = alpha > zero;
        if (r) p.r = min(mapped(p.r), alpha);
        if (g) p.g = min(mapped(p.g), alpha);
        if (b) p.b = min(mapped(p.b), alpha);
        if (m.channel == Alpha) p.a = mapped(alpha);
        const auto kept = [&](Lanes c) { return select(there, c, zero); };
        return pixelops::Pixel<Lanes>{kept(p.r), kept(p.g), kept(p.b), kept(p.a)};
    });
}

} // namespace

void mapFloats(const FloatMapping& mapping, const float* from, float* to, std::size_t pixels) {
    (mapping.curved ? mapRow<true> : mapRow<false>)(mapping, from, to, pixels);
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(mapFloats);

} // namespace levels
