// An OpenCL library that computes nothing.
#include "tests/fake_opencl.h"

#include <algorithm>
#include <cstring>

#include "opencl/headers.h"

namespace {

fake::Library library;

// Records a call; the status to answer.
cl_int called(const char* name, std::vector<std::size_t> numbers = {}, const void* value = nullptr,
              std::size_t size = 0) {
    const auto* bytes = static_cast<const unsigned char*>(value);
    library.calls.push_back({name, std::move(numbers),
                             value ? std::vector<unsigned char>(bytes, bytes + size) : std::vector<unsigned char>()});
    if (library.failing != name) return CL_SUCCESS;
    return library.failAfter-- > 0 ? CL_SUCCESS : CL_OUT_OF_RESOURCES;
}

template <class T>
T object(int number) {
    return reinterpret_cast<T>(static_cast<std::uintptr_t>(0x1000 + number));
}

template <class T>
T created(const char* name, int number, cl_int* status, int* alive = nullptr) {
    const cl_int result = called(name);
    if (status) *status = result;
    if (result != CL_SUCCESS) return nullptr;
    if (alive) ++*alive;
    return object<T>(number);
}

cl_int answer(cl_int status, const void* value, std::size_t size, std::size_t room, void* to, std::size_t* needed) {
    if (needed) *needed = size;
    if (to) std::memcpy(to, value, std::min(room, size));
    return status;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

fake::Library* fakeLibrary() { return &library; }

cl_int clGetPlatformIDs(cl_uint, cl_platform_id* platforms, cl_uint* count) {
    if (platforms) *platforms = object<cl_platform_id>(1);
    if (count) *count = 1;
    return CL_SUCCESS;
}

cl_int clGetPlatformInfo(cl_platform_id, cl_platform_info, std::size_t room, void* to, std::size_t* needed) {
    return answer(CL_SUCCESS, "fake", 5, room, to, needed);
}

cl_int clGetDeviceIDs(cl_platform_id, cl_device_type, cl_uint, cl_device_id* devices, cl_uint* count) {
    if (devices) *devices = object<cl_device_id>(2);
    if (count) *count = 1;
    return CL_SUCCESS;
}

cl_int clGetDeviceInfo(cl_device_id, cl_device_info what, std::size_t room, void* to, std::size_t* needed) {
    const cl_bool yes = CL_TRUE;
    if (what == CL_DEVICE_IMAGE_SUPPORT) return answer(CL_SUCCESS, &yes, sizeof yes, room, to, needed);
    if (what == CL_DEVICE_MAX_WORK_GROUP_SIZE)
        return answer(called("clGetDeviceInfo"), &library.groupLimit, sizeof library.groupLimit, room, to, needed);
    if (what == CL_DEVICE_MAX_WORK_ITEM_SIZES)
        return answer(called("clGetDeviceInfo"), library.itemSizes, sizeof library.itemSizes, room, to, needed);
    return answer(CL_SUCCESS, "fake", 5, room, to, needed);
}

cl_context clCreateContext(const cl_context_properties*, cl_uint, const cl_device_id*,
                           void (*)(const char*, const void*, std::size_t, void*), void*, cl_int* status) {
    *status = CL_SUCCESS;
    return object<cl_context>(3);
}

cl_int clReleaseContext(cl_context) { return CL_SUCCESS; }

cl_command_queue clCreateCommandQueue(cl_context, cl_device_id, cl_command_queue_properties, cl_int* status) {
    *status = CL_SUCCESS;
    return object<cl_command_queue>(4);
}

cl_int clReleaseCommandQueue(cl_command_queue) { return CL_SUCCESS; }

cl_int clGetCommandQueueInfo(cl_command_queue, cl_command_queue_info, std::size_t room, void* to, std::size_t* needed) {
    const auto device = object<cl_device_id>(2);
    return answer(called("clGetCommandQueueInfo"), &device, sizeof device, room, to, needed);
}

cl_program clCreateProgramWithSource(cl_context, cl_uint, const char**, const std::size_t*, cl_int* status) {
    return created<cl_program>("clCreateProgramWithSource", 5, status, &library.programs);
}

cl_int clBuildProgram(cl_program, cl_uint, const cl_device_id*, const char*, void (*)(cl_program, void*), void*) {
    return called("clBuildProgram");
}

cl_int clGetProgramBuildInfo(cl_program, cl_device_id, cl_program_build_info, std::size_t room, void* to,
                             std::size_t* needed) {
    return answer(CL_SUCCESS, "the build log", 14, room, to, needed);
}

cl_int clReleaseProgram(cl_program) {
    --library.programs;
    return called("clReleaseProgram");
}

cl_kernel clCreateKernel(cl_program, const char*, cl_int* status) {
    return created<cl_kernel>("clCreateKernel", 6, status, &library.kernels);
}

cl_int clReleaseKernel(cl_kernel) {
    --library.kernels;
    return called("clReleaseKernel");
}

cl_int clSetKernelArg(cl_kernel kernel, cl_uint index, std::size_t size, const void* value) {
    const cl_int status = called("clSetKernelArg", {index, size}, value, size);
    return kernel ? status : CL_INVALID_KERNEL;
}

cl_int clGetKernelWorkGroupInfo(cl_kernel, cl_device_id, cl_kernel_work_group_info what, std::size_t room, void* to,
                                std::size_t* needed) {
    const cl_int status = called("clGetKernelWorkGroupInfo");
    if (what == CL_KERNEL_COMPILE_WORK_GROUP_SIZE)
        return answer(status, library.compiled, sizeof library.compiled, room, to, needed);
    const std::size_t& value = what == CL_KERNEL_WORK_GROUP_SIZE ? library.kernelLimit : library.multiple;
    return answer(status, &value, sizeof value, room, to, needed);
}

cl_int clEnqueueNDRangeKernel(cl_command_queue, cl_kernel, cl_uint dimensions, const std::size_t*,
                              const std::size_t* global, const std::size_t* local, cl_uint, const cl_event*,
                              cl_event*) {
    std::vector<std::size_t> numbers{dimensions};
    numbers.insert(numbers.end(), global, global + dimensions);
    if (local) numbers.insert(numbers.end(), local, local + dimensions);
    return called("clEnqueueNDRangeKernel", std::move(numbers));
}

cl_mem clCreateImage2D(cl_context, cl_mem_flags flags, const cl_image_format* format, std::size_t width,
                       std::size_t height, std::size_t, void*, cl_int* status) {
    *status = called("clCreateImage2D", {flags, format->image_channel_order, width, height});
    return *status == CL_SUCCESS ? object<cl_mem>(100 + ++library.images) : nullptr;
}

cl_int clGetImageInfo(cl_mem, cl_image_info, std::size_t room, void* to, std::size_t* needed) {
    const cl_image_format format = {CL_BGRA, CL_UNORM_INT8};
    return answer(called("clGetImageInfo"), &format, sizeof format, room, to, needed);
}

cl_int clReleaseMemObject(cl_mem) {
    --library.images;
    return CL_SUCCESS;
}

cl_int clEnqueueReadImage(cl_command_queue, cl_mem, cl_bool, const std::size_t*, const std::size_t*, std::size_t,
                          std::size_t, void*, cl_uint, const cl_event*, cl_event*) {
    return called("clEnqueueReadImage");
}

cl_int clFinish(cl_command_queue) { return CL_SUCCESS; }

} // extern "C"
#pragma GCC visibility pop
