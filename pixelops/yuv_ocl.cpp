// YUV frames on OpenCL devices: the exported operations.
#include "pixelops/opencl_module.h"

#include "kernels.h"
#include "pixelops/yuv_format.h"

namespace pixelops {
namespace {

enum : std::size_t { kToRgb, kToYuv };
constinit OpenCLModule module(kernels::yuv, {"k9b26d1400", "k9b26d1401"});

// What both kernels are told, once everything was checked.
struct Frame {
    const YuvFormat& format;
    cl_mem planes[3]; // in the order Y, U, V; those that there are none of repeat the first
    cl_int4 pitches;
    cl_int2 size, halfSize;

    Frame(const YuvFormat& f, const cl_mem* stored, const std::int32_t* storedPitches, std::uint32_t width,
          std::uint32_t height)
        : format(f),
          pitches{},
          size{{static_cast<cl_int>(width), static_cast<cl_int>(height)}},
          halfSize{{f.halfWidth ? 1 : 0, f.halfHeight ? 1 : 0}} {
        for (int i = 0; i < 3; ++i) {
            const int from = i >= f.planes ? 0 : f.vFirst && i > 0 ? 3 - i : i;
            planes[i] = stored[from];
            pitches.s[i] = storedPitches[from];
        }
    }

    // Whether the planes are buffers that hold all rows.
    bool fits() const {
        for (int i = 0; i < format.planes; ++i) {
            const std::uint32_t rows = format.rowsOf(i, static_cast<std::uint32_t>(size.s[1]));
            const std::size_t row = format.groupsOf(i).rowBytes(static_cast<std::size_t>(size.s[0]));
            const std::int64_t pitch = pitches.s[i];
            const std::size_t before = static_cast<std::size_t>(pitch < 0 ? -pitch : pitch) * (rows - 1);
            if (module.bufferBytes(planes[i]) < before + row) return false;
        }
        return true;
    }
};

cl_float4 floats(double a, double b, double c, double d) {
    return {{static_cast<float>(a), static_cast<float>(b), static_cast<float>(c), static_cast<float>(d)}};
}

// A row of the matrix, to codes.
cl_float4 row(const double (&coefficients)[3], int range, int offset) {
    return floats(coefficients[0] * range, coefficients[1] * range, coefficients[2] * range, offset);
}

std::int32_t toRgb(cl_mem rgba, const Frame& frame, const YuvMatrix& matrix, const YuvRange& range,
                   cl_command_queue queue) {
    return module.run(kToRgb, queue, static_cast<std::size_t>(frame.size.s[0]),
                      static_cast<std::size_t>(frame.size.s[1]), rgba, frame.planes[0], frame.planes[1],
                      frame.planes[2], frame.pitches, frame.size, static_cast<cl_int>(frame.format.storage),
                      frame.halfSize, floats(range.black, range.middle, range.luma, range.chroma),
                      floats(matrix.redFromV, matrix.greenFromU, matrix.greenFromV, matrix.blueFromU));
}

std::int32_t toYuv(cl_mem rgba, const Frame& frame, const YuvMatrix& matrix, const YuvRange& range,
                   cl_command_queue queue) {
    const bool tens = frame.format.storage == YuvStorage::Tens;
    const std::size_t columns = tens ? 6 : frame.format.halfWidth ? 2 : 1, lines = frame.format.halfHeight ? 2 : 1;
    const auto groups = [](cl_int pixels, std::size_t size) {
        return (static_cast<std::size_t>(pixels) + size - 1) / size;
    };
    return module.run(kToYuv, queue, groups(frame.size.s[0], columns), groups(frame.size.s[1], lines), frame.planes[0],
                      frame.planes[1], frame.planes[2], rgba, frame.pitches, frame.size,
                      static_cast<cl_int>(frame.format.storage), frame.halfSize,
                      static_cast<cl_int>((1 << frame.format.bits) - 1), row(matrix.y, range.luma, range.black),
                      row(matrix.u, range.chroma, range.middle), row(matrix.v, range.chroma, range.middle));
}

using Direction = std::int32_t(cl_mem rgba, const Frame& frame, const YuvMatrix& matrix, const YuvRange& range,
                               cl_command_queue queue);

std::int32_t convert(Direction direction, cl_mem rgba, const cl_mem* planes, const std::int32_t* pitches,
                     std::uint32_t width, std::uint32_t height, std::uint32_t fourcc, std::uint32_t matrixIndex,
                     cl_command_queue queue) {
    if (!module.ready() || planes == nullptr) return KR_FAILED;
    return guarded([&]() -> std::int32_t {
        const YuvConversion conversion(pitches, width, height, fourcc, matrixIndex);
        if (conversion.format == nullptr) return KR_FAILED;
        const Frame frame(*conversion.format, planes, pitches, width, height);
        const ImageInfo image = module.imageInfo(rgba);
        if (image.width < width || image.height < height || !frame.fits()) return KR_FAILED;
        return direction(rgba, frame, *kYuvStandards[matrixIndex % 3], yuvRange(matrixIndex, conversion.format->bits),
                         queue);
    });
}

} // namespace
} // namespace pixelops

std::int32_t YUV_OpenCL_Initialize(OpenCLApi* const* api, KrCompile compile) {
    return pixelops::module.initialize(api, compile);
}

void YUV_OpenCL_Shutdown(void) { pixelops::module.shutdown(); }

std::int32_t KrYUV_YUVToRGB_OCL(cl_mem rgba, const cl_mem planes[3], const std::int32_t pitches[3], std::uint32_t width,
                                std::uint32_t height, std::uint32_t fourcc, std::uint32_t matrixIndex,
                                cl_command_queue queue) {
    return pixelops::convert(pixelops::toRgb, rgba, planes, pitches, width, height, fourcc, matrixIndex, queue);
}

std::int32_t KrYUV_RGBToYUV_OCL(const cl_mem planes[3], const std::int32_t pitches[3], cl_mem rgba, std::uint32_t width,
                                std::uint32_t height, std::uint32_t fourcc, std::uint32_t matrixIndex,
                                cl_command_queue queue) {
    return pixelops::convert(pixelops::toYuv, rgba, planes, pitches, width, height, fourcc, matrixIndex, queue);
}
