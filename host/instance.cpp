// A living effect: its life, its parameters' changes and its renders.
#include "host/instance.h"

#include <algorithm>

#include "host/context.h"
#include "host/definitions.h"
#include "host/host.h"
#include "host/opencl.h"
#include "host/plugin.h"

namespace host {

namespace {

// Linking rules that answer each other without end are cut off here, long before the stack ends.
constexpr int kDeepestNotification = 64;

PropertySet sequenceArguments(const Host& host, const Sequence& sequence) {
    PropertySet in(host.options().extensions);
    in.set(kOfxImageEffectPropFrameRange, std::vector{sequence.frames.min, sequence.frames.max});
    in.set(kOfxImageEffectPropFrameStep, sequence.step);
    in.set(kOfxPropIsInteractive, sequence.interactive ? 1 : 0);
    in.set(kOfxImageEffectPropRenderScale, std::vector{sequence.scale.x, sequence.scale.y});
    in.set(kOfxImageEffectPropSequentialRenderStatus, sequence.sequential ? 1 : 0);
    in.set(kOfxImageEffectPropInteractiveRenderStatus, sequence.interactive ? 1 : 0);
    return in;
}

} // namespace

Instance::Instance(Plugin& plugin, const Descriptor& descriptor)
    : Effect(descriptor), plugin_(plugin), descriptor_(descriptor) {
    defineInstance(properties_, descriptor.context(), host_.options());
    properties_.set<void*>(kOfxImageEffectPropPluginHandle, &plugin.record());
    properties_.inherit(descriptor.properties());
    for (const auto& clip : descriptor.clips()) clips_.push_back(std::make_unique<Clip>(*clip, *this));
}

Instance::~Instance() {
    if (created_) destroy();
    reportLeaks();
}

OfxStatus Instance::create() {
    const OfxStatus status = action(kOfxActionCreateInstance);
    created_ = status == kOfxStatOK || status == kOfxStatReplyDefault;
    return status;
}

OfxStatus Instance::destroy() {
    created_ = false;
    return action(kOfxActionDestroyInstance);
}

void Instance::reportLeaks() {
    for (const auto& clip : clips_) clip->reportLeaks(nullptr);
    if (!memory_.empty()) host_.report("image memory of " + plugin_.identifier() + " was never freed");
    if (progressLabel_) host_.report("the progress \"" + *progressLabel_ + "\" was never ended");
    if (parameters_.openEdits() > 0) host_.report("an edit block of " + plugin_.identifier() + " was never ended");
}

OfxStatus Instance::action(const char* name, PropertySet* inArgs, PropertySet* outArgs) {
    return plugin_.action(name, handle(), inArgs, outArgs);
}

// ---- changes

void Instance::edit(const std::string& parameter, const std::string& text) {
    parameters_.at(parameter).setText(text);
    changed(parameter);
}

void Instance::editKeys(const std::string& parameter, const std::string& keys) {
    parameters_.at(parameter).setKeys(keys);
    changed(parameter);
}

void Instance::press(const std::string& button) {
    if (parameters_.at(button).kind().type != std::string(kOfxParamTypePushButton))
        throw Error("parameter \"" + button + "\" is no button", kOfxStatErrValue);
    changed(button);
}

OfxStatus Instance::changed(const std::string& parameter, const char* reason) {
    return sendChanged(kOfxTypeParameter, parameters_.at(parameter).name(), reason);
}

OfxStatus Instance::clipChanged(const std::string& name, const char* reason) {
    return sendChanged(kOfxTypeClip, clip(name).name(), reason);
}

OfxStatus Instance::sendChanged(const char* type, const std::string& name, const char* reason) {
    PropertySet around(host_.options().extensions), in(host_.options().extensions);
    around.set(kOfxPropChangeReason, reason);
    in.set(kOfxPropType, type);
    in.set(kOfxPropName, name);
    in.set(kOfxPropChangeReason, reason);
    in.set(kOfxPropTime, time());
    in.set(kOfxImageEffectPropRenderScale, std::vector{1.0, 1.0});
    action(kOfxActionBeginInstanceChanged, &around);
    const OfxStatus status = action(kOfxActionInstanceChanged, &in);
    action(kOfxActionEndInstanceChanged, &around);
    return status;
}

void Instance::parameterEdited(Parameter& parameter) {
    if (!created_ || !host_.options().notifyPluginEdits) return;
    if (++notifications_ <= kDeepestNotification)
        sendChanged(kOfxTypeParameter, parameter.name(), kOfxChangePluginEdited);
    else
        host_.report("changes of parameter \"" + parameter.name() + "\" answer each other without end");
    --notifications_;
}

// ---- rendering

OfxStatus Instance::beginSequence(const Sequence& sequence) {
    PropertySet in = sequenceArguments(host_, sequence);
    return action(kOfxImageEffectActionBeginSequenceRender, &in);
}

OfxStatus Instance::endSequence(const Sequence& sequence) {
    PropertySet in = sequenceArguments(host_, sequence);
    return action(kOfxImageEffectActionEndSequenceRender, &in);
}

// Announces a render to the clips until the scope ends, then looks for images that the plug-in kept.
class Instance::RenderScope {
public:
    RenderScope(Instance& instance, const RenderRequest& request, OpenCLImages* device)
        : instance_(instance),
          render_{instance, request, device, ThreadContext::current().render},
          context_({&instance.host(), &render_}) {
        const std::lock_guard lock(instance.mutex_);
        instance.renders_.push_back(&render_);
    }
    ~RenderScope() {
        for (const auto& clip : instance_.clips_) clip->reportLeaks(&render_);
        const std::lock_guard lock(instance_.mutex_);
        std::erase(instance_.renders_, &render_);
    }
    RenderScope(const RenderScope&) = delete;
    RenderScope& operator=(const RenderScope&) = delete;

private:
    Instance& instance_;
    const RenderInProgress render_;
    const ContextScope context_;
};

OfxStatus Instance::render(const RenderRequest& request) {
    if (!request.output) throw Error("a render needs an output image");
    if (Clip* output = findClip(kOfxImageEffectOutputClipName)) output->setFormat(request.output->format());
    const OfxRectI window = request.window.value_or(request.output->bounds());
    PropertySet in(host_.options().extensions);
    in.set(kOfxPropTime, request.time);
    in.set(kOfxImageEffectPropRenderWindow, std::vector{window.x1, window.y1, window.x2, window.y2});
    in.set(kOfxImageEffectPropRenderScale, std::vector{request.scale.x, request.scale.y});
    in.set(kOfxImageEffectPropFieldToRender, request.field);
    in.set(kOfxImageEffectPropSequentialRenderStatus, request.sequential ? 1 : 0);
    in.set(kOfxImageEffectPropInteractiveRenderStatus, request.interactive ? 1 : 0);
    in.set(kOfxImageEffectPropRenderQualityDraft, request.draft ? 1 : 0);
    in.set(kOfxImageEffectPropNoSpatialAwareness, "false");
    for (const char* off :
         {kOfxImageEffectPropThumbnailRender, kOfxImageEffectPropOpenGLEnabled, kOfxImageEffectPropOpenCLEnabled,
          kOfxImageEffectPropCudaEnabled, kOfxImageEffectPropMetalEnabled})
        in.set(off, 0);
    if (request.openCL) return renderOnDevice(request, window, in);
    const RenderScope scope(*this, request, nullptr);
    return action(kOfxImageEffectActionRender, &in);
}

OfxStatus Instance::renderOnDevice(const RenderRequest& request, const OfxRectI& window, PropertySet& in) {
    if (!host_.options().openCL) throw Error("the host has no OpenCL device");
    OpenCLDevice& device = *host_.options().openCL;
    in.set(kOfxImageEffectPropOpenCLEnabled, 1);
    in.set<void*>(kOfxImageEffectPropOpenCLContext, device.context());
    in.set<void*>(kOfxImageEffectPropOpenCLCommandQueue, device.queue());
    OpenCLImages images(device, window);
    OfxStatus status;
    {
        const RenderScope scope(*this, request, &images);
        status = action(kOfxImageEffectActionRender, &in);
    }
    if (status == kOfxStatOK) images.download(request.output);
    return status;
}

const RenderInProgress* Instance::renderAt(double time) const {
    for (const RenderInProgress* render = ThreadContext::current().render; render; render = render->outer)
        if (&render->instance == this) return render;
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(renders_.begin(), renders_.end(),
                                    [&](const auto* render) { return render->request.time == time; });
    return found == renders_.end() ? nullptr : *found;
}

int Instance::imagesOutstanding() const {
    int count = 0;
    for (const auto& clip : clips_) count += clip->imagesOutstanding();
    return count;
}

// ---- what the suites keep on the instance

std::string Instance::persistentMessage() const {
    const std::lock_guard lock(mutex_);
    return persistentMessage_;
}

void Instance::setPersistentMessage(const std::string& text) {
    const std::lock_guard lock(mutex_);
    persistentMessage_ = text;
}

std::optional<std::string> Instance::progressLabel() const {
    const std::lock_guard lock(mutex_);
    return progressLabel_;
}

void Instance::setProgressLabel(std::optional<std::string> label) {
    const std::lock_guard lock(mutex_);
    progressLabel_ = std::move(label);
}

void Instance::adoptMemory(const void* handle, std::shared_ptr<void> memory) {
    const std::lock_guard lock(mutex_);
    memory_[handle] = std::move(memory);
}

bool Instance::forgetMemory(const void* handle) {
    const std::lock_guard lock(mutex_);
    return memory_.erase(handle) > 0;
}

} // namespace host
