// Building, releasing and running kernels.
#include "opencl/program.h"

#include <algorithm>
#include <stdexcept>

#include "ofx/exception.h"

namespace OpenCL {

std::string expand(PackedSource source) {
    std::string text;
    for (const std::uint16_t index : source) text.append(kWords[index]).append(" ");
    return text;
}

Program::Program(PackedSource source, std::initializer_list<const char*> kernelNames, PackedSource shared)
    : source_(source), shared_(shared) {
    std::copy(kernelNames.begin(), kernelNames.end(), names_.begin());
}

void Program::load(Compile compile) {
    const std::lock_guard guard(lock_);
    // Hosts load again and again, also while others render: a table stays while its kernels live, and where the host
    // compiles nothing; a missing library is looked for once.
    const bool starting = program_ == nullptr && compile != nullptr;
    if (starting || api_.initialised == 0) api_.load();
    buildLocked(compile, 1);
}

void Program::build(Compile compile, int optional) {
    const std::lock_guard guard(lock_);
    buildLocked(compile, optional);
}

void Program::buildLocked(Compile compile, int optional) {
    const auto set = [](cl_kernel kernel) { return kernel != nullptr; };
    if (compile == nullptr || program_ != nullptr || std::ranges::any_of(kernels_, set)) return;
    const std::string text = expand(source_) + expand(shared_);
    cl_program program = nullptr;
    // A host may answer OK and leave an optional program out.
    if (compile(text.c_str(), optional, &program) != kOfxStatOK || program == nullptr) return;
    program_ = program;
    for (std::size_t i = 0; i < kMostKernels && names_[i] != nullptr; ++i) {
        cl_int status = CL_SUCCESS;
        kernels_[i] = api_.clCreateKernel(program_, names_[i], &status);
        workSizes_[i] = {};
    }
}

void Program::release() {
    const std::lock_guard guard(lock_);
    for (cl_kernel& kernel : kernels_) {
        if (kernel != nullptr) api_.clReleaseKernel(kernel);
        kernel = nullptr;
    }
    if (program_ != nullptr) api_.clReleaseProgram(program_);
    program_ = nullptr;
}

KernelCall::KernelCall(Program& program, std::size_t kernel, cl_command_queue queue)
    : program_(program), guard_(program.lock_), kernel_(kernel), queue_(queue) {
    // Not every driver looks at the handle before it uses it.
    if (program.kernels_[kernel] == nullptr) status_ = CL_INVALID_KERNEL;
}

void KernelCall::set(std::size_t size, const void* value) {
    if (status_ == CL_SUCCESS) status_ = program_.api_.clSetKernelArg(program_.kernels_[kernel_], index_, size, value);
    ++index_;
}

void KernelCall::runLines(int count, const char* message) {
    if (status_ == CL_SUCCESS) {
        const auto global = static_cast<std::size_t>(count);
        status_ = program_.api_.enqueueKernel(queue_, program_.kernels_[kernel_], 1, &global, nullptr);
    }
    finish(message);
}

void KernelCall::run(int width, int height, const char* message) {
    if (status_ == CL_SUCCESS) {
        std::size_t global[2] = {static_cast<std::size_t>(width), static_cast<std::size_t>(height)}, local[2] = {};
        const cl_kernel kernel = program_.kernels_[kernel_];
        chooseWorkSizes(program_.api_, queue_, kernel, program_.workSizes_[kernel_], 2, global, local);
        status_ = program_.api_.enqueueKernel(queue_, kernel, 2, global, local[0] != 0 ? local : nullptr);
    }
    finish(message);
}

void KernelCall::finish(const char* message) {
    if (status_ == CL_SUCCESS) return;
    if (message != nullptr) throw std::runtime_error(message);
    throw OFX::Exception::Suite(kOfxStatFailed, "OpenCL answered " + std::to_string(status_));
}

} // namespace OpenCL
