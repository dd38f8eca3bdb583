// The rows of the clock wipe.
#include "effects/clockwipe/hand.h"
#include "pixelops/wipe.h"

namespace clockwipe {
namespace SIMD_LEVEL {
namespace {

using lanes::Lanes, lanes::size;

// The feather's angle at a pixel, never narrower than about a pixel and a half of arc.
Lanes featherAt(const Hand& hand, Lanes u, Lanes v) {
    const Lanes feather = hand.feather, squared = u * u + v * v;
    if (!any(squared < hand.nearSquared)) return feather;
    const Lanes sine = 1.4142135f / max(sqrt(squared), Lanes(2.0f));
    return max(lanes::atanOfUnit(sine / sqrt((1.0f - sine) * (1.0f + sine))), feather);
}

float least(float a, float b) { return a < b ? a : b; }

// A point and a ray: on which side of the ray's line, and how far from it.
float across(const Ray& ray, float u, float v) { return u * ray.cosine - v * ray.sine; }

// Whether the ray has passed a point that is not on it.
bool passed(const Ray& ray, float u, float v) {
    if (ray.angle <= 0 || ray.angle >= 6.2831855f) return ray.angle > 0;
    const bool before = across(ray, u, v) < 0;
    return ray.angle <= 3.1415927f ? u > 0 && before : u > 0 || before;
}

class Mask {
public:
    Mask(const Hand& hand, const Row& row) : hand_(hand), row_(row) {}

    lanes::Mask at(Lanes x) const {
        const Lanes u = (x + row_.column) * row_.stepX, v = row_.v;
        const Lanes theta = lanes::angle(u, v), feather = featherAt(hand_, u, v);
        const Lanes start = min(Lanes(hand_.feather + 6.2831855f), hand_.hand.angle - feather);
        return {theta >= hand_.hand.angle, theta <= start, lanes::smoothstep(1.0f - (theta - start) / feather)};
    }

    // Nothing changes but on the two rays, near the hand's where the feather is wider, and at 12 o'clock: as far as the
    // nearest of their lines.
    lanes::Run run(float x) const {
        const float u = (x + row_.column) * row_.stepX, v = row_.v;
        const bool from = !passed(hand_.hand, u, v);
        if (!from && !passed(hand_.wake, u, v)) return {0, false};
        const float hand = size(across(hand_.hand, u, v)) - 2, wake = size(across(hand_.wake, u, v));
        return {(least(least(hand, wake), size(u)) - 0.05f) / size(row_.stepX), from};
    }

private:
    const Hand hand_;
    const Row row_;
};

template <class T, class Mix>
void wipe(const Hand& hand, const Row& row, const T* from, const T* to, T* wiped, std::size_t pixels, const Mix& mix) {
    lanes::wipeRow(from, to, wiped, pixels, Mask(hand, row), mix);
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
