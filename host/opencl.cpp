// OpenCL as a host offers it.
#include "host/opencl.h"

#include <algorithm>
#include <cstring>

#include "host/error.h"
#include "host/host.h"
#include "opencl/library.h"

namespace host {

namespace {

void expect(cl_int status, const char* call) {
    if (status != CL_SUCCESS) throw Error(std::string("OpenCL: ") + call + " answered " + std::to_string(status));
}

struct Device {
    cl_platform_id platform;
    cl_device_id id;
};

std::vector<Device> devices(OpenCLApi& api) {
    cl_uint count = 0;
    if (api.clGetPlatformIDs(0, nullptr, &count) != CL_SUCCESS) return {};
    std::vector<cl_platform_id> platforms(count);
    if (count > 0) expect(api.clGetPlatformIDs(count, platforms.data(), nullptr), "clGetPlatformIDs");
    std::vector<Device> result;
    for (const cl_platform_id platform : platforms) {
        cl_uint found = 0;
        if (api.clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &found) != CL_SUCCESS) continue;
        std::vector<cl_device_id> ids(found);
        expect(api.clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, found, ids.data(), nullptr), "clGetDeviceIDs");
        for (const cl_device_id id : ids) result.push_back({platform, id});
    }
    return result;
}

template <class Query>
std::string text(Query query) {
    std::size_t size = 0;
    if (query(0, nullptr, &size) != CL_SUCCESS) return {};
    std::string result(size, '\0');
    query(size, result.data(), nullptr);
    while (!result.empty() && (result.back() == '\0' || result.back() == '\n')) result.pop_back();
    return result;
}

bool hasImages(OpenCLApi& api, cl_device_id device) {
    cl_bool support = CL_FALSE;
    return api.clGetDeviceInfo(device, CL_DEVICE_IMAGE_SUPPORT, sizeof support, &support, nullptr) == CL_SUCCESS &&
           support == CL_TRUE;
}

cl_image_format formatOf(const Format& format) {
    const bool blueFirst = format.order == Order::BGRA;
    if (format.components == Components::RGBA && format.depth == Depth::Byte)
        return {static_cast<cl_channel_order>(blueFirst ? CL_BGRA : CL_RGBA), CL_UNORM_INT8};
    if (format.components == Components::RGBA && format.depth == Depth::Float && !blueFirst) return {CL_RGBA, CL_FLOAT};
    throw Error("OpenCL has no image of this format: allowed are RGBA and BGRA bytes and RGBA floats");
}

OfxRectI common(const OfxRectI& a, const OfxRectI& b) {
    return {std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2)};
}

// The window's rows, one after the other, in memory of their own.
struct Rows {
    Rows(const Format& format, const OfxRectI& rectangle)
        : window(rectangle),
          pixel(static_cast<std::size_t>(format.pixelBytes())),
          width(static_cast<std::size_t>(window.x2 - window.x1)),
          height(static_cast<std::size_t>(window.y2 - window.y1)),
          bytes(width * height * pixel) {}

    std::byte* at(int x, int y) {
        return bytes.data() +
               (static_cast<std::size_t>(y - window.y1) * width + static_cast<std::size_t>(x - window.x1)) * pixel;
    }

    // Copies what window and image have in common, row by row.
    template <class Copy>
    void each(const OfxRectI& bounds, Copy copy) {
        const OfxRectI area = common(window, bounds);
        if (area.x2 <= area.x1) return;
        const std::size_t count = static_cast<std::size_t>(area.x2 - area.x1) * pixel;
        const auto first = static_cast<std::ptrdiff_t>(static_cast<std::size_t>(area.x1 - bounds.x1) * pixel);
        for (int y = area.y1; y < area.y2; ++y) copy(at(area.x1, y), y, first, count);
    }

    const OfxRectI window;
    const std::size_t pixel, width, height;
    std::vector<std::byte> bytes;
};

} // namespace

LoadedOpenCL::LoadedOpenCL() {
    // The system's library stays open from the first use on: closed, it forgets to free what it knows of devices.
    [[maybe_unused]] static void* const kept = OpenCL::openLibrary(OpenCL::libraryNames());
    load();
}

std::vector<OpenCLDeviceInfo> openCLDevices() {
    LoadedOpenCL api;
    std::vector<OpenCLDeviceInfo> result;
    for (const Device& device : devices(api)) {
        const auto info = [&](cl_device_info what) {
            return text([&](std::size_t n, void* to, std::size_t* size) {
                return api.clGetDeviceInfo(device.id, what, n, to, size);
            });
        };
        const std::string platform = text([&](std::size_t n, void* to, std::size_t* size) {
            return api.clGetPlatformInfo(device.platform, CL_PLATFORM_NAME, n, to, size);
        });
        result.push_back({platform, info(CL_DEVICE_NAME), info(CL_DEVICE_VERSION), hasImages(api, device.id)});
    }
    return result;
}

OpenCLDevice::OpenCLDevice(int index) {
    const std::vector<Device> all = devices(api_);
    if (all.empty()) throw Error("there is no OpenCL device on this machine");
    if (index < 0 || index >= static_cast<int>(all.size()))
        throw Error("there is no OpenCL device " + std::to_string(index) + ": allowed are 0 to " +
                    std::to_string(all.size() - 1));
    device_ = all[static_cast<std::size_t>(index)].id;
    if (!hasImages(api_, device_)) throw Error("OpenCL device " + std::to_string(index) + " takes no images");
    cl_int status = CL_SUCCESS;
    context_ = api_.clCreateContext(nullptr, 1, &device_, nullptr, nullptr, &status);
    expect(status, "clCreateContext");
    queue_ = api_.clCreateCommandQueue(context_, device_, 0, &status);
    if (status != CL_SUCCESS) api_.clReleaseContext(context_);
    expect(status, "clCreateCommandQueue");
}

OpenCLDevice::~OpenCLDevice() {
    api_.clReleaseCommandQueue(queue_);
    api_.clReleaseContext(context_);
}

OfxStatus OpenCLDevice::compile(const char* source, cl_program* program) {
    cl_int status = CL_SUCCESS;
    cl_program built = api_.clCreateProgramWithSource(context_, 1, &source, nullptr, &status);
    if (status != CL_SUCCESS) return kOfxStatFailed;
    status = api_.clBuildProgram(built, 1, &device_, "", nullptr, nullptr);
    buildLog_ = text([&](std::size_t n, void* to, std::size_t* size) {
        return api_.clGetProgramBuildInfo(built, device_, CL_PROGRAM_BUILD_LOG, n, to, size);
    });
    if (status != CL_SUCCESS) {
        api_.clReleaseProgram(built);
        return kOfxStatFailed;
    }
    *program = built;
    return kOfxStatOK;
}

cl_mem OpenCLDevice::upload(const Image& image, const OfxRectI& window) {
    const cl_image_format format = formatOf(image.format());
    Rows rows(image.format(), window);
    rows.each(image.bounds(), [&](std::byte* to, int y, std::ptrdiff_t first, std::size_t count) {
        std::memcpy(to, image.row(y) + first, count);
    });
    cl_int status = CL_SUCCESS;
    cl_mem memory = api_.clCreateImage2D(context_, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, &format, rows.width,
                                         rows.height, 0, rows.bytes.data(), &status);
    expect(status, "clCreateImage2D");
    return memory;
}

void OpenCLDevice::download(cl_mem memory, Image& image, const OfxRectI& window) {
    Rows rows(image.format(), window);
    const std::size_t origin[3] = {0, 0, 0}, region[3] = {rows.width, rows.height, 1};
    expect(
        api_.clEnqueueReadImage(queue_, memory, CL_TRUE, origin, region, 0, 0, rows.bytes.data(), 0, nullptr, nullptr),
        "clEnqueueReadImage");
    rows.each(image.bounds(), [&](std::byte* from, int y, std::ptrdiff_t first, std::size_t count) {
        std::memcpy(image.row(y) + first, from, count);
    });
}

OpenCLImages::~OpenCLImages() {
    device_.api().clFinish(device_.queue());
    for (const auto& [image, memory] : images_) device_.release(memory);
}

cl_mem OpenCLImages::of(const std::shared_ptr<Image>& image) {
    const auto found = images_.find(image);
    if (found != images_.end()) return found->second;
    return images_[image] = device_.upload(*image, window_);
}

void OpenCLImages::download(const std::shared_ptr<Image>& image) {
    const auto found = images_.find(image);
    if (found != images_.end()) device_.download(found->second, *image, window_);
}

namespace {

// Optional programs are compiled like the others.
OfxStatus compileProgram(const char* source, int, void* result) {
    return guarded([&] {
        const Host* host = Host::current();
        if (!host || !host->options().openCL) return kOfxStatErrUnsupported;
        OpenCLDevice& device = *host->options().openCL;
        const OfxStatus status = device.compile(given(source), static_cast<cl_program*>(given(result)));
        if (status != kOfxStatOK) host->message(kOfxMessageError, "", device.buildLog().c_str());
        return status;
    });
}

} // namespace

const OfxOpenCLProgramSuiteV1 kOpenCLProgramSuite = {.compileProgram = compileProgram};

} // namespace host
