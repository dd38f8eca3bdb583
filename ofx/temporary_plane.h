// Pictures that live during one render, between its stages, and their blur over the host's threads.
#pragma once

#include <cstddef>

#include "ofx/image_effect.h"
#include "pixelops/blur.h"

namespace OFX {

// A plane of floats in memory of the host, or of our own where the host has no memory suite. The pixels are
// uninitialised, what pads the rows is 0.
class TemporaryPlane {
public:
    // Throws std::bad_alloc when there is no memory.
    TemporaryPlane(const ImageEffect& effect, int width, int height, std::size_t components);
    ~TemporaryPlane();
    TemporaryPlane(const TemporaryPlane&) = delete;
    TemporaryPlane& operator=(const TemporaryPlane&) = delete;

    const pixelops::Plane& plane() const { return plane_; }
    // Blurs in place; sigmas in pixels. Throws std::bad_alloc.
    void blur(double sigmaX, double sigmaY, pixelops::Edge edge = pixelops::Edge::Repeat);

private:
    void* memory_ = nullptr;
    bool ofHost_ = false;
    pixelops::Plane plane_;
};

} // namespace OFX
