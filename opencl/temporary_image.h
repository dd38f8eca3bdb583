// Device images of one render.
#pragma once

#include "opencl/api.h"

namespace OpenCL {

// A 2-D image in the format of another one, width x height pixels, uninitialised; released when it goes, on every path.
class TemporaryImage {
public:
    // Throws a runtime error where the device has no room or the format cannot be had: a null image would pass as an
    // argument on some devices.
    TemporaryImage(OpenCLApi& api, cl_context context, cl_mem like, int width, int height);
    ~TemporaryImage();
    TemporaryImage(const TemporaryImage&) = delete;
    TemporaryImage& operator=(const TemporaryImage&) = delete;

    cl_mem memory() const { return memory_; }

private:
    OpenCLApi& api_;
    cl_mem memory_ = nullptr;
};

} // namespace OpenCL
