// Luma histograms.
#include "ofx/analysis.h"

#include <algorithm>
#include <mutex>

#include "ofx/exception.h"
#include "ofx/processor.h"
#include "pixelops/pixel.h"

namespace OFX {
namespace {

using Bins = std::array<std::uint64_t, 256>;

std::size_t binOf(const pixelops::Pixel<unsigned char>& p) {
    return (299u * p.r + 587u * p.g + 114u * p.b + 500) / 1000;
}

std::size_t binOf(const pixelops::Pixel<float>& p) {
    const double luma = 0.299 * p.r + 0.587 * p.g + 0.114 * p.b;
    return static_cast<std::size_t>((luma > 0 ? std::min(luma, 1.0) : 0) * 255 + 0.5); // not a number: 0
}

template <class T, int bgra>
void count(const Image& image, const RectI& rows, Bins& bins) {
    for (int y = rows.y1; y < rows.y2; ++y) {
        const T* from = image.at<const T>(rows.x1, y);
        for (int x = rows.x1; x < rows.x2; ++x, from += 4) {
            const auto pixel = pixelops::load<4, bgra>(from);
            if (pixel.a > 0) ++bins[binOf(pixel)];
        }
    }
}

} // namespace

void LumaHistogram::add(const Image& image) {
    const auto [depth, components, order] = image.format();
    const bool bgra = order == PixelOrder::BGRA;
    if (components != Components::RGBA || !image.format().rendered() || !image.inMemory()) {
        throw Exception::Suite(kOfxStatFailed, "only RGBA images in memory can be measured");
    }
    const auto countRows = depth == Depth::Byte ? (bgra ? count<unsigned char, 1> : count<unsigned char, 0>)
                                                : (bgra ? count<float, 1> : count<float, 0>);
    std::mutex lock;
    MultiThread::run(0, [&](unsigned index, unsigned threads) {
        Bins bins{};
        countRows(image, band(image.bounds(), index, threads), bins);
        const std::lock_guard guard(lock);
        for (std::size_t i = 0; i < bins.size(); ++i) bins_[i] += bins[i], total_ += bins[i];
    });
}

double LumaHistogram::low(double share) const {
    const double allowed = share * static_cast<double>(total_);
    std::uint64_t below = 0;
    std::size_t bin = 0;
    while (bin < 255 && static_cast<double>(below + bins_[bin]) <= allowed) below += bins_[bin++];
    return static_cast<double>(bin) / 255;
}

double LumaHistogram::high(double share) const {
    const double allowed = share * static_cast<double>(total_);
    std::uint64_t above = 0;
    std::size_t bin = 255;
    while (bin > 0 && static_cast<double>(above + bins_[bin]) <= allowed) above += bins_[bin--];
    return static_cast<double>(bin) / 255;
}

} // namespace OFX
