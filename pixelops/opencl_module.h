// A set of kernels that the library builds for its caller, with the caller's table of entry points and compiler, and
// what the operations on them share.
#pragma once

#include <array>
#include <mutex>

#include "opencl/program.h"

#include "pixelops/kr_pixelops.h"

namespace pixelops {

// An image that operations work on, as the device knows it. Everything is 0 for other objects and formats.
struct ImageInfo {
    cl_image_format format{};
    std::size_t width = 0, height = 0;
};

// One per module, a global. It has no destructor: callers may call after the library's static destructors have run.
class OpenCLModule {
public:
    // Kernels in the order in which they are made, which are also their numbers.
    template <std::size_t n>
    constexpr OpenCLModule(const OpenCL::PackedSource& source, const char* const (&kernels)[n])
        : source_(&source), count_(n) {
        static_assert(n <= kMostKernels);
        for (std::size_t i = 0; i < n; ++i) names_[i] = kernels[i];
    }

    // As the exported functions of these names say.
    std::int32_t initialize(OpenCLApi* const* api, KrCompile compile);
    void shutdown();

    // Whether there is a table that can be locked, and every kernel.
    bool ready() const;
    // The rest asks for a module that is ready.
    ImageInfo imageInfo(cl_mem image) const;
    std::size_t bufferBytes(cl_mem buffer) const; // 0 for other objects
    // Counted, and without the lock that kernels take.
    std::int32_t copyImage(cl_command_queue queue, cl_mem source, cl_mem destination, const std::size_t (&from)[3],
                           const std::size_t (&to)[3], const std::size_t (&size)[3]);

    // Sets all arguments of a kernel in order and enqueues it over width x height items, under the table's call lock.
    template <class... Arguments>
    std::int32_t run(std::size_t kernel, cl_command_queue queue, std::size_t width, std::size_t height,
                     const Arguments&... arguments) {
        const std::lock_guard guard(*api()->callLock);
        if (queue == nullptr) return KR_FAILED;
        cl_uint index = 0;
        const bool set = (setArgument(kernels_[kernel], index++, &arguments) && ...);
        return set ? enqueue(kernel, queue, width, height) : KR_FAILED;
    }

private:
    static constexpr std::size_t kMostKernels = 4;

    OpenCLApi* api() const {
        OpenCLApi* table = holder_ != nullptr ? *holder_ : nullptr;
        return table != nullptr && table->callLock != nullptr ? table : nullptr;
    }
    template <class T>
    bool setArgument(cl_kernel kernel, cl_uint index, const T* value) {
        return api()->clSetKernelArg(kernel, index, sizeof *value, value) == CL_SUCCESS;
    }
    std::int32_t enqueue(std::size_t kernel, cl_command_queue queue, std::size_t width, std::size_t height);

    const OpenCL::PackedSource* source_;
    std::size_t count_;
    std::array<const char*, kMostKernels> names_{};
    OpenCLApi* const* holder_ = nullptr;
    cl_program program_ = nullptr;
    std::array<cl_kernel, kMostKernels> kernels_{};
    std::array<OpenCL::WorkSizes, kMostKernels> workSizes_{};
};

// An operation's way out: nothing is thrown to the caller.
template <class Operation>
std::int32_t guarded(Operation operation) {
    try {
        return operation();
    } catch (...) {
        return KR_FAILED;
    }
}

} // namespace pixelops
