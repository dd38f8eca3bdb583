// The host itself: what it tells plug-ins of itself, the suites it offers, and what it asks of the program around it.
#pragma once
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/property_set.h"
#include "host/threads.h"
#include "openfx/openfx.h"

namespace host {

class OpenCLDevice;

// How the host behaves. The functions may be called from several threads at once.
struct Options {
    unsigned threads = 0;          // of the multi-thread suite; 0: as many as the hardware runs at once
    bool extensions = true;        // false: like a host that knows the published standard and refuses every other name
    bool notifyPluginEdits = true; // whether a parameter written by a plug-in sends it InstanceChanged

    OfxPointD projectSize{1920, 1080}, projectOffset{0, 0}; // canonical
    double pixelAspect = 1, frameRate = 25;
    OfxRangeD frames{0, 0}; // the time line and every clip
    double time = 0;

    std::shared_ptr<OpenCLDevice> openCL; // the device that plug-ins may render on; null: none is offered

    // May replace or hide (null) what a plug-in fetches; ours is null for a suite that the host lacks.
    std::function<const void*(const char* suite, int version, const void* ours)> suiteFilter;
    // Answers the status of the message suite. Without one: kOfxStatReplyNo to questions, else kOfxStatOK.
    std::function<OfxStatus(const char* type, const char* id, const char* text)> onMessage;
    // Fraction from 0 to 1; false asks the plug-in to stop.
    std::function<bool(const std::string& label, double fraction)> onProgress;
    // True asks every plug-in to stop.
    std::function<bool()> abort;
    // May change what an image tells (beside Image's own fields), as other hosts do.
    std::function<void(PropertySet& image)> onImage;
    // Sees and may change the arguments of every action before the plug-in does; either may be null.
    std::function<void(const char* action, PropertySet* inArgs, PropertySet* outArgs)> onAction;
};

// A host. Several may live in one process. Binaries, plug-ins and instances refer to theirs and must end before it.
class Host {
public:
    explicit Host(Options options = {});
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    const Options& options() const { return options_; }
    PropertySet& properties() { return properties_; }
    OfxHost* record() { return &record_; }
    const void* suite(const char* name, int version) const; // as a plug-in gets it
    ThreadPool& threads() { return threads_; }

    double time() const { return time_; } // where the time line stands
    void setTime(double time) { time_ = time; }
    bool aborted() const { return options_.abort && options_.abort(); }
    OfxStatus message(const char* type, const char* id, const char* text) const;

    // What plug-ins did wrong, in words: images never released or released twice, and the like.
    void report(const std::string& misuse);
    std::vector<std::string> misuse() const;
    void clearMisuse();

    // The host whose plug-in runs on this thread, else the youngest one; null when there is none. For the suite
    // functions whose signature names no object.
    static Host* current();

private:
    Options options_;
    PropertySet properties_;
    OfxHost record_;
    std::atomic<double> time_;
    ThreadPool threads_;
    mutable std::mutex mutex_;
    std::vector<std::string> misuse_;
};

} // namespace host
