// The coefficients of the Gaussian blur, and its pieces.
#include "pixelops/blur.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace pixelops {
namespace {

// Room for two bundles.
class Bundles {
public:
    explicit Bundles(std::size_t length)
        : length_(length), data_(new (std::align_val_t(64)) float[2 * length * kBundle]) {}
    ~Bundles() { ::operator delete[](data_, std::align_val_t(64)); }
    Bundles(const Bundles&) = delete;
    Bundles& operator=(const Bundles&) = delete;

    float* lines() const { return data_; }
    float* room() const { return data_ + length_ * kBundle; }

private:
    std::size_t length_;
    float* data_;
};

// A damped oscillation, exp(-decay x / sigma) (a cos(w x / sigma) + b sin(w x / sigma)); two of them make the Gaussian.
struct Oscillation {
    double a, b, decay, w;
};
constexpr Oscillation kOscillations[2] = {{1.68, 3.735, 1.783, 0.6318}, {-0.6803, -0.2598, 1.723, 1.997}};

// Coefficients in double precision; the last two are the sums that a constant needs.
struct ExactSection {
    ExactSection(const Oscillation& o, double sigma) {
        const double e = std::exp(-o.decay / sigma), angle = o.w / sigma;
        n0 = o.a;
        n1 = e * (o.b * std::sin(angle) - o.a * std::cos(angle));
        d1 = -2 * e * std::cos(angle);
        d2 = e * e;
        m1 = n1 - d1 * n0;
        m2 = -d2 * n0;
        forward = (n0 + n1) / (1 + d1 + d2);
        backward = (m1 + m2) / (1 + d1 + d2);
    }
    double n0, n1, m1, m2, d1, d2, forward, backward;
};

// What a line of ones inside the edges must be multiplied with to stay a line of ones.
std::vector<float> scalesOf(const Gaussian& gaussian, std::size_t length) {
    if (gaussian.edge == Edge::Repeat || gaussian.taps == 0) return {};
    const Bundles bundles(length);
    std::fill_n(bundles.lines(), length * kBundle, 1.0f);
    blurBundle(gaussian, nullptr, bundles.lines(), bundles.room(), length);
    std::vector<float> scales(length);
    for (std::size_t i = 0; i < length; ++i) scales[i] = 1 / bundles.lines()[i * kBundle];
    return scales;
}

} // namespace

double sigmaAtRadius(double radius) { return radius / std::sqrt(2 * std::log(255.0)); }

Gaussian::Gaussian(double sigma, Edge beyond) : edge(beyond) {
    if (!(sigma >= 0.15)) return; // the neighbours would get less than a part in 10^9
    if (sigma < 2) {
        taps = static_cast<int>(std::ceil(sigma * std::sqrt(2 * std::log(255.0))));
        const auto height = [sigma](int k) { return std::exp(-k * k / (2 * sigma * sigma)); };
        double sum = 1;
        for (int k = 1; k <= taps; ++k) sum += 2 * height(k);
        for (int k = 0; k <= taps; ++k) weights[k] = static_cast<float>(height(k) / sum);
        return;
    }
    taps = -1;
    const ExactSection exact[2] = {{kOscillations[0], sigma}, {kOscillations[1], sigma}};
    const double gain = exact[0].forward + exact[0].backward + exact[1].forward + exact[1].backward;
    for (std::size_t i = 0; i < 2; ++i) {
        const ExactSection& s = exact[i];
        const auto part = [gain](double x) { return static_cast<float>(x / gain); };
        sections[i] = {part(s.n0),
                       part(s.n1),
                       part(s.m1),
                       part(s.m2),
                       static_cast<float>(s.d1),
                       static_cast<float>(s.d2),
                       part(s.forward),
                       part(s.backward)};
    }
}

GaussianBlur::GaussianBlur(const Plane& plane, double sigmaX, double sigmaY, Edge edge)
    : plane_(plane),
      x_(sigmaX, edge),
      y_(sigmaY, edge),
      scalesX_(scalesOf(x_, plane.width)),
      scalesY_(scalesOf(y_, plane.height)) {}

std::size_t GaussianBlur::columnPieces() const { return y_.taps == 0 ? 0 : (plane_.stride() + kBundle - 1) / kBundle; }

std::size_t GaussianBlur::rowPieces() const {
    return x_.taps == 0 ? 0 : (plane_.height + rowsOfPiece() - 1) / rowsOfPiece();
}

void GaussianBlur::blurColumns(std::size_t firstPiece, std::size_t lastPiece) const {
    const Bundles bundles(plane_.height);
    for (std::size_t piece = firstPiece; piece < lastPiece; ++piece) {
        const std::size_t left = piece * kBundle, width = std::min(kBundle, plane_.stride() - left);
        for (std::size_t y = 0; y < plane_.height; ++y)
            std::copy_n(plane_.row(y) + left, width, bundles.lines() + y * kBundle);
        blurBundle(y_, scalesY_.empty() ? nullptr : scalesY_.data(), bundles.lines(), bundles.room(), plane_.height);
        for (std::size_t y = 0; y < plane_.height; ++y)
            std::copy_n(bundles.lines() + y * kBundle, width, plane_.row(y) + left);
    }
}

void GaussianBlur::blurRows(std::size_t firstPiece, std::size_t lastPiece) const {
    const Bundles bundles(plane_.width);
    for (std::size_t piece = firstPiece; piece < lastPiece; ++piece) {
        bundleRows(plane_, piece * rowsOfPiece(), bundles.lines());
        blurBundle(x_, scalesX_.empty() ? nullptr : scalesX_.data(), bundles.lines(), bundles.room(), plane_.width);
        unbundleRows(plane_, piece * rowsOfPiece(), bundles.lines());
    }
}

} // namespace pixelops
