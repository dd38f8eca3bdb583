// Clips: where an effect's images come from and go to.
#pragma once
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/image.h"
#include "host/property_set.h"

namespace host {

class Effect;
class Instance;
class Clip;
struct RenderInProgress;

// The image of a time, null when there is none; called from any rendering thread. May throw.
using ImageSource = std::function<std::shared_ptr<Image>(double time)>;
// The region that a source fills, in canonical coordinates.
using RegionSource = std::function<OfxRectD(double time)>;

// One image as a plug-in holds it, from clipGetImage to clipReleaseImage.
class FetchedImage : public PropertySet {
public:
    FetchedImage(Clip& clip, std::shared_ptr<Image> image, const RenderInProgress* render);
    ~FetchedImage();
    static FetchedImage* find(OfxPropertySetHandle handle);

    Clip& clip() const { return clip_; }

private:
    friend class Clip;
    Clip& clip_;
    std::shared_ptr<Image> image_; // null once released
    const RenderInProgress* render_;
    bool reported_ = false; // as a leak
};

// A clip of a descriptor or an instance.
class Clip : public Handle<Clip, OfxImageClipHandle> {
public:
    Clip(const std::string& name, Effect& descriptor);
    Clip(const Clip& described, Instance& instance);

    const std::string& name() const { return name_; }
    Effect& effect() const { return effect_; }
    PropertySet& properties() { return properties_; }
    const PropertySet& properties() const { return properties_; }
    bool isOutput() const { return name_ == kOfxImageEffectOutputClipName; }
    bool isOptional() const;
    bool isConnected() const;

    // Inputs. Without a region source the image's own region counts, which costs fetching it. Not during actions.
    void connect(ImageSource image, Format format, RegionSource region = {});
    void connect(std::shared_ptr<Image> still);
    void disconnect();

    // What the clip tells of its pixels; render() sets the output clip's.
    Format format() const; // the default one until it is known
    void setFormat(Format format);

    // Throw Error when there is no image or region. The region is canonical.
    FetchedImage& fetch(double time);
    OfxRectD region(double time);

    // Gives an image back. False and a report to the host when that was done before.
    bool release(FetchedImage& image);
    int imagesOutstanding() const;
    // Reports images of this render that were never released, and forgets to which render they belong.
    void reportLeaks(const RenderInProgress* render);

private:
    std::shared_ptr<Image> source(double time, const RenderInProgress* render);
    void report(const std::string& what) const;

    const std::string name_;
    Effect& effect_;
    Instance* const instance_; // null for a descriptor's clip
    PropertySet properties_;
    ImageSource image_;
    RegionSource region_;
    mutable std::mutex mutex_; // of what follows
    std::optional<Format> format_;
    std::map<FetchedImage*, std::unique_ptr<FetchedImage>> fetched_;
    // The last ones given back: kept so that a second release is recognised although memory gets used again.
    std::deque<std::unique_ptr<FetchedImage>> released_;
};

} // namespace host
