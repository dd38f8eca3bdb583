// The passes of the Gaussian blur on an OpenCL device.
#include "ofx/device_blur.h"

namespace OFX {
namespace {

cl_float8 block(const pixelops::Gaussian::Section& s) {
    return {{s.n0, s.n1, s.m1, s.m2, s.d1, s.d2, s.forwardStart, s.backwardStart}};
}

} // namespace

DeviceBlur::DeviceBlur(const DeviceBlurTarget& target, cl_mem source, double sigmaX, double sigmaY)
    : first_(source), second_(source) {
    blur(target, pixelops::Gaussian(sigmaY), Columns);
    blur(target, pixelops::Gaussian(sigmaX), Rows);
}

void DeviceBlur::blur(const DeviceBlurTarget& target, const pixelops::Gaussian& gaussian, Axis axis) {
    if (gaussian.taps == 0) return;
    const auto temporary = [&] {
        return images_.emplace_back(target.program.api(), target.context, first_, target.width, target.height).memory();
    };
    if (gaussian.taps < 0) {
        const cl_mem forward = temporary(), backward = temporary();
        OpenCL::KernelCall(target.program, target.firstKernel + axis, target.queue)
            .arg(first_)
            .arg(second_)
            .arg(share_)
            .arg(forward)
            .arg(backward)
            .arg(target.width)
            .arg(target.height)
            .arg(block(gaussian.sections[0]))
            .arg(block(gaussian.sections[1]))
            .runLines(2 * (axis == Columns ? target.width : target.height));
        first_ = forward, second_ = backward, share_ = 1;
        return;
    }
    const cl_mem blurred = temporary();
    const float* w = gaussian.weights;
    OpenCL::KernelCall(target.program, target.firstKernel + 2, target.queue)
        .arg(first_)
        .arg(second_)
        .arg(share_)
        .arg(blurred)
        .arg(target.width)
        .arg(target.height)
        .arg(axis == Columns ? cl_int2{{0, 1}} : cl_int2{{1, 0}})
        .arg(cl_float8{{w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7]}})
        .run(target.width, target.height);
    first_ = second_ = blurred, share_ = 0;
}

} // namespace OFX
