// Making and releasing temporary device images.
#include "opencl/temporary_image.h"

#include <stdexcept>
#include <string>

namespace OpenCL {

TemporaryImage::TemporaryImage(OpenCLApi& api, cl_context context, cl_mem like, int width, int height) : api_(api) {
    cl_image_format format{};
    cl_int status = api_.clGetImageInfo(like, CL_IMAGE_FORMAT, sizeof format, &format, nullptr);
    if (status == CL_SUCCESS) {
        memory_ = api_.clCreateImage2D(context, CL_MEM_READ_WRITE, &format, static_cast<std::size_t>(width),
                                       static_cast<std::size_t>(height), 0, nullptr, &status);
    }
    if (memory_ == nullptr) throw std::runtime_error("no temporary image: OpenCL answered " + std::to_string(status));
}

TemporaryImage::~TemporaryImage() { api_.clReleaseMemObject(memory_); }

} // namespace OpenCL
