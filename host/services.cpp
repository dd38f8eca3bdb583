// The small suites: memory, messages, progress, time line, interacts.
#include "host/services.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "host/host.h"
#include "host/instance.h"

namespace host {

namespace {

Instance& requireInstance(void* handle) {
    if (auto* instance = dynamic_cast<Instance*>(&require<Effect>(handle))) return *instance;
    throw Error("not an instance", kOfxStatErrBadHandle);
}

// ---- memory; the effect that asks for it says nothing that the host needs

OfxStatus memoryAlloc(void*, std::size_t bytes, void** memory) {
    return guarded([&] {
        *given(memory) = nullptr;
        void* allocated = std::malloc(std::max<std::size_t>(bytes, 1));
        if (!allocated) return kOfxStatErrMemory;
        LiveTable<void>::instance().insert(allocated, allocated);
        *memory = allocated;
        return kOfxStatOK;
    });
}

OfxStatus memoryFree(void* memory) {
    return guarded([&] {
        if (!LiveTable<void>::instance().find(memory)) return kOfxStatErrBadHandle;
        LiveTable<void>::instance().erase(memory);
        std::free(memory);
        return kOfxStatOK;
    });
}

// ---- messages

std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, given(format), arguments);
    std::string text(static_cast<std::size_t>(std::max(0, length)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

// A message may come before there is an effect.
Host& hostOf(void* handle) {
    if (handle) return require<Effect>(handle).host();
    if (Host* host = Host::current()) return *host;
    throw Error("there is no host", kOfxStatErrBadHandle);
}

OfxStatus message(void* handle, const char* type, const char* id, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const OfxStatus status = guarded([&] {
        const std::string text = formatted(format, arguments);
        return hostOf(handle).message(given(type), id ? id : "", text.c_str());
    });
    va_end(arguments);
    return status;
}

OfxStatus setPersistentMessage(void* handle, const char* type, const char* id, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const OfxStatus status = guarded([&] {
        const std::string text = formatted(format, arguments);
        Instance& instance = requireInstance(handle);
        instance.setPersistentMessage(text);
        return instance.host().message(given(type), id ? id : "", text.c_str());
    });
    va_end(arguments);
    return status;
}

OfxStatus clearPersistentMessage(void* handle) {
    return guarded([&] { requireInstance(handle).setPersistentMessage(""); });
}

// ---- progress

OfxStatus reportProgress(const Instance& instance, double fraction) {
    const std::optional<std::string> label = instance.progressLabel();
    if (!label) throw Error("there is no progress to update");
    const Options& options = instance.host().options();
    const bool goOn = !options.onProgress || options.onProgress(*label, std::clamp(fraction, 0.0, 1.0));
    return goOn && !instance.host().aborted() ? kOfxStatOK : kOfxStatReplyNo;
}

OfxStatus progressStart(void* handle, const char* label) {
    return guarded([&] {
        Instance& instance = requireInstance(handle);
        instance.setProgressLabel(given(label));
        reportProgress(instance, 0);
    });
}

OfxStatus progressStartWithId(void* handle, const char* label, const char*) { return progressStart(handle, label); }

OfxStatus progressUpdate(void* handle, double fraction) {
    return guarded([&] { return reportProgress(requireInstance(handle), fraction); });
}

OfxStatus progressEnd(void* handle) {
    return guarded([&] {
        Instance& instance = requireInstance(handle);
        if (!instance.progressLabel()) throw Error("there is no progress to end");
        instance.setProgressLabel(std::nullopt);
    });
}

// ---- time line

OfxStatus getTime(void* handle, double* time) {
    return guarded([&] { *given(time) = require<Effect>(handle).time(); });
}

OfxStatus gotoTime(void* handle, double time) {
    return guarded([&] { require<Effect>(handle).host().setTime(time); });
}

OfxStatus getTimeBounds(void* handle, double* first, double* last) {
    return guarded([&] {
        const OfxRangeD frames = require<Effect>(handle).host().options().frames;
        *given(first) = frames.min;
        *given(last) = frames.max;
    });
}

// ---- interacts; the host has none, so no handle is one of its own

OfxStatus noInteract(OfxInteractHandle) { return kOfxStatErrBadHandle; }
OfxStatus noInteractProperties(OfxInteractHandle, OfxPropertySetHandle*) { return kOfxStatErrBadHandle; }

} // namespace

const OfxMemorySuiteV1 kMemorySuite = {.memoryAlloc = memoryAlloc, .memoryFree = memoryFree};
const OfxMessageSuiteV1 kMessageSuiteV1 = {.message = message};
const OfxMessageSuiteV2 kMessageSuiteV2 = {
    .message = message, .setPersistentMessage = setPersistentMessage, .clearPersistentMessage = clearPersistentMessage};
const OfxProgressSuiteV1 kProgressSuiteV1 = {
    .progressStart = progressStart, .progressUpdate = progressUpdate, .progressEnd = progressEnd};
const OfxProgressSuiteV2 kProgressSuiteV2 = {
    .progressStart = progressStartWithId, .progressUpdate = progressUpdate, .progressEnd = progressEnd};
const OfxTimeLineSuiteV1 kTimeLineSuite = {.getTime = getTime, .gotoTime = gotoTime, .getTimeBounds = getTimeBounds};
const OfxInteractSuiteV1 kInteractSuite = {
    .interactSwapBuffers = noInteract, .interactRedraw = noInteract, .interactGetPropertySet = noInteractProperties};

} // namespace host
