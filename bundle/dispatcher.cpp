// From the host's actions to factories and instances: checks what the host passes, calls the handler, and turns every
// exception into a status.
#include <cstring>
#include <mutex>
#include <new>

#include "ofx/exception.h"
#include "ofx/factory.h"
#include "ofx/log.h"
#include "ofx/suites.h"

namespace OFX {
namespace {

struct Call {
    PluginFactory& factory;
    OfxImageEffectHandle handle;
    PropertySet in;
    PropertySet out;
};

// --- What the property sets hold ---

PropertySet propertiesOf(OfxImageEffectHandle effect) {
    OfxPropertySetHandle properties = nullptr;
    Exception::throwUnlessOK(suites().imageEffect->getPropertySet(effect, &properties), "getPropertySet");
    return PropertySet(properties);
}

ImageEffect* instanceDataOf(const PropertySet& properties) {
    return static_cast<ImageEffect*>(properties.find<void*>(kOfxPropInstanceData).value_or(nullptr));
}

// Hosts send instance actions after a failed creation, too.
ImageEffect& instanceOf(const Call& call) {
    ImageEffect* instance = instanceDataOf(propertiesOf(call.handle));
    if (instance == nullptr) throw Exception::Suite(kOfxStatErrBadHandle, "the handle holds no instance");
    return *instance;
}

bool flag(const PropertySet& p, const char* name) { return p.find<int>(name).value_or(0) != 0; }

double timeOf(const PropertySet& p) { return p.find<double>(kOfxPropTime).value_or(0); }

OfxPointD scaleOf(const PropertySet& p) {
    return {p.find<double>(kOfxImageEffectPropRenderScale, 0).value_or(1),
            p.find<double>(kOfxImageEffectPropRenderScale, 1).value_or(1)};
}

RectI windowOf(const PropertySet& p) {
    const auto side = [&p](int index) { return p.get<int>(kOfxImageEffectPropRenderWindow, index); };
    const RectI window = {side(0), side(1), side(2), side(3)};
    if (!measurable(window)) throw Exception::Suite(kOfxStatErrValue, "the render window is beyond measure");
    return window;
}

const char* fieldOf(const PropertySet& p) {
    return p.find<const char*>(kOfxImageEffectPropFieldToRender).value_or(kOfxImageFieldNone);
}

Context contextOf(const PropertySet& p) {
    return contextFrom(p.find<const char*>(kOfxImageEffectPropContext).value_or(nullptr));
}

ChangeReason reasonOf(const PropertySet& p) {
    const char* reason = p.find<const char*>(kOfxPropChangeReason).value_or("");
    if (std::strcmp(reason, kOfxChangePluginEdited) == 0) return ChangeReason::PluginEdit;
    if (std::strcmp(reason, kOfxChangeTime) == 0) return ChangeReason::Time;
    return ChangeReason::UserEdit;
}

RenderArguments renderArguments(const PropertySet& p) {
    RenderArguments a;
    a.time = p.get<double>(kOfxPropTime);
    a.timeCode = p.find<double>(kOfxPropOrvixTimeCode).value_or(0);
    a.renderScale = scaleOf(p);
    a.renderWindow = windowOf(p);
    a.field = fieldOf(p);
    a.openGLEnabled = flag(p, kOfxImageEffectPropOpenGLEnabled);
    a.draft = flag(p, kOfxImageEffectPropRenderQualityDraft);
    a.sequential = flag(p, kOfxImageEffectPropSequentialRenderStatus);
    a.interactive = flag(p, kOfxImageEffectPropInteractiveRenderStatus);
    if (flag(p, kOfxImageEffectPropOpenCLEnabled)) {
        a.openCLContext = p.find<void*>(kOfxImageEffectPropOpenCLContext).value_or(nullptr);
        a.openCLQueue = p.find<void*>(kOfxImageEffectPropOpenCLCommandQueue).value_or(nullptr);
        a.openCLEnabled = a.openCLContext != nullptr && a.openCLQueue != nullptr;
    }
    return a;
}

SequenceArguments sequenceArguments(const PropertySet& p) {
    return {{p.find<double>(kOfxImageEffectPropFrameRange, 0).value_or(0),
             p.find<double>(kOfxImageEffectPropFrameRange, 1).value_or(0)},
            p.find<double>(kOfxImageEffectPropFrameStep).value_or(1),
            flag(p, kOfxPropIsInteractive),
            scaleOf(p)};
}

OfxStatus orDefault(bool answered) { return answered ? kOfxStatOK : kOfxStatReplyDefault; }

// --- Handlers ---

// Load and unload come from several threads, any number of times, and beside running renders.
std::mutex& loadLock() {
    static std::mutex lock;
    return lock;
}

OfxStatus load(Call& call) {
    const std::lock_guard guard(loadLock());
    loadSuites();
    call.factory.load();
    return kOfxStatOK;
}

OfxStatus unload(Call& call) {
    const std::lock_guard guard(loadLock());
    call.factory.unload();
    return kOfxStatOK;
}

OfxStatus describe(Call& call) {
    call.factory.describe(call.handle);
    return kOfxStatOK;
}

OfxStatus describeInContext(Call& call) {
    call.factory.describeInContext(call.handle, contextOf(call.in));
    return kOfxStatOK;
}

OfxStatus createInstance(Call& call) {
    const PropertySet properties = propertiesOf(call.handle);
    if (instanceDataOf(properties) != nullptr) throw Exception::Suite(kOfxStatErrExists, "the instance exists already");
    ImageEffect* instance = call.factory.createInstance(call.handle, contextOf(properties));
    if (!properties.set(kOfxPropInstanceData, static_cast<void*>(instance))) {
        delete instance;
        throw Exception::Suite(kOfxStatFailed, "the host keeps no instance data");
    }
    return kOfxStatOK;
}

OfxStatus destroyInstance(Call& call) {
    ImageEffect& instance = instanceOf(call);
    propertiesOf(call.handle).set(kOfxPropInstanceData, static_cast<void*>(nullptr));
    delete &instance;
    return kOfxStatOK;
}

OfxStatus render(Call& call) {
    instanceOf(call).render(renderArguments(call.in));
    return kOfxStatOK;
}

OfxStatus beginSequenceRender(Call& call) {
    instanceOf(call).beginSequenceRender(sequenceArguments(call.in));
    return kOfxStatOK;
}

OfxStatus endSequenceRender(Call& call) {
    instanceOf(call).endSequenceRender(sequenceArguments(call.in));
    return kOfxStatOK;
}

OfxStatus isIdentity(Call& call) {
    Identity identity;
    if (!instanceOf(call).isIdentity({timeOf(call.in), scaleOf(call.in), windowOf(call.in), fieldOf(call.in)},
                                     identity)) {
        return kOfxStatReplyDefault;
    }
    call.out.set(kOfxPropName, identity.clip);
    call.out.set(kOfxPropTime, identity.time);
    return kOfxStatOK;
}

OfxStatus getRegionOfDefinition(Call& call) {
    OfxRectD region{};
    if (!instanceOf(call).getRegionOfDefinition({timeOf(call.in), scaleOf(call.in), {}}, region)) {
        return kOfxStatReplyDefault;
    }
    int index = 0;
    for (const double side : {region.x1, region.y1, region.x2, region.y2}) {
        call.out.set(kOfxImageEffectPropRegionOfDefinition, side, index++);
    }
    return kOfxStatOK;
}

OfxStatus getRegionsOfInterest(Call& call) {
    const auto side = [&](int index) {
        return call.in.find<double>(kOfxImageEffectPropRegionOfInterest, index).value_or(0);
    };
    const OfxRectD wanted = {side(0), side(1), side(2), side(3)};
    return orDefault(instanceOf(call).getRegionsOfInterest({timeOf(call.in), scaleOf(call.in), wanted}, call.out));
}

OfxStatus getFramesNeeded(Call& call) { return orDefault(instanceOf(call).getFramesNeeded(timeOf(call.in), call.out)); }

OfxStatus getClipPreferences(Call& call) { return orDefault(instanceOf(call).getClipPreferences(call.out)); }

OfxStatus purgeCaches(Call& call) {
    instanceOf(call).purgeCaches();
    return kOfxStatOK;
}

OfxStatus syncPrivateData(Call& call) {
    instanceOf(call).syncPrivateData();
    return kOfxStatOK;
}

OfxStatus getTimeDomain(Call& call) {
    OfxRangeD domain{};
    if (!instanceOf(call).getTimeDomain(domain)) return kOfxStatReplyDefault;
    call.out.set(kOfxImageEffectPropFrameRange, domain.min, 0);
    call.out.set(kOfxImageEffectPropFrameRange, domain.max, 1);
    return kOfxStatOK;
}

OfxStatus beginInstanceChanged(Call& call) {
    instanceOf(call).beginChanged(reasonOf(call.in));
    return kOfxStatOK;
}

OfxStatus instanceChanged(Call& call) {
    ImageEffect& instance = instanceOf(call);
    const ImageEffect::ChangeScope scope(instance);
    if (!scope.outermost()) return kOfxStatOK;
    const ChangeArguments arguments = {reasonOf(call.in), timeOf(call.in), scaleOf(call.in)};
    const char* type = call.in.get<const char*>(kOfxPropType);
    const char* name = call.in.get<const char*>(kOfxPropName);
    if (std::strcmp(type, kOfxTypeParameter) == 0) {
        instance.changedParam(arguments, name);
    } else if (std::strcmp(type, kOfxTypeClip) == 0) {
        instance.changedClip(arguments, name);
    }
    return kOfxStatOK;
}

OfxStatus endInstanceChanged(Call& call) {
    instanceOf(call).endChanged(reasonOf(call.in));
    return kOfxStatOK;
}

OfxStatus beginInstanceEdit(Call& call) {
    instanceOf(call).beginEdit();
    return kOfxStatOK;
}

OfxStatus endInstanceEdit(Call& call) {
    instanceOf(call).endEdit();
    return kOfxStatOK;
}

OfxStatus keyframeUplift(Call& call) {
    const auto* data =
        static_cast<const unsigned char*>(call.in.find<void*>(kOfxPropOrvixUpliftData).value_or(nullptr));
    const int length = call.in.find<int>(kOfxPropOrvixUpliftDataLength).value_or(0);
    UpliftArguments arguments;
    arguments.guid = call.in.find<const char*>(kOfxImageEffectPropOrvixUpliftGUID).value_or("");
    arguments.keyframes = call.in.find<void*>(kOfxPropOrvixUpliftKeyframeData).value_or(nullptr);
    if (data != nullptr && length > 0) arguments.record = {data, static_cast<std::size_t>(length)};
    ImageEffect& instance = instanceOf(call);
    const ImageEffect::ChangeScope scope(instance);
    return orDefault(instance.keyframeUplift(arguments));
}

OfxStatus invokeHelp(Call& call) { return orDefault(instanceOf(call).invokeHelp()); }

OfxStatus invokeAbout(Call& call) { return orDefault(instanceOf(call).invokeAbout()); }

// --- The table ---

// What the host has to pass.
enum Arguments { None = 0, Handle = 1, In = 2, Out = 4 };

struct Action {
    const char* name;
    int arguments;
    OfxStatus (*handle)(Call&);
};

constexpr Action kActions[] = {
    {kOfxActionLoad, None, load},
    {kOfxActionUnload, None, unload},
    {kOfxActionDescribe, Handle, describe},
    {kOfxImageEffectActionDescribeInContext, Handle | In, describeInContext},
    {kOfxActionCreateInstance, Handle, createInstance},
    {kOfxActionDestroyInstance, Handle, destroyInstance},
    {kOfxImageEffectActionRender, Handle | In, render},
    {kOfxImageEffectActionBeginSequenceRender, Handle | In, beginSequenceRender},
    {kOfxImageEffectActionEndSequenceRender, Handle | In, endSequenceRender},
    {kOfxImageEffectActionIsIdentity, Handle | In | Out, isIdentity},
    {kOfxImageEffectActionGetRegionOfDefinition, Handle | In | Out, getRegionOfDefinition},
    {kOfxImageEffectActionGetRegionsOfInterest, Handle | In | Out, getRegionsOfInterest},
    {kOfxImageEffectActionGetFramesNeeded, Handle | In | Out, getFramesNeeded},
    {kOfxImageEffectActionGetClipPreferences, Handle | Out, getClipPreferences},
    {kOfxActionPurgeCaches, Handle, purgeCaches},
    {kOfxActionSyncPrivateData, Handle, syncPrivateData},
    {kOfxImageEffectActionGetTimeDomain, Handle | Out, getTimeDomain},
    {kOfxActionBeginInstanceChanged, Handle | In, beginInstanceChanged},
    {kOfxActionInstanceChanged, Handle | In, instanceChanged},
    {kOfxActionEndInstanceChanged, Handle | In, endInstanceChanged},
    {kOfxActionBeginInstanceEdit, Handle, beginInstanceEdit},
    {kOfxActionEndInstanceEdit, Handle, endInstanceEdit},
    {kOfxImageEffectActionOrvixKeyframeUplift, Handle | In, keyframeUplift},
    {kOfxImageEffectActionInvokeHelp, Handle, invokeHelp},
    {kOfxImageEffectActionInvokeAbout, Handle, invokeAbout},
};

// Logs what is wrong with the arguments; false when one is missing.
bool check(const Action& action, const void* handle, const void* in, const void* out) {
    struct Argument {
        int bit;
        const void* passed;
        const char* missing;
        const char* superfluous;
    };
    const Argument arguments[] = {
        {Handle, handle, "'Handle passed to '%s' is null.", "Handle passed to '%s' is not null."},
        {In, in, "'inArgs' handle passed to '%s' is null.", "'inArgs' Handle passed to '%s' is not null."},
        {Out, out, "'outArgs' handle passed to '%s' is null.", "'outArgs' Handle passed to '%s' is not null."},
    };
    bool complete = true;
    for (const Argument& argument : arguments) {
        const bool wanted = (action.arguments & argument.bit) != 0;
        if (wanted == (argument.passed != nullptr)) continue;
        log(wanted ? LogLevel::Error : LogLevel::Info, wanted ? argument.missing : argument.superfluous, action.name);
        complete = complete && !wanted;
    }
    return complete;
}

OfxStatus dispatch(PluginFactory& factory, const char* name, const void* handle, OfxPropertySetHandle in,
                   OfxPropertySetHandle out) {
    for (const Action& action : kActions) {
        if (std::strcmp(name, action.name) != 0) continue;
        if (!check(action, handle, in, out)) return kOfxStatErrBadHandle;
        // The standard passes the effect's handle as a pointer to constant.
        auto* effect = static_cast<OfxImageEffectHandle>(const_cast<void*>(handle));
        Call call{factory, effect, PropertySet(in), PropertySet(out)};
        return action.handle(call);
    }
    log(LogLevel::Info, "Unknown action '%s'.", name);
    return kOfxStatReplyDefault;
}

void logCaught(const char* kind, const char* what) {
    log(LogLevel::Error, "Caught %s", kind);
    log(LogLevel::Error, "    %s", what);
}

OfxStatus guarded(PluginFactory& factory, const char* action, const void* handle, OfxPropertySetHandle in,
                  OfxPropertySetHandle out) noexcept {
    try {
        return dispatch(factory, action, handle, in, out);
    } catch (const Exception::Suite& e) {
        logCaught("OFX::Exception::Suite", e.what());
        return e.status() == kOfxStatOK ? kOfxStatFailed : e.status();
    } catch (const Exception::HostInadequate& e) {
        logCaught("OFX::Exception::HostInadequate", e.what());
        return kOfxStatErrMissingHostFeature;
    } catch (const Exception::PropertyUnknownToHost& e) {
        logCaught("OFX::Exception::PropertyUnknownToHost", e.what());
        return kOfxStatErrMissingHostFeature;
    } catch (const std::bad_alloc& e) {
        logCaught("Unknown exception", e.what());
        return kOfxStatErrMemory;
    } catch (const std::exception& e) {
        logCaught("Unknown exception", e.what());
        return kOfxStatFailed;
    } catch (...) {
        logCaught("Unknown exception", "of a kind of its own");
        return kOfxStatFailed;
    }
}

} // namespace

OfxStatus mainEntry(PluginFactory& factory, const char* action, const void* handle, OfxPropertySetHandle inArgs,
                    OfxPropertySetHandle outArgs) noexcept {
    if (action == nullptr) return kOfxStatErrValue;
    log(LogLevel::Debug, "START mainEntry (%s)", action);
    const OfxStatus status = guarded(factory, action, handle, inArgs, outArgs);
    log(LogLevel::Debug, "STOP mainEntry (%s)\n", action);
    return status;
}

} // namespace OFX
