// A clip of an effect instance: where its images come from, and what the host says of them.
#pragma once

#include "ofx/enumerations.h"
#include "ofx/property.h"
#include "openfx/openfx.h"

namespace OFX {

// How pixels lie in memory. Components::None stands for any layout that the bundle does not render (RGB, none,
// unknown), Depth::None likewise; the blue-first depths never stand here, they become an order.
struct PixelFormat {
    Depth depth = Depth::None;
    Components components = Components::None;
    PixelOrder order = PixelOrder::RGBA;

    int componentCount() const; // 4, 1 or 0
    int pixelBytes() const;     // 0 where the layout is unknown
    bool rendered() const { return pixelBytes() > 0 && depth != Depth::Short; }

    bool operator==(const PixelFormat&) const = default;
};

class Clip {
public:
    // Throws when the effect has no clip of that name.
    Clip(OfxImageEffectHandle effect, const char* name);

    OfxImageClipHandle handle() const { return handle_; }
    const PropertySet& properties() const { return properties_; }

    bool connected() const;
    // Format of the images to come, as far as the host tells.
    PixelFormat format() const;
    // First and last frame, inclusive; false where the host does not tell.
    bool frameRange(OfxRangeD& range) const;

private:
    OfxImageClipHandle handle_ = nullptr;
    PropertySet properties_;
};

// The format that a clip's or an image's properties tell; `otherwise` fills in what they leave out.
PixelFormat formatOf(const PropertySet& properties, PixelFormat otherwise);

} // namespace OFX
