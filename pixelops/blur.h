// Gaussian blur of planes of floats: separable, an amount of its own for each axis. Every radius takes the same time.
// Work is handed out in pieces that do not depend on each other, to run on any number of threads.
#pragma once

#include <cstddef>
#include <vector>

#include "pixelops/simd.h"

namespace pixelops {

// A picture of floats: rows from the first on, each a whole number of cache lines long.
struct Plane {
    // Interleaved components per pixel: 1 or 4.
    std::size_t width, height, components;
    float* data; // size() floats on a 64-byte boundary

    std::size_t stride() const { return (width * components + 15) / 16 * 16; }
    // Loops may read up to a vector beyond a row's end.
    std::size_t size() const { return stride() * height + 16; }
    float* row(std::size_t y) const { return data + y * stride(); }
};

// The standard deviation, in the radius's unit, of the Gaussian that has fallen to 1/255 at a radius.
double sigmaAtRadius(double radius);

// What lies beyond the edges: the edge's pixels again, or nothing, so that pixels near it are means of those inside.
enum class Edge { Repeat, Inside };

// One axis of the blur. Below a sigma of 2 pixels the sampled Gaussian itself, normalised, to where it has fallen to
// 1/255. Above, the fourth-order recursion of R. Deriche, "Recursively implementing the Gaussian and its derivatives"
// (1993), as the sum of two second-order sections, which single precision allows for sigmas of several hundred.
struct Gaussian {
    explicit Gaussian(double sigma, Edge edge = Edge::Repeat);

    static constexpr int kMostTaps = 7; // on each side

    // Forwards y[n] = n0 x[n] + n1 x[n-1] - d1 y[n-1] - d2 y[n-2], backwards m1 x[n+1] + m2 x[n+2] - d1 y[n+1] - d2
    // y[n+2]; each begins in the state that what lies beyond its edge would have brought it to.
    struct Section {
        float n0, n1, m1, m2, d1, d2, forwardStart, backwardStart;
    };

    Edge edge;
    int taps = 0; // 0 where nothing changes; -1 for the recursion
    float weights[kMostTaps + 1] = {};
    Section sections[2] = {};
};

// Lines are blurred in bundles of so many, side by side: component i of line k is at i kBundle + k.
inline constexpr std::size_t kBundle = 32;

// Blurs a bundle of lines of `length` components each, and multiplies the result at each place with a scale, null for
// none. The second bundle is room to work in.
extern const simd::Function<void(const Gaussian&, const float* scales, float* bundle, float* room, std::size_t length)>
    blurBundle;
// Rows of a plane as a bundle, and back: so many of its rows from the first one on as there are.
extern const simd::Function<void(const Plane&, std::size_t first, float* bundle)> bundleRows;
extern const simd::Function<void(const Plane&, std::size_t first, const float* bundle)> unbundleRows;

// The blur of one plane, in place: first all of the columns, then all of the rows.
class GaussianBlur {
public:
    // Throws std::bad_alloc.
    GaussianBlur(const Plane& plane, double sigmaX, double sigmaY, Edge edge = Edge::Repeat);

    // Pieces of each half; none where an axis is left alone.
    std::size_t columnPieces() const;
    std::size_t rowPieces() const;
    // Throw std::bad_alloc. Different pieces may be done at once.
    void blurColumns(std::size_t firstPiece, std::size_t lastPiece) const;
    void blurRows(std::size_t firstPiece, std::size_t lastPiece) const;

private:
    std::size_t rowsOfPiece() const { return kBundle / plane_.components; }

    Plane plane_;
    Gaussian x_, y_;
    std::vector<float> scalesX_, scalesY_; // empty where edges are repeated
};

} // namespace pixelops
