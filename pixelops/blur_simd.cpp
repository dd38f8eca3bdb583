// The Gaussian blur of a bundle of lines, and rows turned into bundles.
#include "pixelops/blur.h"

#include "pixelops/lanes.h"

namespace pixelops {
namespace SIMD_LEVEL {
namespace {

constexpr std::size_t kLanes = Lanes::kCount;
constexpr std::size_t kSide = 2; // vectors that are worked on at once, so that one need not wait for its own results

using Vectors = Lanes[kSide];

inline Lanes at(const float* from, std::size_t i) { return hn::Load(Lanes::Tag(), from + i * kLanes); }
inline void put(Lanes v, float* to, std::size_t i) { hn::Store(v.v, Lanes::Tag(), to + i * kLanes); }

// What a section last put out: y[n-1] and y[n-2], or y[n+1] and y[n+2].
struct State {
    Lanes last, before;
};

// y[n] = p x + q x' - d1 y' - d2 y''.
inline Lanes advance(State& s, Lanes p, Lanes x, Lanes q, Lanes other, Lanes d1, Lanes d2) {
    const Lanes y = p * x + q * other - d2 * s.before - d1 * s.last;
    s = {y, s.last};
    return y;
}

template <bool kScaled>
void recur(const Gaussian& g, const float* scales, float* lines, float* room, std::size_t length) {
    const Gaussian::Section(&s)[2] = g.sections;
    const Lanes zero = 0.0f, beyond = g.edge == Edge::Repeat ? 1.0f : 0.0f;
    State one[kSide] = {{zero, zero}, {zero, zero}}, two[kSide] = {{zero, zero}, {zero, zero}};
    Vectors x = {zero, zero}, x2 = {zero, zero}; // the neighbour's, and the one beyond
    for (std::size_t i = 0; i < kSide; ++i) {
        x[i] = at(lines, i) * beyond;
        one[i].last = one[i].before = x[i] * s[0].forwardStart;
        two[i].last = two[i].before = x[i] * s[1].forwardStart;
    }
    for (std::size_t n = 0; n < length; ++n, lines += kBundle, room += kBundle) {
        for (std::size_t i = 0; i < kSide; ++i) {
            const Lanes now = at(lines, i);
            const Lanes y = advance(one[i], s[0].n0, now, s[0].n1, x[i], s[0].d1, s[0].d2);
            put(y + advance(two[i], s[1].n0, now, s[1].n1, x[i], s[1].d1, s[1].d2), room, i);
            x[i] = now;
        }
    }
    for (std::size_t i = 0; i < kSide; ++i) {
        x[i] = x2[i] = x[i] * beyond;
        one[i].last = one[i].before = x[i] * s[0].backwardStart;
        two[i].last = two[i].before = x[i] * s[1].backwardStart;
    }
    for (std::size_t n = 0; n < length; ++n) {
        lines -= kBundle, room -= kBundle;
        for (std::size_t i = 0; i < kSide; ++i) {
            const Lanes now = at(lines, i);
            const Lanes y = advance(one[i], s[0].m1, x[i], s[0].m2, x2[i], s[0].d1, s[0].d2);
            Lanes sum = at(room, i) + (y + advance(two[i], s[1].m1, x[i], s[1].m2, x2[i], s[1].d1, s[1].d2));
            if constexpr (kScaled) sum = sum * scales[length - 1 - n];
            put(sum, lines, i);
            x2[i] = x[i], x[i] = now;
        }
    }
}

// The weighted sum of neighbours, out of one bundle into another.
void average(const Gaussian& g, const float* scales, const float* lines, float* room, std::size_t length) {
    const auto taps = static_cast<std::size_t>(g.taps);
    const bool inside = g.edge == Edge::Inside;
    for (std::size_t n = 0; n < length; ++n) {
        for (std::size_t i = 0; i < kBundle / kLanes; ++i) {
            Lanes sum = at(lines + n * kBundle, i) * g.weights[0];
            for (std::size_t k = 1; k <= taps; ++k) {
                const bool first = n < k, last = n + k >= length;
                const Lanes before = first && inside ? Lanes(0.0f) : at(lines + (first ? 0 : n - k) * kBundle, i);
                const Lanes after = last && inside ? Lanes(0.0f) : at(lines + (last ? length - 1 : n + k) * kBundle, i);
                sum = sum + (before + after) * g.weights[k];
            }
            put(scales != nullptr ? sum * scales[n] : sum, room + n * kBundle, i);
        }
    }
}

// Four floats at a time: a pixel of four components, or four of one.
using Quad = hn::FixedTag<float, 4>;
using Quads = hn::Vec<Quad>[4];

// Four rows of four become four columns.
inline void turn(Quads& q) {
    const Quad d;
    const hn::RepartitionToWide<Quad> pair;
    const auto low = [&](auto a, auto b) { return hn::BitCast(pair, hn::InterleaveLower(d, a, b)); };
    const auto high = [&](auto a, auto b) { return hn::BitCast(pair, hn::InterleaveUpper(d, a, b)); };
    const auto l01 = low(q[0], q[1]), l23 = low(q[2], q[3]), h01 = high(q[0], q[1]), h23 = high(q[2], q[3]);
    q[0] = hn::BitCast(d, hn::InterleaveLower(pair, l01, l23));
    q[1] = hn::BitCast(d, hn::InterleaveUpper(pair, l01, l23));
    q[2] = hn::BitCast(d, hn::InterleaveLower(pair, h01, h23));
    q[3] = hn::BitCast(d, hn::InterleaveUpper(pair, h01, h23));
}

} // namespace

void blurBundle(const Gaussian& g, const float* scales, float* lines, float* room, std::size_t length) {
    if (g.taps < 0) {
        for (std::size_t k = 0; k < kBundle; k += kSide * kLanes)
            (scales != nullptr ? recur<true> : recur<false>)(g, scales, lines + k, room + k, length);
    } else {
        average(g, scales, lines, room, length);
        std::memcpy(lines, room, length * kBundle * sizeof(float));
    }
}

// Rows that the plane has no more are the last one again.
void bundleRows(const Plane& plane, std::size_t first, float* bundle) {
    const Quad d;
    const auto rowAt = [&](std::size_t i) {
        return plane.row(first + i < plane.height ? first + i : plane.height - 1);
    };
    if (plane.components == 4) {
        const float* rows[kBundle / 4];
        for (std::size_t i = 0; i < kBundle / 4; ++i) rows[i] = rowAt(i);
        for (std::size_t x = 0; x < plane.width; ++x) {
            for (std::size_t i = 0; i < kBundle / 4; ++i)
                hn::Store(hn::Load(d, rows[i] + 4 * x), d, bundle + x * kBundle + 4 * i);
        }
        return;
    }
    for (std::size_t i = 0; i < kBundle; i += 4) {
        const float* const rows[4] = {rowAt(i), rowAt(i + 1), rowAt(i + 2), rowAt(i + 3)};
        for (std::size_t x = 0; x < plane.width; x += 4) {
            Quads q = {hn::Load(d, rows[0] + x), hn::Load(d, rows[1] + x), hn::Load(d, rows[2] + x),
                       hn::Load(d, rows[3] + x)};
            turn(q);
            for (std::size_t k = 0; k < 4 && x + k < plane.width; ++k)
                hn::Store(q[k], d, bundle + (x + k) * kBundle + i);
        }
    }
}

void unbundleRows(const Plane& plane, std::size_t first, const float* bundle) {
    const Quad d;
    if (plane.components == 4) {
        const std::size_t rows = plane.height - first < kBundle / 4 ? plane.height - first : kBundle / 4;
        for (std::size_t x = 0; x < plane.width; ++x) {
            for (std::size_t i = 0; i < rows; ++i)
                hn::Store(hn::Load(d, bundle + x * kBundle + 4 * i), d, plane.row(first + i) + 4 * x);
        }
        return;
    }
    for (std::size_t i = 0; i < kBundle && first + i < plane.height; i += 4) {
        for (std::size_t x = 0; x < plane.width; x += 4) {
            Quads q;
            for (std::size_t k = 0; k < 4; ++k)
                q[k] = hn::Load(d, bundle + (x + k < plane.width ? x + k : plane.width - 1) * kBundle + i);
            turn(q);
            for (std::size_t k = 0; k < 4 && first + i + k < plane.height; ++k)
                hn::Store(q[k], d, plane.row(first + i + k) + x);
        }
    }
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(blurBundle);
SIMD_FUNCTION(bundleRows);
SIMD_FUNCTION(unbundleRows);

} // namespace pixelops
