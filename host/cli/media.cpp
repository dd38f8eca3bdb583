// Chooses what handles a file name, and keeps still pictures and frame sequences.
#include "host/cli/media.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <future>

#include "host/cli/error.h"
#include "host/cli/pending_file.h"
#include "host/cli/picture.h"
#include "host/cli/video.h"
#include "host/text.h"

namespace cli {
namespace {

class StillSource final : public Source {
public:
    explicit StillSource(const std::string& file) : Source(file) { info_ = pictureInfo(file); }

private:
    std::shared_ptr<host::Image> read(int, const host::Format& format) override { return readPicture(name(), format); }
};

class SequenceSource final : public Source {
public:
    SequenceSource(const std::string& name, FramePattern pattern) : Source(name), pattern_(std::move(pattern)) {
        const std::optional<FrameRange> frames = pattern_.existing();
        if (!frames) throw Failure("no file ", name, ": no frame of this sequence exists");
        info_ = pictureInfo(pattern_.file(frames->first).string());
        info_.frames = frames;
    }

private:
    std::shared_ptr<host::Image> read(int number, const host::Format& format) override {
        const std::string file = pattern_.file(number).string();
        auto image = readPicture(file, format);
        const OfxRectI bounds = image->bounds();
        if (bounds.x2 != info_.width || bounds.y2 != info_.height)
            throw Failure(file, " is ", bounds.x2, "x", bounds.y2, ", but the sequence began with ", info_.width, "x",
                          info_.height);
        return image;
    }

    FramePattern pattern_;
};

// Still pictures and sequences. Compressing a picture takes longer than most effects, so files are written in the
// background while the next frames render.
class PictureSink final : public Sink {
public:
    PictureSink(std::string name, const SinkSettings& settings)
        : name_(std::move(name)),
          pattern_(FramePattern::parse(name_)),
          pixelAspect_(settings.pixelAspect),
          bits_(pictureBits(name_, settings.bits, settings.depth)),
          most_(std::max(1u, settings.threads)) {
        if (!pattern_ && settings.frameCount > 1)
            throw UsageError(settings.frameCount, " frames do not fit into one picture ", name_,
                             "; give a pattern such as frame.%04d.png, a video, or one frame with --frames");
    }

    void write(int frame, std::shared_ptr<const host::Image> image) override {
        while (!free()) takeOldest();
        const std::string file = pattern_ ? pattern_->file(frame).string() : name_;
        writing_.push_back(std::async(std::launch::async, [this, file, image = std::move(image)] {
            writePicture(file, *image, pixelAspect_, bits_);
        }));
    }

    void finish() override {
        while (!writing_.empty()) takeOldest();
    }

private:
    bool free() const { return writing_.size() < most_; }

    void takeOldest() {
        std::future<void> oldest = std::move(writing_.front());
        writing_.pop_front();
        oldest.get();
    }

    std::string name_;
    std::optional<FramePattern> pattern_;
    double pixelAspect_;
    int bits_;
    std::size_t most_;
    std::deque<std::future<void>> writing_; // the oldest first
};

} // namespace

std::string extension(const std::string& file) { return host::lower(std::filesystem::path(file).extension().string()); }

std::shared_ptr<host::Image> Source::frame(int number, const host::Format& format) {
    const std::lock_guard lock(mutex_);
    number = info_.frames ? std::clamp(number, info_.frames->first, info_.frames->last) : 0;
    if (auto known = recent_.find(number)) return known;
    auto image = read(number, format);
    image->pixelAspect = info_.pixelAspect;
    recent_.keep(number, image);
    return image;
}

std::unique_ptr<Source> openSource(const std::string& name) {
    // A file that exists is meant as it is, whatever percent signs its name holds.
    const bool exists = std::filesystem::exists(name);
    if (!exists)
        if (auto pattern = FramePattern::parse(name))
            return std::make_unique<SequenceSource>(name, std::move(*pattern));
    if (exists && isVideo(name)) return openVideoSource(name);
    return std::make_unique<StillSource>(name);
}

std::unique_ptr<Sink> openSink(const std::string& name, const SinkSettings& settings) {
    const auto pattern = FramePattern::parse(name);
    requireWritable(pattern ? pattern->file(0) : std::filesystem::path(name));
    if (isVideo(name)) return openVideoSink(name, settings);
    return std::make_unique<PictureSink>(name, settings);
}

bool prefersFloat(const std::string& outputName) {
    return !isVideo(outputName) && pictureFormat(outputName).alpha == PictureFormat::Alpha::Premultiplied;
}

} // namespace cli
