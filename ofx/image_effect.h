// The base of every effect instance: the host's handle, its clips and parameters, and one virtual operation per action.
#pragma once

#include <atomic>
#include <span>
#include <vector>

#include "ofx/clip.h"
#include "ofx/image.h"
#include "ofx/params.h"

namespace OFX {

// What the host says of one render. Times are in frames, the window in pixels of the output image, half-open.
struct RenderArguments {
    double time = 0;
    double timeCode = 0; // the project's timecode, in frames, where the host tells
    OfxPointD renderScale{1, 1};
    RectI renderWindow{};
    int viewsToRender = 1;
    int renderView = 0;
    bool openCLEnabled = false; // only with both handles
    void* openCLContext = nullptr;
    void* openCLQueue = nullptr;
    bool openGLEnabled = false;
    const char* field = kOfxImageFieldNone;
    bool draft = false;
    bool sequential = false;
    bool interactive = false;
};

struct SequenceArguments {
    OfxRangeD frames{};
    double step = 1;
    bool interactive = false;
    OfxPointD renderScale{1, 1};
};

struct IdentityArguments {
    double time = 0;
    OfxPointD renderScale{1, 1};
    RectI renderWindow{};
    const char* field = kOfxImageFieldNone;
};

struct Identity {
    const char* clip = nullptr;
    double time = 0;
};

struct RegionArguments {
    double time = 0;
    OfxPointD renderScale{1, 1};
    OfxRectD regionOfInterest{}; // canonical coordinates; for regions of interest only
};

enum class ChangeReason { UserEdit, PluginEdit, Time };

struct ChangeArguments {
    ChangeReason reason = ChangeReason::UserEdit;
    double time = 0;
    OfxPointD renderScale{1, 1};
};

// A saved record of the legacy effect whose place a plug-in takes.
struct UpliftArguments {
    const char* guid = "";
    void* keyframes = nullptr;
    std::span<const unsigned char> record;
};

class ImageEffect : public ParamSet {
public:
    // Fetches the clips (the output first), then the parameters. Throws when the host lacks one.
    ImageEffect(OfxImageEffectHandle handle, std::span<const char* const> sourceClips, std::span<const Param> params);
    ImageEffect(const ImageEffect&) = delete;
    ImageEffect& operator=(const ImageEffect&) = delete;
    virtual ~ImageEffect() = default;

    // One operation per action. The ones that return a bool answer false when they have nothing to say, and the host
    // goes on as it would without them.
    virtual void render(const RenderArguments&) = 0;
    virtual void beginSequenceRender(const SequenceArguments&) {}
    virtual void endSequenceRender(const SequenceArguments&) {}
    virtual bool isIdentity(const IdentityArguments&, Identity&) { return false; }
    virtual bool getRegionOfDefinition(const RegionArguments&, OfxRectD&) { return false; }
    // `outArgs` takes "OfxImageClipPropRoI_<clip>", "OfxImageClipPropFrameRange_<clip>" and the clip preferences.
    virtual bool getRegionsOfInterest(const RegionArguments&, const PropertySet& /*outArgs*/) { return false; }
    virtual bool getFramesNeeded(double /*time*/, const PropertySet& /*outArgs*/) { return false; }
    virtual bool getClipPreferences(const PropertySet& /*outArgs*/) { return false; }
    virtual void purgeCaches() {}
    virtual void syncPrivateData() {}
    virtual bool getTimeDomain(OfxRangeD&) { return false; }
    virtual void beginChanged(ChangeReason) {}
    virtual void changedParam(const ChangeArguments&, const char* /*name*/) {}
    virtual void changedClip(const ChangeArguments&, const char* /*name*/) {}
    virtual void endChanged(ChangeReason) {}
    virtual void beginEdit() {}
    virtual void endEdit() {}
    virtual bool keyframeUplift(const UpliftArguments&) { return false; }
    virtual bool invokeHelp() { return false; }
    virtual bool invokeAbout() { return false; }

    OfxImageEffectHandle handle() const { return handle_; }
    const Clip& output() const { return output_; }
    std::span<const Clip> sources() const { return sources_; }

    // True when the host has lost interest in what is being rendered.
    bool aborted() const;
    // Shows a message to the user, where the host can; logs it in any case.
    void showMessage(const char* type, const char* text) const;

    // Entered around every change: a host that reports the plug-in's own changes back at once, from inside the call
    // that makes them, must not start the linking rules again.
    class ChangeScope {
    public:
        explicit ChangeScope(ImageEffect& effect) : effect_(effect), outermost_(!effect.changing_.exchange(true)) {}
        ~ChangeScope() {
            if (outermost_) effect_.changing_ = false;
        }
        ChangeScope(const ChangeScope&) = delete;
        ChangeScope& operator=(const ChangeScope&) = delete;
        bool outermost() const { return outermost_; }

    private:
        ImageEffect& effect_;
        bool outermost_;
    };

private:
    OfxImageEffectHandle handle_;
    Clip output_;
    std::vector<Clip> sources_;
    std::atomic<bool> changing_ = false;
};

// A long job that the user can watch and cancel, where the host has progress.
class Progress {
public:
    Progress(const ImageEffect& effect, const char* label);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Tells how much is done, 0..1; false when the user cancels.
    bool update(double done) const;

private:
    OfxImageEffectHandle effect_;
    bool started_ = false;
};

} // namespace OFX
