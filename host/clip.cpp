// Clips: where an effect's images come from and go to.
#include "host/clip.h"

#include <utility>

#include "host/definitions.h"
#include "host/host.h"
#include "host/instance.h"
#include "host/opencl.h"
#include "host/plugin.h"

namespace host {

namespace {

constexpr std::size_t kReleasedKept = 64;

void describeImage(PropertySet& properties, const Image& image, const Options& options) {
    const OfxRectI bounds = image.bounds(), region = image.regionOfDefinition;
    properties.set(kOfxPropType, kOfxTypeImage);
    properties.set(kOfxImageEffectPropPixelDepth, ofxName(image.format().depth));
    properties.set(kOfxImageEffectPropComponents, ofxName(image.format().components));
    if (options.extensions) properties.set(kOfxImageEffectPropPixelOrder, ofxName(image.format().order));
    properties.set(kOfxImageEffectPropPreMultiplication, image.premultiplication);
    properties.set(kOfxImageEffectPropRenderScale, std::vector{image.renderScale.x, image.renderScale.y});
    properties.set(kOfxImagePropPixelAspectRatio, image.pixelAspect);
    properties.set<void*>(kOfxImagePropData, const_cast<std::byte*>(image.data()));
    properties.set(kOfxImagePropBounds, std::vector{bounds.x1, bounds.y1, bounds.x2, bounds.y2});
    properties.set(kOfxImagePropRegionOfDefinition, std::vector{region.x1, region.y1, region.x2, region.y2});
    properties.set(kOfxImagePropRowBytes, static_cast<int>(image.rowBytes()));
    properties.set(kOfxImagePropField, image.field);
    properties.set(kOfxImagePropUniqueIdentifier, image.uniqueId);
    if (options.onImage) options.onImage(properties);
}

} // namespace

FetchedImage::FetchedImage(Clip& clip, std::shared_ptr<Image> image, const RenderInProgress* render)
    : PropertySet(clip.effect().host().options().extensions), clip_(clip), image_(std::move(image)), render_(render) {
    describeImage(*this, *image_, clip.effect().host().options());
    LiveTable<FetchedImage>::instance().insert(handle(), this);
}

FetchedImage::~FetchedImage() { LiveTable<FetchedImage>::instance().erase(handle()); }

FetchedImage* FetchedImage::find(OfxPropertySetHandle handle) {
    return LiveTable<FetchedImage>::instance().find(handle);
}

Clip::Clip(const std::string& name, Effect& descriptor)
    : name_(name), effect_(descriptor), instance_(nullptr), properties_(descriptor.host().options().extensions) {
    defineClip(properties_, name);
}

Clip::Clip(const Clip& described, Instance& instance)
    : name_(described.name_), effect_(instance), instance_(&instance), properties_(described.properties_) {
    defineClipInstance(properties_, instance.host().options());
    if (isOutput()) properties_.set(kOfxImageClipPropConnected, 1);
}

bool Clip::isOptional() const { return properties_.getOr(kOfxImageClipPropOptional, 0) != 0; }
bool Clip::isConnected() const { return properties_.getOr(kOfxImageClipPropConnected, 0) != 0; }

void Clip::connect(ImageSource image, Format format, RegionSource region) {
    image_ = std::move(image);
    region_ = std::move(region);
    setFormat(format);
    properties_.set(kOfxImageClipPropConnected, 1);
}

void Clip::connect(std::shared_ptr<Image> still) {
    properties_.set(kOfxImagePropPixelAspectRatio, still->pixelAspect);
    properties_.set(kOfxImageEffectPropPreMultiplication, still->premultiplication);
    const Format format = still->format();
    connect([still = std::move(still)](double) { return still; }, format);
}

void Clip::disconnect() {
    image_ = nullptr;
    region_ = nullptr;
    properties_.set(kOfxImageClipPropConnected, 0);
}

Format Clip::format() const {
    const std::lock_guard lock(mutex_);
    return format_.value_or(Format());
}

void Clip::setFormat(Format format) {
    const std::lock_guard lock(mutex_);
    if (format_ == format) return;
    format_ = format;
    for (const char* name : {kOfxImageEffectPropPixelDepth, kOfxImageClipPropUnmappedPixelDepth})
        properties_.set(name, ofxName(format.depth));
    for (const char* name : {kOfxImageEffectPropComponents, kOfxImageClipPropUnmappedComponents})
        properties_.set(name, ofxName(format.components));
    if (effect_.host().options().extensions) properties_.set(kOfxImageEffectPropPixelOrder, ofxName(format.order));
}

std::shared_ptr<Image> Clip::source(double time, const RenderInProgress* render) {
    std::shared_ptr<Image> image;
    if (isOutput())
        image = render ? render->request.output : nullptr;
    else if (image_)
        image = image_(time);
    if (!image) throw Error("clip \"" + name_ + "\" has no image at time " + std::to_string(time));
    return image;
}

FetchedImage& Clip::fetch(double time) {
    const RenderInProgress* render = instance_ ? instance_->renderAt(time) : nullptr;
    std::shared_ptr<Image> pixels = source(time, render);
    auto fetched = std::make_unique<FetchedImage>(*this, pixels, render);
    FetchedImage& image = *fetched;
    if (render && render->device) {
        image.set<void*>(kOfxImageEffectPropOpenCLImage, render->device->of(pixels));
        image.set<void*>(kOfxImagePropData, nullptr); // the pixels are on the device
    }
    const std::lock_guard lock(mutex_);
    fetched_[&image] = std::move(fetched);
    return image;
}

OfxRectD Clip::region(double time) {
    if (isOutput() && instance_) return instance_->regionOfDefinition(time);
    if (region_) return region_(time);
    const std::shared_ptr<Image> image = source(time, nullptr);
    const OfxRectI& pixels = image->regionOfDefinition;
    const double x = image->pixelAspect / image->renderScale.x, y = 1 / image->renderScale.y;
    return {pixels.x1 * x, pixels.y1 * y, pixels.x2 * x, pixels.y2 * y};
}

bool Clip::release(FetchedImage& image) {
    const std::lock_guard lock(mutex_);
    const auto found = fetched_.find(&image);
    if (found == fetched_.end()) {
        report("released twice");
        return false;
    }
    image.retire();
    image.image_.reset();
    released_.push_back(std::move(found->second));
    fetched_.erase(found);
    if (released_.size() > kReleasedKept) released_.pop_front();
    return true;
}

int Clip::imagesOutstanding() const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(fetched_.size());
}

void Clip::reportLeaks(const RenderInProgress* render) {
    const std::lock_guard lock(mutex_);
    for (const auto& [image, owner] : fetched_) {
        if (image->render_ != render) continue;
        image->render_ = nullptr;
        if (!std::exchange(image->reported_, true)) report("never released");
    }
}

void Clip::report(const std::string& what) const {
    effect_.host().report(instance_->plugin().identifier() + ": an image of clip \"" + name_ + "\" was " + what);
}

} // namespace host
