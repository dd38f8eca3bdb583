// The Gaussian blur on an OpenCL device.
#pragma once

#include <deque>

#include "opencl/program.h"
#include "opencl/temporary_image.h"
#include "pixelops/blur.h"

namespace OFX {

// The names of its kernels, in pixelops/gaussian.cl; a program that blurs has them after its own and takes
// kernels::gaussian for its shared source.
#define OFX_GAUSSIAN_KERNELS "k3b1e9f7c20", "k3b1e9f7c21", "k3b1e9f7c22"

// Where a blur takes place: a program, the index of its first Gaussian kernel, and the size of the images in pixels.
struct DeviceBlurTarget {
    OpenCL::Program& program;
    std::size_t firstKernel;
    cl_context context;
    cl_command_queue queue;
    int width, height;
};

// Enqueues the passes that blur an image when it is made. The result is first() + share() second(), since each pass of
// the recursion leaves its two directions apart. Temporary images have the source's format and live as long as this.
class DeviceBlur {
public:
    // Sigmas in pixels. Throws what temporary images and kernels throw.
    DeviceBlur(const DeviceBlurTarget& target, cl_mem source, double sigmaX, double sigmaY);

    cl_mem first() const { return first_; }
    cl_mem second() const { return second_; }
    float share() const { return share_; }

private:
    enum Axis : std::size_t { Columns, Rows };
    void blur(const DeviceBlurTarget& target, const pixelops::Gaussian& gaussian, Axis axis);

    std::deque<OpenCL::TemporaryImage> images_;
    cl_mem first_, second_;
    float share_ = 0;
};

} // namespace OFX
