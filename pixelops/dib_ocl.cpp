// Copying, interlacing and compositing of device images, and the helpers for video: the exported operations.
#include <algorithm>
#include <cmath>
#include <limits>

#include "pixelops/opencl_module.h"

#include "kernels.h"

namespace pixelops {
namespace {

constinit OpenCLModule copyModule(kernels::dibcopy, {"k71c3e20a0"});
constinit OpenCLModule interlaceModule(kernels::dibinterlace, {"kaf5099dd0", "kaf5099dd1", "kaf5099dd2", "kaf5099dd3"});
constinit OpenCLModule compositeModule(kernels::dibcomposite, {"k3d90b4e60"});
constinit OpenCLModule helpModule(kernels::vidhelp, {"k5e81c7fa0", "k5e81c7fa1", "k5e81c7fa2"});

int asInt(std::size_t size) { return static_cast<int>(size); }

bool inside(const KRRECTF& r, const ImageInfo& image) {
    return r.x1 >= 0 && r.y1 >= 0 && r.x1 < r.x2 && r.y1 < r.y2 && r.x2 <= static_cast<float>(image.width) &&
           r.y2 <= static_cast<float>(image.height);
}

// One axis of a copy. Written are the pixels from first up to end; pixel first + i shows the place
// start + (i + 0.5) step of the source.
struct Axis {
    int first, end;
    double step, start;

    Axis(double to1, double to2, double from1, double from2, double ratio)
        : first(static_cast<int>(std::ceil(to1 - 0.5))),
          end(static_cast<int>(std::ceil(to2 - 0.5))),
          step((from2 - from1) / (to2 - to1) / ratio),
          start((from1 + from2) / 2 + (first - (to1 + to2) / 2) * step) {}

    int count() const { return end - first; }
};

// The centres of a range's outermost pixels; of one below a pixel, its middle.
cl_float2 innerCentres(float from, float to) {
    return to - from > 1 ? cl_float2{{from + 0.5f, to - 0.5f}} : cl_float2{{(from + to) / 2, (from + to) / 2}};
}

std::int32_t copyUnchanged(cl_mem destination, cl_mem source, const Axis& x, const Axis& y, const ImageInfo& from,
                           cl_command_queue queue) {
    // Rounded, fractions may want one pixel more than there is.
    const auto place = [](const Axis& axis, std::size_t count, std::size_t size) {
        return static_cast<std::size_t>(
            std::clamp(std::floor(axis.start + 0.5), 0.0, static_cast<double>(size - count)));
    };
    const auto width = std::min(static_cast<std::size_t>(x.count()), from.width);
    const auto height = std::min(static_cast<std::size_t>(y.count()), from.height);
    return copyModule.copyImage(
        queue, source, destination, {place(x, width, from.width), place(y, height, from.height), 0},
        {static_cast<std::size_t>(x.first), static_cast<std::size_t>(y.first), 0}, {width, height, 1});
}

std::int32_t copy(cl_mem destination, const KRRECTF& to, cl_mem source, const KRRECTF& from, float ratio,
                  cl_command_queue queue) {
    const ImageInfo target = copyModule.imageInfo(destination), origin = copyModule.imageInfo(source);
    if (destination == source || !inside(to, target) || !inside(from, origin)) return KR_FAILED;
    if (!(ratio > 0) || std::isinf(ratio)) return KR_FAILED;
    const Axis x(to.x1, to.x2, from.x1, from.x2, double{ratio}), y(to.y1, to.y2, from.y1, from.y2, double{ratio});
    if (x.count() <= 0 || y.count() <= 0) return KR_OK; // no centre of a pixel lies inside

    const auto near = [](double a, double b) { return std::abs(a - b) < 0.001; };
    const bool same = ratio >= 0.999f && ratio <= 1.001f && near(to.x2 - to.x1, from.x2 - from.x1) &&
                      near(to.y2 - to.y1, from.y2 - from.y1) &&
                      target.format.image_channel_order == origin.format.image_channel_order &&
                      target.format.image_channel_data_type == origin.format.image_channel_data_type;
    if (same) return copyUnchanged(destination, source, x, y, origin, queue);

    const cl_float2 columns = innerCentres(from.x1, from.x2), rows = innerCentres(from.y1, from.y2);
    constexpr float kEverywhere = std::numeric_limits<float>::infinity();
    const bool smaller = ratio < 1; // else no rounding shall find a place outside
    const cl_float4 outer = smaller ? cl_float4{{from.x1, from.y1, from.x2, from.y2}}
                                    : cl_float4{{-kEverywhere, -kEverywhere, kEverywhere, kEverywhere}};
    return copyModule.run(0, queue, static_cast<std::size_t>(x.count()), static_cast<std::size_t>(y.count()),
                          destination, source, cl_int2{{x.first, y.first}}, cl_int2{{x.count(), y.count()}},
                          cl_float2{{static_cast<float>(x.step), static_cast<float>(y.step)}},
                          cl_float2{{static_cast<float>(x.start), static_cast<float>(y.start)}},
                          cl_float4{{columns.s[0], rows.s[0], columns.s[1], rows.s[1]}}, outer);
}

std::int32_t interlace(cl_mem destination, cl_mem source, std::uint32_t operation, std::uint32_t field,
                       cl_command_queue queue) {
    const ImageInfo to = interlaceModule.imageInfo(destination), from = interlaceModule.imageInfo(source);
    if (destination == source || to.width == 0 || to.width != from.width) return KR_FAILED;
    if (operation > KR_FIELD_DOUBLE || field > 1) return KR_FAILED;
    const ImageInfo& frame = operation == KR_FIELD_EXTRACT ? from : to;
    const std::size_t fieldRows = (frame.height + 1 - field) / 2;
    const bool fits = operation == KR_FIELD_WEAVE     ? from.height == fieldRows
                      : operation == KR_FIELD_EXTRACT ? to.height == fieldRows
                                                      : to.height == from.height;
    if (!fits || fieldRows == 0) return KR_FAILED;
    const std::size_t rows = operation == KR_FIELD_DOUBLE ? frame.height : fieldRows; // that the kernel walks over
    return interlaceModule.run(operation, queue, to.width, rows, destination, source, asInt(to.width), asInt(rows),
                               static_cast<cl_int>(field));
}

std::int32_t composite(cl_mem destination, cl_mem background, cl_mem foreground, int x, int y, float opacity,
                       cl_command_queue queue) {
    const ImageInfo to = compositeModule.imageInfo(destination), below = compositeModule.imageInfo(background);
    const ImageInfo over = compositeModule.imageInfo(foreground);
    if (destination == background || destination == foreground || to.width == 0 || over.width == 0) return KR_FAILED;
    if (to.width != below.width || to.height != below.height || std::isnan(opacity)) return KR_FAILED;
    return compositeModule.run(0, queue, to.width, to.height, destination, background, foreground,
                               cl_int2{{asInt(to.width), asInt(to.height)}}, cl_int2{{x, y}},
                               cl_int2{{asInt(over.width), asInt(over.height)}},
                               std::min(std::max(opacity, 0.0f), 1.0f));
}

std::int32_t help(cl_mem destination, cl_mem source, std::uint32_t operation, cl_command_queue queue) {
    const ImageInfo to = helpModule.imageInfo(destination), from = helpModule.imageInfo(source);
    if (destination == source || to.width == 0 || operation > KR_UNPREMULTIPLY) return KR_FAILED;
    if (to.width != from.width || to.height != from.height) return KR_FAILED;
    return helpModule.run(operation, queue, to.width, to.height, destination, source, asInt(to.width),
                          asInt(to.height));
}

} // namespace
} // namespace pixelops

using namespace pixelops;

std::int32_t DibCopy_OpenCL_Initialize(OpenCLApi* const* api, KrCompile compile) {
    return copyModule.initialize(api, compile);
}
std::int32_t DibInterlace_OpenCL_Initialize(OpenCLApi* const* api, KrCompile compile) {
    return interlaceModule.initialize(api, compile);
}
std::int32_t DibComposite_OpenCL_Initialize(OpenCLApi* const* api, KrCompile compile) {
    return compositeModule.initialize(api, compile);
}
std::int32_t VidHelp_OpenCL_Initialize(OpenCLApi* const* api, KrCompile compile) {
    return helpModule.initialize(api, compile);
}

void DibCopy_OpenCL_Shutdown(void) { copyModule.shutdown(); }
void DibInterlace_OpenCL_Shutdown(void) { interlaceModule.shutdown(); }
void DibComposite_OpenCL_Shutdown(void) { compositeModule.shutdown(); }
void VidHelp_OpenCL_Shutdown(void) { helpModule.shutdown(); }

std::int32_t KrDibCopyOCL(cl_mem destination, const KRRECTF* destinationRect, cl_mem source, const KRRECTF* sourceRect,
                          float ratio, cl_command_queue queue) {
    if (!copyModule.ready() || destinationRect == nullptr || sourceRect == nullptr) return KR_FAILED;
    return guarded([&] { return copy(destination, *destinationRect, source, *sourceRect, ratio, queue); });
}

std::int32_t KrDibCopyInterlaceOCL(cl_mem destination, cl_mem source, std::uint32_t operation, std::uint32_t field,
                                   cl_command_queue queue) {
    if (!interlaceModule.ready()) return KR_FAILED;
    return guarded([&] { return interlace(destination, source, operation, field, queue); });
}

std::int32_t KrDibCompositeOCL(cl_mem destination, cl_mem background, cl_mem foreground, std::int32_t x, std::int32_t y,
                               float opacity, cl_command_queue queue) {
    if (!compositeModule.ready()) return KR_FAILED;
    return guarded([&] { return composite(destination, background, foreground, x, y, opacity, queue); });
}

std::int32_t KrVidHelpOCL(cl_mem destination, cl_mem source, std::uint32_t operation, cl_command_queue queue) {
    if (!helpModule.ready()) return KR_FAILED;
    return guarded([&] { return help(destination, source, operation, queue); });
}
