// The last few frames of something that makes them one by one, since an effect may ask for a frame's neighbours and
// several effects for the same frame.
#pragma once
#include <deque>
#include <memory>
#include <utility>

#include "host/image.h"

namespace cli {

class RecentFrames {
public:
    // Null when the frame is not kept.
    std::shared_ptr<host::Image> find(double time) const {
        for (const auto& [known, image] : frames_)
            if (known == time) return image;
        return nullptr;
    }

    void keep(double time, std::shared_ptr<host::Image> image) {
        constexpr std::size_t kMost = 4;
        if (frames_.size() == kMost) frames_.pop_front();
        frames_.emplace_back(time, std::move(image));
    }

private:
    std::deque<std::pair<double, std::shared_ptr<host::Image>>> frames_; // the oldest first
};

} // namespace cli
