// Choosing work-group sizes for kernels.
#pragma once

#include <cstddef>

#include "opencl/api.h"

namespace OpenCL {

// The local size last chosen for a kernel; one per kernel. Empty while dimensions is 0.
struct WorkSizes {
    cl_uint dimensions = 0;
    std::size_t local[3] = {};
};

// Chooses local sizes for `dimensions` (1 to 3) and rounds the global sizes up to multiples of them. A local size of 0
// means that none could be chosen: the kernel then runs without one, and the global sizes stay. The choice is kept in
// the cache, the device's limits in the table. Answers the number of groups in the last dimension rounded.
std::size_t chooseWorkSizes(OpenCLApi& api, cl_command_queue queue, cl_kernel kernel, WorkSizes& cache,
                            cl_uint dimensions, std::size_t* global, std::size_t* local);

} // namespace OpenCL
