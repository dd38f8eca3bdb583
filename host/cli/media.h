// What the program reads and writes: still pictures, frame sequences and videos behind one interface each. Frames of a
// sequence have the numbers of their files, frames of a video count from 0, a still picture is the same at any time.
#pragma once
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "host/cli/frame_pattern.h"
#include "host/cli/recent_frames.h"
#include "host/image.h"

namespace cli {

// The extension of a file's name in lower case, with the dot.
std::string extension(const std::string& file);

// Frames per second as a fraction, which keeps rates like 30000/1001 exact.
struct Rate {
    int numerator = 25, denominator = 1;
    double perSecond() const { return static_cast<double>(numerator) / denominator; }
};

struct MediaInfo {
    int width = 0, height = 0;
    double pixelAspect = 1;
    bool deep = false;                // more than 8 bits per channel
    std::optional<FrameRange> frames; // empty: a still picture
    std::optional<Rate> rate;
};

class Source {
public:
    virtual ~Source() = default;
    const std::string& name() const { return name_; }
    const MediaInfo& info() const { return info_; }

    // The frame, premultiplied; before the first and after the last one, those. Always the same format. From any
    // thread.
    std::shared_ptr<host::Image> frame(int number, const host::Format&);

protected:
    explicit Source(std::string name) : name_(std::move(name)) {}
    virtual std::shared_ptr<host::Image> read(int number, const host::Format&) = 0;
    MediaInfo info_;

private:
    std::string name_;
    std::mutex mutex_;
    RecentFrames recent_;
};

// Throws a Failure that names what is wrong with the file.
std::unique_ptr<Source> openSource(const std::string& name);

struct SinkSettings {
    int width = 0, height = 0;
    double pixelAspect = 1;
    Rate rate;                             // of videos
    host::Depth depth = host::Depth::Byte; // of the images that come
    int bits = 0;                          // per channel in picture files; 0: the format's usual
    int frameCount = 1;
    unsigned threads = 1;
};

class Sink {
public:
    virtual ~Sink() = default; // without finish: what is not complete is removed
    virtual void write(int frame, std::shared_ptr<const host::Image>) = 0;
    virtual void finish() = 0;
};

// Throws when the name says a format that cannot be written, the settings do not fit it, or the folder is no place.
std::unique_ptr<Sink> openSink(const std::string& name, const SinkSettings&);

// Whether floats would lose by becoming bytes in this file.
bool prefersFloat(const std::string& outputName);

} // namespace cli
