// An effect's kernels: the packed source, the program that the host compiles from it, and how a kernel is run.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <type_traits>

#include "opencl/work_sizes.h"

namespace OpenCL {

// Indices into the dictionary of words that all kernel sources share.
using PackedSource = std::span<const std::uint16_t>;
extern const char* const kWords[];

// The source text, word by word with a blank between words.
std::string expand(PackedSource source);

// A host's compile function: source text, a flag (non-zero: may be left undone), the program to fill.
using Compile = int (*)(const char* source, int optional, void* program);

inline constexpr std::size_t kMostKernels = 10;

// One per effect, a global; its kernels are shared by all instances. Every member function but the constructor takes
// the program's lock, and a KernelCall holds it while it lives, so renders of one effect do not mix up their arguments
// and nothing is released under a render.
class Program {
public:
    // Kernels in the order in which they are made. The source and the names must outlive the program; a second source
    // adds kernels that several effects share.
    Program(PackedSource source, std::initializer_list<const char*> kernelNames, PackedSource shared = {});

    // Loads the table of entry points, unless it is there already, and tries to build.
    void load(Compile compile);
    // Builds unless that is done, or there is no compile function. A failure leaves everything null.
    void build(Compile compile, int optional);
    void release();

    bool built() const { return program_ != nullptr; }
    OpenCLApi& api() { return api_; }

private:
    friend class KernelCall;
    void buildLocked(Compile compile, int optional);

    OpenCLApi api_;
    PackedSource source_, shared_;
    std::array<const char*, kMostKernels> names_{};
    std::array<cl_kernel, kMostKernels> kernels_{};
    std::array<WorkSizes, kMostKernels> workSizes_{};
    cl_program program_ = nullptr;
    std::mutex lock_;
};

// Sets the arguments of one kernel in order and runs it. The first failure stops the setting; run() throws it.
class KernelCall {
public:
    KernelCall(Program& program, std::size_t kernel, cl_command_queue queue);

    // The next argument: a memory object, an int, or a block of floats or ints, by value.
    template <class T>
    KernelCall& arg(const T& value) {
        static_assert(std::is_trivially_copyable_v<T> &&
                      (sizeof(T) == 4 || sizeof(T) == 8 || sizeof(T) == 16 || sizeof(T) == 32 || sizeof(T) == 64));
        set(sizeof value, &value);
        return *this;
    }

    // Enqueues the kernel over so many items in one dimension, for passes along whole lines; else as run().
    void runLines(int count, const char* message = nullptr);
    // Enqueues the kernel over width x height items. Throws the failed render, with kOfxStatFailed or, where given, as
    // a runtime error with that text. Does not wait: the host owns the queue.
    void run(int width, int height, const char* message = nullptr);

private:
    void set(std::size_t size, const void* value);
    void finish(const char* message);

    Program& program_;
    std::unique_lock<std::mutex> guard_;
    std::size_t kernel_;
    cl_command_queue queue_;
    cl_uint index_ = 0;
    cl_int status_ = CL_SUCCESS;
};

} // namespace OpenCL
