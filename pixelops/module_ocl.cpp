// Building and releasing the kernels of a module, and enqueuing them.
#include "pixelops/opencl_module.h"

#include <algorithm>

namespace pixelops {

std::int32_t OpenCLModule::initialize(OpenCLApi* const* holder, KrCompile compile) {
    constexpr std::int32_t kNothingBuilt = 1;
    if (holder != nullptr) holder_ = holder;
    if (program_ != nullptr || compile == nullptr) return kNothingBuilt;
    if (api() == nullptr) return KR_FAILED;
    return guarded([&] {
        std::string text;
        try {
            text = OpenCL::expand(*source_);
        } catch (const std::bad_alloc&) {
            return kNothingBuilt;
        }
        program_ = static_cast<cl_program>(compile(text.c_str(), 0));
        if (program_ == nullptr) return kNothingBuilt;
        std::int32_t result = KR_OK;
        for (std::size_t i = 0; i < count_; ++i) {
            cl_int status = CL_SUCCESS;
            kernels_[i] = api()->clCreateKernel(program_, names_[i], &status);
            workSizes_[i] = {};
            if (status != CL_SUCCESS || kernels_[i] == nullptr) result = KR_FAILED;
        }
        return result;
    });
}

void OpenCLModule::shutdown() {
    OpenCLApi* table = api();
    for (cl_kernel& kernel : kernels_) {
        if (kernel != nullptr && table != nullptr) table->clReleaseKernel(kernel);
        kernel = nullptr;
    }
    if (program_ != nullptr && table != nullptr) table->clReleaseProgram(program_);
    program_ = nullptr;
}

bool OpenCLModule::ready() const {
    const auto missing = [](cl_kernel kernel) { return kernel == nullptr; };
    return api() != nullptr && program_ != nullptr &&
           std::none_of(kernels_.begin(), kernels_.begin() + count_, missing);
}

ImageInfo OpenCLModule::imageInfo(cl_mem image) const {
    ImageInfo info;
    const auto ask = [&](cl_image_info what, std::size_t size, void* to) {
        return api()->clGetImageInfo(image, what, size, to, nullptr) == CL_SUCCESS;
    };
    std::size_t depth = 0; // 0 in two dimensions
    const bool known = image != nullptr && ask(CL_IMAGE_FORMAT, sizeof info.format, &info.format) &&
                       ask(CL_IMAGE_WIDTH, sizeof info.width, &info.width) &&
                       ask(CL_IMAGE_HEIGHT, sizeof info.height, &info.height) &&
                       ask(CL_IMAGE_DEPTH, sizeof depth, &depth);
    const cl_channel_order order = info.format.image_channel_order;
    const cl_channel_type type = info.format.image_channel_data_type;
    const bool suits = known && depth <= 1 && (order == CL_RGBA || order == CL_BGRA) &&
                       (type == CL_UNORM_INT8 || type == CL_FLOAT) && info.height > 0;
    return suits ? info : ImageInfo();
}

std::size_t OpenCLModule::bufferBytes(cl_mem buffer) const {
    cl_mem_object_type type = 0;
    std::size_t bytes = 0;
    const auto ask = [&](cl_mem_info what, std::size_t size, void* to) {
        return api()->clGetMemObjectInfo(buffer, what, size, to, nullptr) == CL_SUCCESS;
    };
    const bool known = buffer != nullptr && ask(CL_MEM_TYPE, sizeof type, &type) && type == CL_MEM_OBJECT_BUFFER &&
                       ask(CL_MEM_SIZE, sizeof bytes, &bytes);
    return known ? bytes : 0;
}

std::int32_t OpenCLModule::copyImage(cl_command_queue queue, cl_mem source, cl_mem destination,
                                     const std::size_t (&from)[3], const std::size_t (&to)[3],
                                     const std::size_t (&size)[3]) {
    if (queue == nullptr) return KR_FAILED;
    return api()->enqueueImageCopy(queue, source, destination, from, to, size) == CL_SUCCESS ? KR_OK : KR_FAILED;
}

std::int32_t OpenCLModule::enqueue(std::size_t kernel, cl_command_queue queue, std::size_t width, std::size_t height) {
    std::size_t global[2] = {width, height}, local[2] = {};
    OpenCL::chooseWorkSizes(*api(), queue, kernels_[kernel], workSizes_[kernel], 2, global, local);
    const cl_int status = api()->enqueueKernel(queue, kernels_[kernel], 2, global, local[0] != 0 ? local : nullptr);
    return status == CL_SUCCESS ? KR_OK : KR_FAILED;
}

} // namespace pixelops
