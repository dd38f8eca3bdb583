// File names of frame sequences: "shot.%04d.png" stands for shot.0001.png, shot.0002.png and so on.
#pragma once
#include <filesystem>
#include <optional>
#include <string>

namespace cli {

// First and last frame, both included.
struct FrameRange {
    int first = 0, last = 0;
    int count() const { return last - first + 1; }
    bool operator==(const FrameRange&) const = default;
};

class FramePattern {
public:
    // Empty when the name has no %d or %0Nd; throws a UsageError for other or several conversions. "%%" is a percent
    // sign.
    static std::optional<FramePattern> parse(const std::string& name);

    std::filesystem::path file(int frame) const;
    // The lowest and the highest frame that exists; empty when there is none.
    std::optional<FrameRange> existing() const;

private:
    std::string before_, after_; // with the folder
    std::size_t width_ = 0;      // digits at least, with zeros in front
};

} // namespace cli
