// The image-effect suite.
#include <cstddef>
#include <limits>

#include "host/context.h"
#include "host/host.h"
#include "host/instance.h"

namespace host {

namespace {

// Memory that a plug-in asked for, with how often it is locked. Without an instance it owns itself.
class ImageMemory : public Handle<ImageMemory, OfxImageMemoryHandle> {
public:
    ImageMemory(Instance* owner, std::size_t bytes)
        : owner_(owner), bytes_(std::make_unique<std::max_align_t[]>(bytes / sizeof(std::max_align_t) + 1)) {}
    Instance* owner() const { return owner_; }
    void* bytes() const { return bytes_.get(); }
    std::atomic<int> locks = 0;

private:
    Instance* owner_;
    std::unique_ptr<std::max_align_t[]> bytes_;
};

OfxStatus getPropertySet(OfxImageEffectHandle effect, OfxPropertySetHandle* properties) {
    return guarded([&] { *given(properties) = require<Effect>(effect).properties().handle(); });
}

OfxStatus getParamSet(OfxImageEffectHandle effect, OfxParamSetHandle* parameters) {
    return guarded([&] { *given(parameters) = require<Effect>(effect).parameters().handle(); });
}

OfxStatus clipDefine(OfxImageEffectHandle effect, const char* name, OfxPropertySetHandle* properties) {
    return guarded([&] {
        auto* descriptor = dynamic_cast<Descriptor*>(&require<Effect>(effect));
        if (!descriptor) throw Error("clips are defined while a plug-in describes", kOfxStatErrBadHandle);
        Clip& clip = descriptor->defineClip(given(name));
        if (properties) *properties = clip.properties().handle();
    });
}

OfxStatus clipGetHandle(OfxImageEffectHandle effect, const char* name, OfxImageClipHandle* handle,
                        OfxPropertySetHandle* properties) {
    return guarded([&] {
        Clip& clip = require<Effect>(effect).clip(given(name));
        if (handle) *handle = clip.handle();
        if (properties) *properties = clip.properties().handle();
    });
}

OfxStatus clipGetPropertySet(OfxImageClipHandle clip, OfxPropertySetHandle* properties) {
    return guarded([&] { *given(properties) = require<Clip>(clip).properties().handle(); });
}

// Images are handed out whole, so a region is always covered as far as there is an image.
OfxStatus clipGetImage(OfxImageClipHandle clip, OfxTime time, const OfxRectD*, OfxPropertySetHandle* image) {
    return guarded([&] {
        *given(image) = nullptr;
        *image = require<Clip>(clip).fetch(time).handle();
    });
}

OfxStatus clipReleaseImage(OfxPropertySetHandle handle) {
    return guarded([&] {
        FetchedImage* image = FetchedImage::find(handle);
        return image && image->clip().release(*image) ? kOfxStatOK : kOfxStatErrBadHandle;
    });
}

OfxStatus clipGetRegionOfDefinition(OfxImageClipHandle clip, OfxTime time, OfxRectD* bounds) {
    return guarded([&] { *given(bounds) = require<Clip>(clip).region(time); });
}

int abort(OfxImageEffectHandle handle) {
    // Asked for every row. Within a render it takes no lock, which would wait for pixels on their way to memory.
    const ThreadContext& context = ThreadContext::current();
    const bool own = context.render != nullptr && context.render->instance.handle() == handle;
    bool aborted = false;
    guarded([&] { aborted = own ? context.host->aborted() : require<Effect>(handle).host().aborted(); });
    return aborted ? 1 : 0;
}

OfxStatus imageMemoryAlloc(OfxImageEffectHandle effect, std::size_t bytes, OfxImageMemoryHandle* handle) {
    return guarded([&] {
        auto* owner = effect ? dynamic_cast<Instance*>(&require<Effect>(effect)) : nullptr;
        if (effect && !owner) throw Error("not an instance", kOfxStatErrBadHandle);
        *given(handle) = nullptr;
        if (bytes > std::numeric_limits<std::size_t>::max() / 2) throw std::bad_alloc();
        auto memory = std::make_unique<ImageMemory>(owner, bytes);
        *handle = memory->handle();
        if (owner)
            owner->adoptMemory(*handle, std::move(memory));
        else
            static_cast<void>(memory.release());
    });
}

OfxStatus imageMemoryFree(OfxImageMemoryHandle handle) {
    return guarded([&] {
        ImageMemory& memory = require<ImageMemory>(handle);
        if (memory.owner())
            memory.owner()->forgetMemory(handle);
        else
            delete &memory;
    });
}

OfxStatus imageMemoryLock(OfxImageMemoryHandle handle, void** bytes) {
    return guarded([&] {
        ImageMemory& memory = require<ImageMemory>(handle);
        *given(bytes) = memory.bytes();
        ++memory.locks;
    });
}

OfxStatus imageMemoryUnlock(OfxImageMemoryHandle handle) {
    return guarded([&] {
        ImageMemory& memory = require<ImageMemory>(handle);
        if (--memory.locks >= 0) return kOfxStatOK;
        ++memory.locks;
        return kOfxStatFailed;
    });
}

} // namespace

const OfxImageEffectSuiteV1 kImageEffectSuite = {
    .getPropertySet = getPropertySet,
    .getParamSet = getParamSet,
    .clipDefine = clipDefine,
    .clipGetHandle = clipGetHandle,
    .clipGetPropertySet = clipGetPropertySet,
    .clipGetImage = clipGetImage,
    .clipReleaseImage = clipReleaseImage,
    .clipGetRegionOfDefinition = clipGetRegionOfDefinition,
    .abort = abort,
    .imageMemoryAlloc = imageMemoryAlloc,
    .imageMemoryFree = imageMemoryFree,
    .imageMemoryLock = imageMemoryLock,
    .imageMemoryUnlock = imageMemoryUnlock,
};

} // namespace host
