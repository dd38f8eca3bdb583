// YUV frames for the tests.
#include "tests/pixelops.h"

#include <algorithm>
#include <cmath>

namespace test {
namespace {

struct Matrix {
    double y[3], u[3], v[3], rv, gu, gv, bu;
};

const Matrix kMatrices[3] = {
    {{0.299, 0.587, 0.114}, {-0.1687, -0.3313, 0.5}, {0.5, -0.4187, -0.0813}, 1.402, -0.3441, -0.7141, 1.772},
    {{0.2126, 0.7152, 0.0722}, {-0.1146, -0.3854, 0.5}, {0.5, -0.4542, -0.0458}, 1.5748, -0.1873, -0.4681, 1.8556},
    {{0.2627, 0.678, 0.0593}, {-0.1396, -0.3604, 0.5}, {0.5, -0.4598, -0.0402}, 1.4746, -0.1646, -0.5714, 1.8814},
};

// Ranges as H.273 defines them.
double black(int matrix, int bits) { return matrix < 3 ? 0 : 16 << (bits - 8); }
double lumaRange(int matrix, int bits) { return matrix < 3 ? (1 << bits) - 1 : 219 << (bits - 8); }
double chromaRange(int matrix, int bits) { return matrix < 3 ? (1 << bits) - 1 : 224 << (bits - 8); }

int halfUp(int size) { return (size + 1) / 2; }

} // namespace

YuvFrame::YuvFrame(std::string format, int width, int height, bool fromBottom)
    : format_(std::move(format)), width_(width), height_(height) {
    const auto among = [&](const std::string& names) { return names.find(format_) != std::string::npos; };
    bits_ = among("P410 P010 P210 v210") ? 10 : 8;
    planes_ = among("YUYV UYVY v210") ? 1 : among("NV12 P410 P010 P210") ? 2 : 3;
    xHalf_ = among("P410") ? 0 : 1;
    yHalf_ = among("NV12 YV12 I420 P010") ? 1 : 0;
    for (int plane = 0; plane < planes_; ++plane) {
        const auto p = static_cast<std::size_t>(plane);
        const int pitch = rowBytes(plane) + 7;
        memory_[p].assign(static_cast<std::size_t>(pitch * planeRows(plane)) + 2 * kGap, kUntouched);
        pitches_[p] = fromBottom ? -pitch : pitch;
    }
}

int YuvFrame::rowBytes(int plane) const {
    if (format_ == "v210") return (width_ + 5) / 6 * 16;
    if (planes_ == 1) return halfUp(width_) * 4;
    const int samples = plane == 0 ? width_ : (xHalf_ ? halfUp(width_) : width_) * (planes_ == 2 ? 2 : 1);
    return samples * (bits_ == 10 ? 2 : 1);
}

int YuvFrame::planeRows(int plane) const { return plane > 0 && yHalf_ ? halfUp(height_) : height_; }

int YuvFrame::columns(int component) const {
    const int pixels = format_ == "v210" ? (width_ + 5) / 6 * 6 : planes_ == 1 ? halfUp(width_) * 2 : width_;
    return component > 0 && xHalf_ ? halfUp(pixels) : pixels;
}

int YuvFrame::rows(int component) const { return planeRows(component > 0 ? 1 : 0); }

YuvFrame::Place YuvFrame::place(int component, int column) const {
    if (format_ == "v210") {
        // u0 y0 v0, y1 u1 y2, v1 y3 u2, y4 v2 y5
        static constexpr int kOrder[3][6] = {{1, 3, 5, 7, 9, 11}, {0, 4, 8}, {2, 6, 10}};
        const int inGroup = component == 0 ? 6 : 3;
        const int k = kOrder[component][column % inGroup];
        return {0, column / inGroup * 16 + k / 3 * 4, k % 3 * 10, 4};
    }
    if (format_ == "YUYV") return {0, component == 0 ? 2 * column : 4 * column + (component == 1 ? 1 : 3), 0, 1};
    if (format_ == "UYVY") return {0, component == 0 ? 2 * column + 1 : 4 * column + (component == 1 ? 0 : 2), 0, 1};
    const int bytes = bits_ == 10 ? 2 : 1, shift = bits_ == 10 ? 6 : 0;
    if (component == 0) return {0, column * bytes, shift, bytes};
    if (planes_ == 2) return {1, (2 * column + component - 1) * bytes, shift, bytes};
    return {format_ == "I420" ? component : 3 - component, column, 0, 1};
}

std::size_t YuvFrame::at(const Place& place, int row) const {
    const int pitch = pitches_[static_cast<std::size_t>(place.plane)];
    const int line = pitch < 0 ? planeRows(place.plane) - 1 - row : row;
    return kGap + static_cast<std::size_t>(line * std::abs(pitch) + place.byte);
}

int YuvFrame::code(int component, int column, int row) const {
    const Place p = place(component, column);
    const std::byte* from = memory_[static_cast<std::size_t>(p.plane)].data() + at(p, row);
    std::uint32_t word = 0;
    for (int i = 0; i < p.bytes; ++i) word |= std::to_integer<std::uint32_t>(from[i]) << (8 * i);
    return static_cast<int>(word >> p.shift & ((1u << bits_) - 1));
}

void YuvFrame::setCode(int component, int column, int row, int code) {
    const Place p = place(component, column);
    std::byte* to = memory_[static_cast<std::size_t>(p.plane)].data() + at(p, row);
    for (int bit = 0; bit < bits_; ++bit) {
        const int place = p.shift + bit;
        const std::byte mask = std::byte{1} << place % 8;
        to[place / 8] = (code >> bit & 1) != 0 ? to[place / 8] | mask : to[place / 8] & ~mask;
    }
}

void YuvFrame::fill(Random& random) {
    const int most = (1 << bits_) - 1;
    for (int component = 0; component < 3; ++component)
        for (int row = 0; row < rows(component); ++row)
            for (int column = 0; column < columns(component); ++column)
                setCode(component, column, row, random.pick({0, most, most / 2 + 1, random.integer(0, most)}));
}

testing::AssertionResult YuvFrame::gapsUntouched() const {
    auto written = memory_;
    for (auto& plane : written) std::fill(plane.begin(), plane.end(), std::byte{0});
    for (int component = 0; component < 3; ++component)
        for (int row = 0; row < rows(component); ++row)
            for (int column = 0; column < columns(component); ++column) {
                const Place p = place(component, column);
                std::fill_n(written[static_cast<std::size_t>(p.plane)].begin() + static_cast<long>(at(p, row)), p.bytes,
                            std::byte{1});
            }
    for (std::size_t plane = 0; plane < 3; ++plane)
        for (std::size_t i = 0; i < memory_[plane].size(); ++i)
            if (written[plane][i] == std::byte{0} && memory_[plane][i] != kUntouched)
                return testing::AssertionFailure() << format_ << ": byte " << i << " of plane " << plane;
    return testing::AssertionSuccess();
}

std::array<double, 3> YuvFrame::rgb(int matrix, int x, int y) const {
    const Matrix& m = kMatrices[matrix % 3];
    const int column = xHalf_ ? x / 2 : x, row = yHalf_ ? y / 2 : y, middle = 1 << (bits_ - 1);
    const double luma = (code(0, x, y) - black(matrix, bits_)) / lumaRange(matrix, bits_);
    const double u = (code(1, column, row) - middle) / chromaRange(matrix, bits_);
    const double v = (code(2, column, row) - middle) / chromaRange(matrix, bits_);
    return {255 * (luma + m.bu * u), 255 * (luma + m.gu * u + m.gv * v), 255 * (luma + m.rv * v)};
}

double YuvFrame::expected(int component, int column, int row, int matrix, const std::vector<KRRGBA>& pixels) const {
    const Matrix& m = kMatrices[matrix % 3];
    const double* weights = component == 0 ? m.y : component == 1 ? m.u : m.v;
    const int across = component > 0 && xHalf_ ? 2 : 1, down = component > 0 && yHalf_ ? 2 : 1;
    double sum = 0;
    for (int j = 0; j < down; ++j)
        for (int i = 0; i < across; ++i) {
            const int x = std::min(column * across + i, width_ - 1), y = std::min(row * down + j, height_ - 1);
            const KRRGBA& p = pixels[static_cast<std::size_t>(y * width_ + x)];
            sum += (weights[0] * p.red + weights[1] * p.green + weights[2] * p.blue) / 255;
        }
    sum /= across * down;
    return component == 0 ? sum * lumaRange(matrix, bits_) + black(matrix, bits_)
                          : sum * chromaRange(matrix, bits_) + (1 << (bits_ - 1));
}

std::array<const void*, 3> YuvFrame::tops() const {
    std::array<const void*, 3> result{};
    for (std::size_t plane = 0; plane < 3; ++plane)
        if (!memory_[plane].empty()) result[plane] = memory_[plane].data() + at({static_cast<int>(plane), 0, 0, 1}, 0);
    return result;
}

std::array<void*, 3> YuvFrame::tops() {
    const auto tops = std::as_const(*this).tops();
    return {const_cast<void*>(tops[0]), const_cast<void*>(tops[1]), const_cast<void*>(tops[2])};
}

const std::byte* YuvFrame::bytes(int plane) const { return memory_[static_cast<std::size_t>(plane)].data() + kGap; }
std::byte* YuvFrame::bytes(int plane) { return memory_[static_cast<std::size_t>(plane)].data() + kGap; }
std::size_t YuvFrame::size(int plane) const { return memory_[static_cast<std::size_t>(plane)].size() - 2 * kGap; }

testing::AssertionResult codesMatch(const YuvFrame& frame, int matrix, const std::vector<KRRGBA>& pixels,
                                    double tolerance) {
    const double most = (1 << frame.bits()) - 1;
    for (int component = 0; component < 3; ++component)
        for (int row = 0; row < frame.rows(component); ++row)
            for (int column = 0; column < frame.columns(component); ++column) {
                const double wanted = std::clamp(frame.expected(component, column, row, matrix, pixels), 0.0, most);
                const int found = frame.code(component, column, row);
                if (std::abs(found - wanted) > 0.5 + tolerance)
                    return testing::AssertionFailure() << "component " << component << " at " << column << ", " << row
                                                       << ": " << found << ", wanted " << wanted;
            }
    return frame.gapsUntouched();
}

testing::AssertionResult pixelsMatch(const YuvFrame& frame, int matrix, const std::vector<KRRGBA>& pixels, int width,
                                     double tolerance) {
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int x = static_cast<int>(i) % width, y = static_cast<int>(i) / width;
        const auto wanted = frame.rgb(matrix, x, y);
        const int found[3] = {pixels[i].blue, pixels[i].green, pixels[i].red};
        for (std::size_t c = 0; c < 3; ++c)
            if (std::abs(found[c] - std::clamp(wanted[c], 0.0, 255.0)) > 0.5 + tolerance || pixels[i].alpha != 255)
                return testing::AssertionFailure() << "component " << c << " at " << x << ", " << y << ": " << found[c]
                                                   << ", wanted " << wanted[c] << "; alpha " << int{pixels[i].alpha};
    }
    return testing::AssertionSuccess();
}

bool same(const KRRGBA& a, const KRRGBA& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
}

std::vector<KRRGBA> randomPixels(Random& random, std::size_t count) {
    std::vector<KRRGBA> pixels(count);
    const auto code = [&] { return static_cast<std::uint8_t>(random.pick({0, 255, random.integer(0, 255)})); };
    for (KRRGBA& pixel : pixels) pixel = {code(), code(), code(), code()};
    return pixels;
}

} // namespace test
