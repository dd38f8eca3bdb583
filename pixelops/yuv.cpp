// YUV frames to pixels and back, row by row in small blocks.
#include <algorithm>
#include <cstring>

#include "pixelops/yuv_format.h"

namespace pixelops {
namespace {

// Pixels in a block: few, so that arithmetic and traffic with memory take turns often and overlap.
constexpr std::size_t kBlock = 2 * kYuvStep;

struct Samples {
    alignas(64) std::uint16_t y[kBlock], u[kBlock], v[kBlock];
};

struct Pixels {
    alignas(64) std::uint8_t bytes[4 * kBlock];
};

std::ptrdiff_t offset(std::int32_t pitch, std::uint32_t row) { return std::ptrdiff_t{pitch} * std::ptrdiff_t{row}; }

// Rows of a frame's planes in the order Y, U, V; T is uint8_t or const uint8_t.
template <class T, class Pointer>
class Planes {
public:
    Planes(const YuvFormat& format, const Pointer* planes, const std::int32_t* pitches) : format_(format) {
        for (int i = 0; i < format.planes; ++i) {
            const int stored = format.vFirst && i > 0 ? 3 - i : i;
            first_[i] = static_cast<T*>(planes[stored]);
            pitches_[i] = pitches[stored];
        }
    }
    bool complete() const {
        return std::all_of(first_, first_ + format_.planes, [](T* plane) { return plane; });
    }

    // The places of the pixel at x, y in each plane.
    struct Place {
        T* planes[3];
    };
    Place at(std::size_t x, std::uint32_t y) const {
        Place place{};
        for (int i = 0; i < format_.planes; ++i) {
            const std::uint32_t row = i > 0 && format_.halfHeight ? y / 2 : y;
            place.planes[i] = first_[i] + offset(pitches_[i], row) + format_.groupsOf(i).before(x);
        }
        return place;
    }

private:
    const YuvFormat& format_;
    T* first_[3] = {};
    std::int32_t pitches_[3] = {};
};

// Asks memory for the pixels that come a little later than x: in this row, or in the next where there is one.
void prefetch(const std::uint8_t* row, const std::uint8_t* next, std::size_t x, std::size_t width) {
    constexpr std::size_t kAhead = 2 * kBlock, kLine = 64;
    std::size_t later = x + kAhead;
    if (later >= width) row = next, later -= width;
    if (row == nullptr || later >= width) return;
    const std::size_t bytes = 4 * std::min(width - later, kBlock);
    for (std::size_t i = 0; i < bytes; i += kLine) __builtin_prefetch(row + 4 * later + i);
}

std::size_t wholeSteps(std::size_t pixels) { return (pixels + kYuvStep - 1) / kYuvStep * kYuvStep; }

// A block of a row as it is, or copied, with the last pixel repeated where whole steps go on.
const std::uint8_t* extended(const std::uint8_t* from, std::size_t pixels, Pixels& copy) {
    if (pixels % kYuvStep == 0) return from;
    std::memcpy(copy.bytes, from, 4 * pixels);
    for (std::size_t i = pixels; i < wholeSteps(pixels); ++i)
        std::memcpy(copy.bytes + 4 * i, from + 4 * (pixels - 1), 4);
    return copy.bytes;
}

} // namespace
} // namespace pixelops

using namespace pixelops;

std::int32_t KrYUV_YUVToRGB(KRRGBA* rgba, std::int32_t rgbaPitch, const void* const planes[3],
                            const std::int32_t pitches[3], std::uint32_t width, std::uint32_t height,
                            std::uint32_t fourcc, std::uint32_t matrixIndex) {
    const YuvConversion conversion(pitches, width, height, fourcc, matrixIndex);
    if (rgba == nullptr || planes == nullptr || conversion.format == nullptr) return KR_FAILED;
    const YuvFormat& format = *conversion.format;
    const Planes<const std::uint8_t, const void*> from(format, planes, pitches);
    if (!from.complete() || !holds(rgbaPitch, std::size_t{width} * 4)) return KR_FAILED;

    Samples samples{};
    Pixels pixels;
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t* row = reinterpret_cast<std::uint8_t*>(rgba) + offset(rgbaPitch, y);
        for (std::size_t x = 0; x < width; x += kBlock) {
            const std::size_t count = std::min(width - x, kBlock);
            const auto place = from.at(x, y);
            (*format.unpack)(place.planes, samples.y, samples.u, samples.v, count);
            std::uint8_t* to = count % kYuvStep == 0 ? row + 4 * x : pixels.bytes;
            yuvToPixels(conversion.coefficients->toRgb, samples.y, samples.u, samples.v, to, wholeSteps(count),
                        format.halfWidth);
            if (to == pixels.bytes) std::memcpy(row + 4 * x, to, 4 * count);
        }
    }
    return KR_OK;
}

std::int32_t KrYUV_RGBToYUV(void* const planes[3], const std::int32_t pitches[3], const KRRGBA* rgba,
                            std::int32_t rgbaPitch, std::uint32_t width, std::uint32_t height, std::uint32_t fourcc,
                            std::uint32_t matrixIndex) {
    const YuvConversion conversion(pitches, width, height, fourcc, matrixIndex);
    if (rgba == nullptr || planes == nullptr || conversion.format == nullptr) return KR_FAILED;
    const YuvFormat& format = *conversion.format;
    const Planes<std::uint8_t, void*> to(format, planes, pitches);
    if (!to.complete() || !holds(rgbaPitch, std::size_t{width} * 4)) return KR_FAILED;

    const RgbToYuv& coefficients = conversion.coefficients->toYuv;
    Samples samples{};
    Pixels copies[2];
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint8_t* row = reinterpret_cast<const std::uint8_t*>(rgba) + offset(rgbaPitch, y);
        const std::uint8_t* next = y + 1 < height ? row + rgbaPitch : nullptr;
        // Chroma waits for the last row that shares it: memory is then read in one stream.
        const bool chroma = !format.halfHeight || y % 2 == 1 || next == nullptr;
        const std::ptrdiff_t upper = format.halfHeight && y % 2 == 1 ? -std::ptrdiff_t{rgbaPitch} : 0;
        for (std::size_t x = 0; x < width; x += kBlock) {
            const std::size_t count = std::min(width - x, kBlock), steps = wholeSteps(count);
            const std::uint8_t* pixels = extended(row + 4 * x, count, copies[0]);
            prefetch(row, next, x, width);
            pixelsToLuma(coefficients, pixels, samples.y, steps);
            if (chroma) {
                const std::uint8_t* above = upper != 0 ? extended(row + upper + 4 * x, count, copies[1]) : pixels;
                pixelsToChroma(coefficients, above, pixels, samples.u, samples.v, steps, format.halfWidth);
            }
            (*format.pack)(samples.y, chroma ? samples.u : nullptr, samples.v, to.at(x, y).planes, count);
        }
    }
    return KR_OK;
}

std::int32_t KrYUV422PlanarToRGBA(KRRGBA* rgba, std::int32_t rgbaPitch, std::uint32_t width, std::uint32_t height,
                                  const std::uint8_t* y, std::int32_t yPitch, const std::uint8_t* u,
                                  std::int32_t uPitch, const std::uint8_t* v, std::int32_t vPitch,
                                  std::uint32_t matrixCode) {
    enum : std::uint32_t { k601 = 0, k709 = 1, kFirstCode = 515, kLastCode = 517 };
    const bool told = matrixCode >= kFirstCode && matrixCode <= kLastCode;
    const std::uint32_t guessed = height < 720 && width >= 704 && width <= 720 ? k601 : k709;
    const void* const planes[3] = {y, v, u};
    const std::int32_t pitches[3] = {yPitch, vPitch, uPitch};
    return KrYUV_YUVToRGB(rgba, rgbaPitch, planes, pitches, width, height, fourCC("YV16"),
                          told ? matrixCode - kFirstCode : guessed);
}
