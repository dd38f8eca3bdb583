// Making and releasing temporary device images.
#include "opencl/temporary_image.h"

namespace OpenCL {

TemporaryImage::TemporaryImage(OpenCLApi& api, cl_context context, cl_mem like, int width, int height) : api_(api) {
    cl_image_format format{};
    if (api_.clGetImageInfo(like, CL_IMAGE_FORMAT, sizeof format, &format, nullptr) != CL_SUCCESS) return;
    cl_int status = CL_SUCCESS;
    memory_ = api_.clCreateImage2D(context, CL_MEM_READ_WRITE, &format, static_cast<std::size_t>(width),
                                   static_cast<std::size_t>(height), 0, nullptr, &status);
    if (status != CL_SUCCESS) memory_ = nullptr;
}

TemporaryImage::~TemporaryImage() {
    if (memory_ != nullptr) api_.clReleaseMemObject(memory_);
}

} // namespace OpenCL
