// The rows of the clock wipe.
#include "effects/clockwipe/hand.h"
#include "pixelops/wipe.h"

namespace clockwipe {
namespace SIMD_LEVEL {
namespace {

using lanes::Lanes;

// Which pixels the hand has passed, without their angles. Those that lie too close to a ray to be sure are in neither.
struct Side {
    Lanes::Truth before, after;
};

Side sideOf(const Ray& ray, Lanes u, Lanes v) {
    constexpr float kSure = 0.02f; // pixels; more than the angles' rounding amounts to in any picture
    const Lanes across = u * ray.cosine - v * ray.sine;
    const auto right = u > kSure, left = u < -kSure, short_of = across<-kSure, past = across> kSure;
    if (ray.angle <= 0) return {u < u, u <= u};
    if (ray.angle >= 6.2831855f) return {u <= u, u < u};
    if (ray.angle <= 3.1415927f) return {right && short_of, left || past};
    return {right || short_of, left && past};
}

// The feather's angle at a pixel, never narrower than about a pixel and a half of arc.
Lanes featherAt(const Hand& hand, Lanes u, Lanes v) {
    const Lanes feather = hand.feather;
    const Lanes sine = 1.4142135f / max(sqrt(u * u + v * v), Lanes(2.0f));
    if (!any(sine > hand.featherSine)) return feather;
    return max(lanes::atanOfUnit(sine / sqrt((1.0f - sine) * (1.0f + sine))), feather);
}

lanes::Mask maskAt(const Hand& hand, Lanes u, Lanes v) {
    const Side edge = sideOf(hand.hand, u, v), wake = sideOf(hand.wake, u, v);
    // Far from the hand's own line, the feather near the centre is no matter.
    const auto passed = wake.before && abs(u * hand.hand.cosine - v * hand.hand.sine) > Lanes(2.0f);
    if (all(edge.after) || all(passed)) return {edge.after, passed, u};

    const Lanes theta = lanes::angle(u, v), feather = featherAt(hand, u, v);
    const Lanes start = min(Lanes(hand.feather + 6.2831855f), hand.hand.angle - feather);
    return {theta >= hand.hand.angle, theta <= start, lanes::smoothstep(1.0f - (theta - start) / feather)};
}

template <class T, class Mix>
void wipe(const Hand& hand, const Row& row, const T* from, const T* to, T* wiped, std::size_t pixels, const Mix& mix) {
    const Lanes v = row.v;
    lanes::wipeRow(
        from, to, wiped, pixels, [&](Lanes x) { return maskAt(hand, (x + row.column) * row.stepX, v); }, mix);
}

} // namespace

void wipeByteRow(const Hand& hand, const Row& row, const std::uint8_t* from, const std::uint8_t* to,
                 std::uint8_t* wiped, std::size_t pixels) {
    wipe(hand, row, from, to, wiped, pixels, [](Lanes f, Lanes t, Lanes weight) {
        return f + trunc((t - f) * trunc(weight * 255.0f + 0.5f) * (1 / 256.0f));
    });
}

void wipeFloatRow(const Hand& hand, const Row& row, const float* from, const float* to, float* wiped,
                  std::size_t pixels) {
    wipe(hand, row, from, to, wiped, pixels, [](Lanes f, Lanes t, Lanes weight) { return (t - f) * weight + f; });
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(wipeByteRow);
SIMD_FUNCTION(wipeFloatRow);

} // namespace clockwipe
