// A living effect: its parameters and clips, and every action that can be asked of it.
#pragma once
#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/effect.h"

namespace host {

class OpenCLImages;
class Plugin;

// One frame to make. The window is in pixels; without one it is the output's bounds. Renders that run at the same time
// on one instance have outputs of one format, since that is what the output clip tells.
struct RenderRequest {
    double time = 0;
    std::shared_ptr<Image> output;
    std::optional<OfxRectI> window;
    OfxPointD scale{1, 1};
    const char* field = kOfxImageFieldNone;
    unsigned threads = 0; // that the multi-thread suite promises at most; 0: all of the host
    bool sequential = false, interactive = false, draft = false;
    bool openCL = false; // on the host's device; the output is back in memory afterwards
};

// A range of frames that will be rendered.
struct Sequence {
    OfxRangeD frames{0, 0};
    double step = 1;
    OfxPointD scale{1, 1};
    bool sequential = false, interactive = false;
};

// The input image that stands for the result.
struct Identity {
    std::string clip;
    double time;
};

// A plug-in's answer to GetClipPreferences. The output clip takes over all but components, depths and aspects, which
// are for the caller to obey: they show in the images that it makes.
struct ClipPreferences {
    std::map<std::string, std::string> components, depths; // by clip, in the names of the C API
    std::map<std::string, double> pixelAspects;
    double frameRate = 0;
    std::string premultiplication, fieldOrder;
    bool continuousSamples = false, frameVarying = false;
};

// A record saved by the legacy effect that an effect replaces.
struct Uplift {
    std::string guid;
    std::span<const std::byte> data;
    void* keyframes = nullptr;
};

// An instance. Renders may run on several threads at once; the other actions on one thread, as in any host.
// The queries throw Error when the plug-in fails; where it leaves the answer to the host they give the standard's
// default. The plug-in must outlive its instances.
class Instance : public Effect {
public:
    // Only prepares: create() sends CreateInstance. Plugin::createInstance does both.
    Instance(Plugin& plugin, const Descriptor& descriptor);
    ~Instance() override; // destroys what was created; reports images and memory never given back

    OfxStatus create();
    OfxStatus destroy();
    bool isCreated() const { return created_; } // a failed CreateInstance leaves it false

    Plugin& plugin() const { return plugin_; }
    const Descriptor& descriptor() const { return descriptor_; }
    const std::string& context() const { return descriptor_.context(); }

    // The user edits a parameter: sets it as text, then sends InstanceChanged. Throw Error for what cannot be set.
    void edit(const std::string& parameter, const std::string& text);
    void editKeys(const std::string& parameter, const std::string& keys);
    void press(const std::string& button);

    // InstanceChanged for a parameter or a clip, within Begin and End.
    OfxStatus changed(const std::string& parameter, const char* reason = kOfxChangeUserEdited);
    OfxStatus clipChanged(const std::string& clip, const char* reason = kOfxChangeUserEdited);

    OfxStatus beginSequence(const Sequence& sequence);
    OfxStatus render(const RenderRequest& request);
    OfxStatus endSequence(const Sequence& sequence);
    std::optional<Identity> identity(const RenderRequest& request);

    // Regions are in canonical coordinates; the region of definition may be infinite.
    OfxRectD regionOfDefinition(double time, OfxPointD scale = {1, 1});
    std::map<std::string, OfxRectD> regionsOfInterest(double time, OfxRectD region, OfxPointD scale = {1, 1});
    std::map<std::string, std::vector<OfxRangeD>> framesNeeded(double time);
    ClipPreferences clipPreferences();
    OfxRangeD timeDomain();

    OfxStatus uplift(const Uplift& record);
    OfxStatus invokeHelp();
    OfxStatus invokeAbout();
    OfxStatus purgeCaches();
    OfxStatus syncPrivateData();
    OfxStatus beginEdit();
    OfxStatus endEdit();

    // Any action, with any arguments (null allowed).
    OfxStatus action(const char* name, PropertySet* inArgs = nullptr, PropertySet* outArgs = nullptr);

    // Images that the plug-in holds now.
    int imagesOutstanding() const;
    // What the plug-in last put on the effect with setPersistentMessage.
    std::string persistentMessage() const;
    void setPersistentMessage(const std::string& text);

    bool isInstance() const override { return true; }
    void parameterEdited(Parameter& parameter) override;

    // For the clips: the render of this instance that the calling thread works on, else one of the given time.
    const RenderInProgress* renderAt(double time) const;
    // For the progress suite: what the plug-in started and has not ended.
    std::optional<std::string> progressLabel() const;
    void setProgressLabel(std::optional<std::string> label);
    // For the image-effect suite: memory of the instance, freed with it.
    void adoptMemory(const void* handle, std::shared_ptr<void> memory);
    bool forgetMemory(const void* handle);

private:
    class RenderScope;
    OfxStatus sendChanged(const char* type, const std::string& name, const char* reason);
    OfxRectD defaultRegion(double time) const;
    std::vector<Clip*> inputs() const; // connected
    void reportLeaks();
    OfxStatus renderOnDevice(const RenderRequest& request, const OfxRectI& window, PropertySet& in);

    Plugin& plugin_;
    const Descriptor& descriptor_;
    std::atomic<bool> created_ = false;
    std::atomic<int> notifications_ = 0; // nesting of what parameterEdited sends
    mutable std::mutex mutex_;           // of what follows
    std::vector<const RenderInProgress*> renders_;
    std::map<const void*, std::shared_ptr<void>> memory_;
    std::optional<std::string> progressLabel_;
    std::string persistentMessage_;
};

// A render as long as it runs. The innermost one of a thread is its current one; pool threads inherit it.
struct RenderInProgress {
    const Instance& instance;
    const RenderRequest& request;
    OpenCLImages* device;          // null on the CPU
    const RenderInProgress* outer; // of the same thread, when a source renders another instance
};

extern const OfxImageEffectSuiteV1 kImageEffectSuite;

} // namespace host
