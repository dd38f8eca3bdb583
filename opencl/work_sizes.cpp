// Work-group sizes from what the kernel and the device allow.
#include "opencl/work_sizes.h"

#include <algorithm>

namespace OpenCL {
namespace {

struct KernelLimits {
    std::size_t most = 0;         // work items in a group; 0 unknown
    std::size_t compiled[3] = {}; // fixed by the kernel's source; 0 where it leaves the choice
    std::size_t multiple = 0;     // preferred divisor; 0 unknown
};

// A query that fails leaves its value at 0.
KernelLimits limitsOf(OpenCLApi& api, cl_kernel kernel, cl_device_id device) {
    KernelLimits limits;
    const auto ask = [&](cl_kernel_work_group_info what, std::size_t size, void* to) {
        return api.clGetKernelWorkGroupInfo(kernel, device, what, size, to, nullptr) == CL_SUCCESS;
    };
    if (!ask(CL_KERNEL_WORK_GROUP_SIZE, sizeof limits.most, &limits.most)) limits.most = 0;
    if (!ask(CL_KERNEL_COMPILE_WORK_GROUP_SIZE, sizeof limits.compiled, limits.compiled)) {
        std::fill_n(limits.compiled, 3, std::size_t{0});
    }
    if (!ask(CL_KERNEL_PREFERRED_WORK_GROUP_SIZE_MULTIPLE, sizeof limits.multiple, &limits.multiple)) {
        limits.multiple = 0;
    }
    return limits;
}

void askDevice(OpenCLApi& api, cl_device_id device) {
    if (api.deviceMaxWorkGroupSize != 0) return;
    std::size_t most = 0, items[3] = {};
    const bool known =
        api.clGetDeviceInfo(device, CL_DEVICE_MAX_WORK_GROUP_SIZE, sizeof most, &most, nullptr) == CL_SUCCESS &&
        api.clGetDeviceInfo(device, CL_DEVICE_MAX_WORK_ITEM_SIZES, sizeof items, items, nullptr) == CL_SUCCESS;
    if (!known) return;
    api.deviceMaxWorkGroupSize = most;
    std::copy_n(items, 3, api.deviceMaxWorkItemSizes);
}

// Halves 512 x 512 until it fits, y first, then lets y grow to fill the limit in steps that suit the device.
void chooseSquare(const OpenCLApi& api, std::size_t limit, std::size_t multiple, std::size_t* local) {
    const auto& items = api.deviceMaxWorkItemSizes;
    if (items[0] == 0 || items[1] == 0 || limit == 0) return;
    std::size_t x = 512, y = 512;
    while (x * y > limit || x > items[0] || y > items[1]) {
        if (y < x) {
            x /= 2;
            if (x < 2) return;
        } else {
            y /= 2;
        }
    }
    if (multiple != 0) {
        std::size_t q = limit / x;
        while (q > y && x * q % multiple != 0) --q;
        y = q;
    }
    local[0] = x, local[1] = y;
}

void chooseLine(const OpenCLApi& api, std::size_t limit, std::size_t multiple, std::size_t* local) {
    const std::size_t items = api.deviceMaxWorkItemSizes[0];
    if (items == 0 || limit == 0) return;
    const std::size_t x = std::min(items, limit);
    local[0] = multiple == 0 ? x : (x + multiple - 1) / multiple * multiple;
}

void choose(OpenCLApi& api, cl_command_queue queue, cl_kernel kernel, cl_uint dimensions, std::size_t* local) {
    cl_device_id device = nullptr;
    if (api.clGetCommandQueueInfo(queue, CL_QUEUE_DEVICE, sizeof device, &device, nullptr) != CL_SUCCESS) return;
    const KernelLimits kernelLimits = limitsOf(api, kernel, device);
    askDevice(api, device);
    const std::size_t most = api.deviceMaxWorkGroupSize;
    const std::size_t limit = kernelLimits.most == 0 ? most : std::min(most, kernelLimits.most);
    if (kernelLimits.compiled[0] != 0) {
        std::copy_n(kernelLimits.compiled, dimensions, local);
    } else if (dimensions == 2) {
        const auto& preferred = api.preferredLocalSize;
        if (preferred[0] != 0 && preferred[1] != 0 && preferred[0] * preferred[1] <= limit) {
            std::copy_n(preferred, 2, local);
        } else {
            chooseSquare(api, limit, kernelLimits.multiple, local);
        }
    } else if (dimensions == 1) {
        chooseLine(api, limit, kernelLimits.multiple, local);
    }
}

} // namespace

std::size_t chooseWorkSizes(OpenCLApi& api, cl_command_queue queue, cl_kernel kernel, WorkSizes& cache,
                            cl_uint dimensions, std::size_t* global, std::size_t* local) {
    if (cache.dimensions != dimensions) {
        std::fill_n(cache.local, 3, std::size_t{0});
        choose(api, queue, kernel, dimensions, cache.local);
        cache.dimensions = dimensions;
    }
    std::copy_n(cache.local, dimensions, local);
    std::size_t groups = 0;
    if (local[0] == 0) return groups;
    for (cl_uint i = 0; i < dimensions; ++i) {
        if (local[i] == 0) continue;
        groups = (global[i] + local[i] - 1) / local[i];
        global[i] = groups * local[i];
    }
    return groups;
}

} // namespace OpenCL
