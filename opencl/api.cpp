// Loading the table of OpenCL entry points.
#include "opencl/api.h"

#include "opencl/library.h"

void OpenCLApi::unload() {
    if (initialised != 0) {
        delete callLock;
        delete spareLock;
    }
    if (module != nullptr) OpenCL::closeLibrary(module);
    *this = {};
}

void OpenCLApi::load() {
    unload();
    callLock = new Lock;
    spareLock = new Lock;
    initialised = 1;

    module = OpenCL::openLibrary(OpenCL::libraryNames());
    if (module == nullptr) return;
#define CL_ENTRY(name) entry.name = reinterpret_cast<decltype(entry.name)>(OpenCL::findSymbol(module, #name));
#include "opencl/entries.inc"
#undef CL_ENTRY
}

cl_int OpenCLApi::enqueueKernel(cl_command_queue queue, cl_kernel kernel, cl_uint dimensions, const std::size_t* global,
                                const std::size_t* local) {
    const auto lock = guard();
    ++enqueueCount;
    return clEnqueueNDRangeKernel(queue, kernel, dimensions, nullptr, global, local, 0, nullptr, nullptr);
}

cl_int OpenCLApi::enqueueImageCopy(cl_command_queue queue, cl_mem source, cl_mem destination,
                                   const std::size_t* sourceOrigin, const std::size_t* destinationOrigin,
                                   const std::size_t* region) {
    const auto lock = guard();
    ++copyCount;
    return clEnqueueCopyImage(queue, source, destination, sourceOrigin, destinationOrigin, region, 0, nullptr, nullptr);
}
