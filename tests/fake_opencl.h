// An OpenCL library that computes nothing: it records what is called, and fails where a test wants it to. The tests
// find it in the place of the system's library.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace fake {

struct Call {
    std::string name;
    std::vector<std::size_t>
        numbers; // clSetKernelArg: index, size; clEnqueueNDRangeKernel: dimensions, global..., local...
    std::vector<unsigned char> value; // clSetKernelArg
};

struct Library {
    std::vector<Call> calls;
    std::string failing;                       // the function that fails
    int failAfter = 0;                         // so many calls of it succeed first
    int kernels = 0, programs = 0, images = 0; // alive
    std::size_t groupLimit = 256, itemSizes[3] = {1024, 1024, 64}, kernelLimit = 0, compiled[3] = {}, multiple = 0;
};

} // namespace fake

// The one instance, in the library.
extern "C" fake::Library* fakeLibrary();
