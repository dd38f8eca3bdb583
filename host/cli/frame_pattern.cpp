// Parses and expands frame patterns by hand: a name from the command line is no format for printf.
#include "host/cli/frame_pattern.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "host/cli/error.h"

namespace cli {
namespace fs = std::filesystem;

std::optional<FramePattern> FramePattern::parse(const std::string& name) {
    FramePattern pattern;
    bool found = false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        std::string& text = found ? pattern.after_ : pattern.before_;
        if (name[i] != '%') {
            text += name[i];
            continue;
        }
        if (i + 1 < name.size() && name[i + 1] == '%') {
            text += name[++i];
            continue;
        }
        const std::size_t end = name.find_first_not_of("0123456789", i + 1);
        const std::string digits = name.substr(i + 1, end == std::string::npos ? end : end - i - 1);
        const bool number =
            end != std::string::npos && name[end] == 'd' && digits.size() <= 3 && (digits.empty() || digits[0] == '0');
        if (!number || found)
            throw UsageError("'", name, "': a sequence has one frame number, written %d or %04d; a percent sign is %%");
        pattern.width_ = digits.empty() ? 0 : static_cast<std::size_t>(std::stoul(digits));
        found = true;
        i = end;
    }
    if (!found) return std::nullopt;
    if (pattern.after_.find('/') != std::string::npos)
        throw UsageError("'", name, "': the frame number stands in the file's name, not in a folder's");
    return pattern;
}

fs::path FramePattern::file(int frame) const {
    std::string digits = std::to_string(std::abs(frame));
    const std::size_t width = frame < 0 && width_ > 0 ? width_ - 1 : width_;
    if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
    return before_ + (frame < 0 ? "-" : "") + digits + after_;
}

std::optional<FrameRange> FramePattern::existing() const {
    const fs::path sample = file(0);
    const fs::path folder = sample.has_parent_path() ? sample.parent_path() : fs::path(".");
    const std::string start = fs::path(before_ + "x").filename().string();
    std::optional<FrameRange> range;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        const std::size_t before = start.size() - 1;
        if (name.size() <= before + after_.size()) continue;
        int frame = 0;
        const char* end = name.data() + name.size() - after_.size();
        const auto [stop, status] = std::from_chars(name.data() + before, end, frame);
        // Comparing with the name that the frame would have checks prefix, suffix and width in one.
        if (status != std::errc() || stop != end || file(frame).filename().string() != name) continue;
        if (!range) range = FrameRange{frame, frame};
        range->first = std::min(range->first, frame);
        range->last = std::max(range->last, frame);
    }
    return range;
}

} // namespace cli
