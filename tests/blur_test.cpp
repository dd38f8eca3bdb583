// The Gaussian blur of the pixel library, on planes of one and of four components, against the weighted sum that it
// stands for.
#include "pixelops/blur.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "tests/support.h"

namespace {

using pixelops::Edge, pixelops::GaussianBlur, pixelops::Plane;

struct Aligned {
    explicit Aligned(std::size_t size) : data(new (std::align_val_t(64)) float[size]()) {}
    ~Aligned() { ::operator delete[](data, std::align_val_t(64)); }
    float* data;
};

// One line.
std::vector<double> blurred(const std::vector<double>& from, double sigma, Edge edge) {
    const int reach = static_cast<int>(std::ceil(5 * sigma)), last = static_cast<int>(from.size()) - 1;
    std::vector<double> to(from.size());
    for (int x = 0; x <= last; ++x) {
        double sum = 0, weights = 0;
        for (int k = -reach; k <= reach; ++k) {
            if (edge == Edge::Inside && (x + k < 0 || x + k > last)) continue;
            const double w = std::exp(-k * k / (2 * sigma * sigma));
            sum += w * from[static_cast<std::size_t>(std::min(std::max(x + k, 0), last))];
            weights += w;
        }
        to[static_cast<std::size_t>(x)] = sum / weights;
    }
    return to;
}

void blur(const Plane& plane, double sigmaX, double sigmaY, std::size_t parts, Edge edge = Edge::Repeat) {
    const GaussianBlur work(plane, sigmaX, sigmaY, edge);
    for (std::size_t i = 0; i < parts; ++i)
        work.blurColumns(work.columnPieces() * i / parts, work.columnPieces() * (i + 1) / parts);
    for (std::size_t i = 0; i < parts; ++i)
        work.blurRows(work.rowPieces() * i / parts, work.rowPieces() * (i + 1) / parts);
}

TEST(GaussianBlur, IsTheWeightedSumAlongEachAxis) {
    test::Random random(5);
    for (const std::size_t components : {1u, 4u})
        for (const auto& [width, height] : {std::pair{1u, 1u}, std::pair{70u, 33u}, std::pair{5u, 200u}})
            for (const double sigma : {0.1, 0.4, 1.0, 1.99, 2.0, 7.3, 90.0})
                for (const auto& [columns, edge] : {std::pair{false, Edge::Repeat}, std::pair{true, Edge::Repeat},
                                                    std::pair{false, Edge::Inside}, std::pair{true, Edge::Inside}}) {
                    Plane plane{width, height, components, nullptr};
                    const Aligned memory(plane.size());
                    plane.data = memory.data;
                    // Half noise and half a step, where the fast form errs most.
                    for (std::size_t y = 0; y < height; ++y)
                        for (std::size_t i = 0; i < width * components; ++i)
                            plane.row(y)[i] =
                                static_cast<float>(random.real(0, 0.5) + (y + i / components > width / 2) * 0.5);
                    const std::vector<float> before(plane.data, plane.data + plane.size());
                    blur(plane, columns ? 0 : sigma, columns ? sigma : 0, 1, edge);

                    const std::size_t lines = columns ? width : height, length = columns ? height : width;
                    double worst = 0;
                    for (std::size_t line = 0; line < lines; ++line)
                        for (std::size_t c = 0; c < components; ++c) {
                            const auto at = [&, down = columns](std::size_t i) {
                                const std::size_t x = down ? line : i, y = down ? i : line;
                                return y * plane.stride() + x * components + c;
                            };
                            std::vector<double> values(length);
                            for (std::size_t i = 0; i < length; ++i) values[i] = static_cast<double>(before[at(i)]);
                            if (sigma >= 0.15) values = blurred(values, sigma, edge);
                            for (std::size_t i = 0; i < length; ++i)
                                worst = std::max(worst, std::abs(values[i] - static_cast<double>(plane.data[at(i)])));
                        }
                    EXPECT_LE(worst, sigma < 0.15 ? 0 : 1e-3) << components << " components, sigma " << sigma;
                }
}

TEST(GaussianBlur, DoesNotDependOnItsPieces) {
    test::Random random(6);
    Plane plane{101, 97, 4, nullptr}, parted = plane;
    const Aligned memory(plane.size()), other(plane.size());
    plane.data = memory.data, parted.data = other.data;
    for (std::size_t i = 0; i < plane.size(); ++i)
        plane.data[i] = parted.data[i] = static_cast<float>(random.real(0, 1));
    blur(plane, 3, 1.5, 1);
    blur(parted, 3, 1.5, 5);
    for (std::size_t y = 0; y < plane.height; ++y)
        for (std::size_t i = 0; i < plane.width * 4; ++i) ASSERT_EQ(plane.row(y)[i], parted.row(y)[i]);
}

} // namespace
