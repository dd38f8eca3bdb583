// Measuring footage: luma histograms of frames, over the host's threads.
#pragma once

#include <array>
#include <cstdint>

#include "ofx/image_effect.h"

namespace OFX {

// How many pixels have each luma code, 0..255 (Recommendation ITU-R BT.601 weights). Pixels without alpha show nothing
// and do not count. Integer sums, so that the result does not depend on the number of threads.
class LumaHistogram {
public:
    // Throws Exception::Suite for images that are not RGBA bytes or floats. Floats are limited to 0..1.
    void add(const Image& image);

    bool empty() const { return total_ == 0; }
    // The code, as 0..1, below which no more than this share of the pixels lies.
    double low(double share) const;
    // The code, as 0..1, above which no more than this share of the pixels lies.
    double high(double share) const;

private:
    std::array<std::uint64_t, 256> bins_{};
    std::uint64_t total_ = 0;
};

} // namespace OFX
