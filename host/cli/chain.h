// A chain of effects: each stage is one instance whose inputs are files or the stage before it.
#pragma once
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/cli/arguments.h"
#include "host/cli/recent_frames.h"
#include "host/plugin.h"

namespace cli {

// What a render is about, the same for all of its effects.
struct Project {
    OfxRectI frame{}; // in pixels
    double pixelAspect = 1;
    FrameRange frames;
    host::Format format;
    unsigned threads = 0; // 0: the machine's, but one for generators
    bool openCL = false;
    OfxRectD region() const; // the frame in canonical coordinates
};

// Where a stage gets its pictures from.
struct Input {
    std::function<std::shared_ptr<host::Image>(double time)> image;
    std::function<OfxRectD(double time)> region;
};

// What plug-ins said since the last look. From any thread.
class Messages {
public:
    void add(const std::string& text);
    std::string take(); // one after the other; empty when there is none

private:
    std::mutex mutex_;
    std::string text_;
};

class Stage {
public:
    // Creates the instance and gives it its values. Throws a UsageError when the effect does not take so many inputs,
    // this format, or one of the values.
    Stage(host::Plugin&, const StageArguments&, std::vector<Input> inputs, const Project&, Messages&);

    // The result, whose bounds may be less than the frame. From any thread.
    std::shared_ptr<host::Image> frame(double time);
    Input output();

    void begin();
    void end();

private:
    void connect();
    void setValues(const StageArguments&);
    void settleFormat();
    void press(const std::vector<std::string>& buttons);
    std::shared_ptr<host::Image> fetch(const Input&, double time);
    void throwInputFailure();
    std::shared_ptr<host::Image> render(double time);
    OfxRectI bounds(double time);
    // Throws, with what the plug-in said, unless the status is one of success.
    void require(OfxStatus status, const std::string& what);

    const std::string name_, context_;
    const std::vector<Input> inputs_;
    const Project& project_;
    Messages& messages_;
    std::unique_ptr<host::Instance> instance_;
    std::vector<std::string> clips_; // those of the inputs
    bool straight_ = false;          // whether the effect leaves straight colours
    std::mutex failureMutex_;
    std::exception_ptr inputFailure_; // what went wrong in an input
    std::recursive_mutex mutex_;
    RecentFrames recent_;
};

} // namespace cli
