// The table of OpenCL entry points, loaded at run time: nothing is linked, and a machine without OpenCL only lacks it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <type_traits>

#include "opencl/headers.h"

// One table per user of OpenCL, a global that starts zeroed. It has no destructor: hosts call in after the static
// destructors of a library have run.
struct OpenCLApi {
    using Lock = std::recursive_mutex;

    void* module = nullptr;    // the library; null when there is none
    Lock* callLock = nullptr;  // serialises calls while `serialise` is set
    Lock* spareLock = nullptr; // made and deleted together with callLock
    std::uint32_t initialised = 0;
    std::uint32_t serialise = 0;            // nothing sets it; a build can, to serialise all traffic of a table
    std::size_t deviceMaxWorkGroupSize = 0; // 0 until asked for
    std::size_t deviceMaxWorkItemSizes[3] = {};
    std::size_t preferredLocalSize[2] = {}; // used as it is where both are set and fit
    struct Entries {
#define CL_ENTRY(name) decltype(&::name) name = nullptr;
#include "opencl/entries.inc"
#undef CL_ENTRY
    } entry;
    std::uint32_t copyCount = 0, enqueueCount = 0;

    // (Re)initialises the table: frees the library and the locks, clears everything, loads again. Must not run beside
    // calls through the table.
    void load();
    // Frees the library and the locks, and clears everything; for tables that are not globals.
    void unload();
    bool available() const { return module != nullptr; }

    // One wrapper per entry, with the function's arguments and result. A missing entry answers -2, or null.
#define CL_ENTRY(name)                         \
    template <class... A>                      \
    auto name(A... arguments) {                \
        return call(entry.name, arguments...); \
    }
#include "opencl/entries.inc"
#undef CL_ENTRY

    // The counted calls.
    cl_int enqueueKernel(cl_command_queue queue, cl_kernel kernel, cl_uint dimensions, const std::size_t* global,
                         const std::size_t* local);
    cl_int enqueueImageCopy(cl_command_queue queue, cl_mem source, cl_mem destination, const std::size_t* sourceOrigin,
                            const std::size_t* destinationOrigin, const std::size_t* region);

private:
    std::unique_lock<Lock> guard() {
        return serialise != 0 && callLock != nullptr ? std::unique_lock(*callLock) : std::unique_lock<Lock>();
    }

    template <class R, class... P, class... A>
    R call(R (*function)(P...), A... arguments) {
        const auto lock = guard();
        if constexpr (std::is_same_v<R, cl_int>) {
            return function != nullptr ? function(static_cast<P>(arguments)...) : cl_int{-2};
        } else {
            return function != nullptr ? function(static_cast<P>(arguments)...) : nullptr;
        }
    }
};
