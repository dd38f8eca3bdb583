// What the tests of the pixel library share: its functions as the bundle exports them, and YUV frames in memory with a
// reference that follows the published layouts sample by sample, in double precision.
#pragma once
#include <stdexcept>

#include "host/opencl.h"
#include "tests/support.h"

#include "pixelops/kr_pixelops.h"

namespace test {

// An exported function; the declaration gives the type.
template <class Function>
Function* exported(const char* name) {
    static const host::Library library(host::Binary::fileOf(bundlePath()));
    void* symbol = library.symbol(name);
    if (symbol == nullptr) throw std::runtime_error(std::string(name) + " is not exported");
    return reinterpret_cast<Function*>(symbol);
}
#define EXPORTED(name) const auto name = test::exported<decltype(::name)>(#name)

inline const std::vector<std::string> kYuvFormats = {"NV12", "YV12", "YV16", "YUYV", "UYVY",
                                                     "I420", "P410", "P010", "P210", "v210"};
constexpr std::uint32_t fourcc(const std::string& name) {
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < 4; ++i) code |= std::uint32_t{static_cast<unsigned char>(name[i])} << (8 * i);
    return code;
}

// Planes with gaps between the rows, and before and after them, all of it untouched.
class YuvFrame {
public:
    YuvFrame(std::string format, int width, int height, bool fromBottom);

    // Columns and rows of samples, those that fill the last group of packed formats included. Component: Y, U or V as
    // 0, 1, 2.
    int columns(int component) const;
    int rows(int component) const;
    int code(int component, int column, int row) const;
    void setCode(int component, int column, int row, int code);
    void fill(Random& random); // any codes
    // Nothing but the bytes of samples was written.
    testing::AssertionResult gapsUntouched() const;

    // What the matrix makes of it, 0..255, not limited: blue, green, red.
    std::array<double, 3> rgb(int matrix, int x, int y) const;
    // The code that a picture should give, not limited; pixels blue first.
    double expected(int component, int column, int row, int matrix, const std::vector<KRRGBA>& pixels) const;

    int bits() const { return bits_; }
    int planes() const { return planes_; }
    std::array<const void*, 3> tops() const;
    std::array<void*, 3> tops();
    const std::int32_t* pitches() const { return pitches_.data(); }
    // A plane's rows alone, from the lowest address to the end of the last row.
    const std::byte* bytes(int plane) const;
    std::byte* bytes(int plane);
    std::size_t size(int plane) const;

private:
    static constexpr std::size_t kGap = 13;
    struct Place {
        int plane;
        std::ptrdiff_t byte; // from the row's start
        int shift, bytes;    // in a little-endian word of so many bytes
    };
    Place place(int component, int column) const;
    int rowBytes(int plane) const;
    int planeRows(int plane) const;
    std::size_t at(const Place& place, int row) const;

    std::string format_;
    int width_, height_, bits_, planes_, xHalf_, yHalf_;
    std::array<std::vector<std::byte>, 3> memory_;
    std::array<std::int32_t, 3> pitches_{};
};

// The two ways, for what a function makes of a frame and of pixels: every code and every padding byte.
testing::AssertionResult codesMatch(const YuvFrame& frame, int matrix, const std::vector<KRRGBA>& pixels,
                                    double tolerance);
testing::AssertionResult pixelsMatch(const YuvFrame& frame, int matrix, const std::vector<KRRGBA>& pixels, int width,
                                     double tolerance);

// Noise and extremes.
std::vector<KRRGBA> randomPixels(Random& random, std::size_t count);

// All four bytes.
bool same(const KRRGBA& a, const KRRGBA& b);

} // namespace test
