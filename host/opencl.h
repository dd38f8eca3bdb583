// OpenCL as a host offers it: a device with a context and a queue, programs compiled for it, and images on it.
#pragma once
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/image.h"
#include "opencl/api.h"

namespace host {

struct OpenCLDeviceInfo {
    std::string platform, name, version;
    bool hasImages = false;
};

// The devices of all platforms, in the order that counts for OpenCLDevice. Empty where there is no OpenCL.
std::vector<OpenCLDeviceInfo> openCLDevices();

// A table that is loaded as long as it lives.
struct LoadedOpenCL : OpenCLApi {
    LoadedOpenCL();
    ~LoadedOpenCL() { unload(); }
    LoadedOpenCL(const LoadedOpenCL&) = delete;
    LoadedOpenCL& operator=(const LoadedOpenCL&) = delete;
};

class OpenCLDevice {
public:
    // Throws Error when there is no device of that index, or it takes no images.
    explicit OpenCLDevice(int index = 0);
    ~OpenCLDevice();
    OpenCLDevice(const OpenCLDevice&) = delete;
    OpenCLDevice& operator=(const OpenCLDevice&) = delete;

    cl_context context() const { return context_; }
    cl_command_queue queue() const { return queue_; }
    OpenCLApi& api() { return api_; }

    // The program suite's function. A failure leaves the build log in buildLog().
    OfxStatus compile(const char* source, cl_program* program);
    const std::string& buildLog() const { return buildLog_; }

    // An image of the window's size, with the pixels that the image has there and transparent black elsewhere. Row 0 on
    // the device is row y1. Throws Error for formats that OpenCL has no image for.
    cl_mem upload(const Image& image, const OfxRectI& window);
    // Waits for the queue, then reads the window back into the image. Throws Error.
    void download(cl_mem memory, Image& image, const OfxRectI& window);
    void release(cl_mem memory) { api_.clReleaseMemObject(memory); }

private:
    LoadedOpenCL api_; // ends last
    cl_device_id device_ = nullptr;
    cl_context context_ = nullptr;
    cl_command_queue queue_ = nullptr;
    std::string buildLog_;
};

// The device images of one render: made when an image is first fetched, released at the end.
class OpenCLImages {
public:
    OpenCLImages(OpenCLDevice& device, OfxRectI window) : device_(device), window_(window) {}
    ~OpenCLImages();
    OpenCLImages(const OpenCLImages&) = delete;
    OpenCLImages& operator=(const OpenCLImages&) = delete;

    OpenCLDevice& device() const { return device_; }
    cl_mem of(const std::shared_ptr<Image>& image);
    void download(const std::shared_ptr<Image>& image); // nothing when it was never fetched

private:
    OpenCLDevice& device_;
    const OfxRectI window_;
    std::map<std::shared_ptr<Image>, cl_mem> images_;
};

extern const OfxOpenCLProgramSuiteV1 kOpenCLProgramSuite;

} // namespace host
