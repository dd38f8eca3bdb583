// YUV frames to pixels and back, through the functions that the bundle exports.
#include "bench/pixelops_bench.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "bench/frames.h"
#include "bench/timing.h"
#include "host/binary.h"
#include "pixelops/kr_pixelops.h"

namespace bench {
namespace {

constexpr std::uint32_t kWidth = 1920, kHeight = 1080;

struct Plane {
    std::uint32_t rowBytes, rows;
};

struct YuvFormat {
    const char* name;
    std::vector<Plane> planes;

    std::size_t bytes() const {
        std::size_t sum = 0;
        for (const Plane& plane : planes) sum += std::size_t{plane.rowBytes} * plane.rows;
        return sum;
    }
    std::uint32_t fourcc() const {
        std::uint32_t code = 0;
        for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(name[i]);
        return code;
    }
};

const std::vector<YuvFormat> kFormats = {
    {"NV12", {{kWidth, kHeight}, {kWidth, kHeight / 2}}},
    {"I420", {{kWidth, kHeight}, {kWidth / 2, kHeight / 2}, {kWidth / 2, kHeight / 2}}},
    {"UYVY", {{2 * kWidth, kHeight}}},
    {"P010", {{2 * kWidth, kHeight}, {2 * kWidth, kHeight / 2}}},
    {"v210", {{kWidth / 6 * 16, kHeight}}},
};

class Converter {
public:
    static constexpr std::size_t kFrames = 32; // in turn, so that none lies in a cache

    Converter(const host::Library& library, const YuvFormat& format)
        : toRgb_(reinterpret_cast<decltype(toRgb_)>(library.symbol("KrYUV_YUVToRGB"))),
          toYuv_(reinterpret_cast<decltype(toYuv_)>(library.symbol("KrYUV_RGBToYUV"))),
          fourcc_(format.fourcc()),
          memory_(kFrames, std::vector<std::uint8_t>(format.bytes())) {
        if (toRgb_ == nullptr || toYuv_ == nullptr) throw std::runtime_error("the bundle has no YUV converters");
        std::size_t at = 0;
        for (std::size_t i = 0; i < format.planes.size(); ++i) {
            offsets_[i] = at;
            pitches_[i] = static_cast<std::int32_t>(format.planes[i].rowBytes);
            at += std::size_t{format.planes[i].rowBytes} * format.planes[i].rows;
        }
    }

    void toRgb(host::Image& image) {
        const auto p = planes();
        const void* const from[3] = {p[0], p[1], p[2]};
        check(toRgb_(reinterpret_cast<KRRGBA*>(image.data()), 4 * kWidth, from, pitches_, kWidth, kHeight, fourcc_, 1));
    }
    void toYuv(const host::Image& image) {
        const auto p = planes();
        check(toYuv_(p.data(), pitches_, reinterpret_cast<const KRRGBA*>(image.data()), 4 * kWidth, kWidth, kHeight,
                     fourcc_, 1));
    }

private:
    std::array<void*, 3> planes() {
        std::uint8_t* frame = memory_[at_++ % kFrames].data();
        return {frame + offsets_[0], frame + offsets_[1], frame + offsets_[2]};
    }
    static void check(std::int32_t result) {
        if (result != KR_OK) throw std::runtime_error("a conversion failed");
    }

    decltype(&KrYUV_YUVToRGB) toRgb_;
    decltype(&KrYUV_RGBToYUV) toYuv_;
    std::uint32_t fourcc_;
    std::vector<std::vector<std::uint8_t>> memory_;
    std::size_t offsets_[3] = {}, at_ = 0;
    std::int32_t pitches_[3] = {};
};

YuvRow measure(const YuvFormat& format, bool toRgb) {
    const host::Library library(host::Binary::fileOf(ORVIX_BUNDLE));
    Frames frames({kWidth, kHeight}, host::Depth::Byte);
    Converter converter(library, format);
    for (std::size_t i = 0; i < Converter::kFrames; ++i)
        converter.toYuv(*frames.source()); // content, and pages of memory
    std::vector<double> copies, conversions;
    for (int i = 0; i < kRepeats; ++i) {
        frames.advance();
        copies.push_back(milliseconds([&] { frames.copy(); }));
        frames.advance();
        conversions.push_back(
            milliseconds([&] { toRgb ? converter.toRgb(*frames.destination()) : converter.toYuv(*frames.source()); }));
    }
    const double frame = 4.0 * kWidth * kHeight;
    const double share = (static_cast<double>(format.bytes()) + frame) / (2 * frame);
    return {format.name, toRgb ? "to RGB" : "to YUV", median(conversions), median(copies) * share};
}

} // namespace

void addYuvRows(std::vector<YuvRow>& rows) {
    for (const YuvFormat& format : kFormats) {
        for (const bool toRgb : {true, false}) {
            const auto run = [&format, toRgb, &rows](benchmark::State& state) {
                for (auto _ : state) {
                    const YuvRow row = measure(format, toRgb);
                    state.SetIterationTime(row.milliseconds / 1000);
                    state.counters["copy_ms"] = row.copy;
                    state.counters["multiple"] = row.milliseconds / row.copy;
                    rows.push_back(row);
                }
            };
            const std::string name = std::string("yuv/") + format.name + (toRgb ? "/rgb" : "/yuv");
            benchmark::RegisterBenchmark(name.c_str(), run)
                ->Iterations(1)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
}

void appendYuv(const std::string& file, const std::vector<YuvRow>& rows) {
    std::ofstream page(file, std::ios::app);
    page << "\n## YUV frames\n\nThe converters of the pixel library, 1920x1080 on one thread; *multiple* is of a "
            "streaming copy that reads and\nwrites as many bytes in all.\n\n| format | direction | ms | multiple |\n"
            "|---|---|---|---|\n";
    for (const YuvRow& row : rows) {
        char line[96];
        std::snprintf(line, sizeof line, "| %s | %s | %.2f | %.2f |\n", row.format.c_str(), row.direction.c_str(),
                      row.milliseconds, row.milliseconds / row.copy);
        page << line;
    }
    if (!page.flush()) throw std::runtime_error("cannot write " + file);
}

} // namespace bench
