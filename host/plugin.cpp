// One plug-in of a binary: loading, describing and making instances.
#include "host/plugin.h"

#include <algorithm>
#include <exception>

#include "host/context.h"
#include "host/host.h"
#include "host/text.h"

namespace host {

Plugin::Plugin(Host& host, OfxPlugin& record, const std::string& bundlePath)
    : host_(host), record_(record), bundlePath_(bundlePath) {}

Plugin::~Plugin() {
    if (loaded_) unload();
}

bool Plugin::isImageEffect() const {
    return record_.pluginApi == std::string(kOfxImageEffectPluginApi) &&
           record_.apiVersion == kOfxImageEffectPluginApiVersion;
}

OfxStatus Plugin::action(const char* name, const void* handle, PropertySet* inArgs, PropertySet* outArgs) {
    if (host_.options().onAction) host_.options().onAction(name, inArgs, outArgs);
    const ContextScope context({&host_, ThreadContext::current().render});
    const auto handleOf = [](PropertySet* set) { return set ? set->handle() : nullptr; };
    std::string thrown;
    try {
        return record_.mainEntry(name, handle, handleOf(inArgs), handleOf(outArgs));
    } catch (const std::exception& exception) {
        thrown = exception.what();
    } catch (...) {
        thrown = "something unknown";
    }
    host_.report(identifier() + " threw an exception out of " + name + ": " + thrown);
    return kOfxStatFailed;
}

// The answer of an action that must succeed.
void Plugin::expect(const char* name, const void* handle, PropertySet* inArgs) {
    const OfxStatus status = action(name, handle, inArgs, nullptr);
    if (status != kOfxStatOK && status != kOfxStatReplyDefault)
        throw Error(identifier() + " answered " + name + " with " + statusName(status), status);
}

void Plugin::load() {
    if (loaded_) return;
    if (!isImageEffect()) throw Error(identifier() + " is no image effect of version 1", kOfxStatErrUnsupported);
    record_.setHost(host_.record());
    expect(kOfxActionLoad, nullptr, nullptr);
    loaded_ = true;
}

OfxStatus Plugin::unload() {
    loaded_ = false;
    return action(kOfxActionUnload, nullptr, nullptr, nullptr);
}

const Descriptor& Plugin::describe() {
    if (descriptor_) return *descriptor_;
    load();
    auto descriptor = std::make_unique<Descriptor>(host_, bundlePath_);
    expect(kOfxActionDescribe, descriptor->handle(), nullptr);
    descriptor_ = std::move(descriptor);
    return *descriptor_;
}

const Descriptor& Plugin::describeInContext(const std::string& context) {
    std::unique_ptr<Descriptor>& described = inContext_[context];
    if (described) return *described;
    const std::vector<std::string> known = contexts();
    if (std::find(known.begin(), known.end(), context) == known.end())
        throw Error(identifier() + " does not support the context \"" + context + "\"; it supports " + join(known),
                    kOfxStatErrUnsupported);
    auto descriptor = std::make_unique<Descriptor>(*descriptor_, context);
    PropertySet in(host_.options().extensions);
    in.set(kOfxImageEffectPropContext, context);
    expect(kOfxImageEffectActionDescribeInContext, descriptor->handle(), &in);
    described = std::move(descriptor);
    return *described;
}

std::string Plugin::contextFor(int inputs) {
    const char* const byInputs[] = {kOfxImageEffectContextGenerator, kOfxImageEffectContextFilter,
                                    kOfxImageEffectContextTransition};
    const std::vector<std::string> known = contexts();
    const std::string exact = inputs >= 0 && inputs < 3 ? byInputs[inputs] : kOfxImageEffectContextGeneral;
    for (const std::string& context : {exact, std::string(kOfxImageEffectContextGeneral)})
        if (std::find(known.begin(), known.end(), context) != known.end()) return context;
    throw Error(
        identifier() + " does not work with " + std::to_string(inputs) + " inputs; its contexts are " + join(known),
        kOfxStatErrUnsupported);
}

std::unique_ptr<Instance> Plugin::createInstance(const std::string& context) {
    auto instance = std::make_unique<Instance>(*this, describeInContext(context));
    const OfxStatus status = instance->create();
    if (!instance->isCreated())
        throw Error(identifier() + " could not create an instance: " + statusName(status), status);
    return instance;
}

} // namespace host
