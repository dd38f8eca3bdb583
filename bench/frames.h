// Frames to measure on: rings of source and destination images that together exceed the last-level cache, with content
// that is neither flat nor zero, and the plain loops that effects are compared with.
#pragma once

#include <memory>
#include <vector>

#include "host/image.h"

namespace bench {

std::size_t lastLevelCache(); // bytes; a guess where the system does not tell

struct Size {
    int width, height;
};

class Frames {
public:
    // As many frames of either kind as fill that many bytes, but no fewer than three.
    Frames(Size size, host::Depth depth, std::size_t bytes = 2 * lastLevelCache());

    host::Format format() const { return {depth_}; }
    void advance() { ++at_; }
    // Input number i of the present turn, and the image to render into.
    const std::shared_ptr<host::Image>& source(std::size_t i = 0) const {
        return sources_[(at_ + i) % sources_.size()];
    }
    const std::shared_ptr<host::Image>& destination() const { return destinations_[at_ % destinations_.size()]; }

    // One frame read and one written past the caches; two read and one written.
    void copy();
    void triad();

private:
    host::Depth depth_;
    std::vector<std::shared_ptr<host::Image>> sources_, destinations_;
    std::size_t at_ = 0;
};

// Memory that a job takes beside what was there when this was made.
class PeakMemory {
public:
    PeakMemory();
    std::size_t bytes() const; // 0 where the system does not tell

private:
    std::size_t before_ = 0;
};

} // namespace bench
