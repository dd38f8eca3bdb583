// Clips and pixel formats through the host's suites.
#include "ofx/clip.h"

#include <cmath>
#include <string>

#include "ofx/exception.h"
#include "ofx/suites.h"

namespace OFX {

int PixelFormat::componentCount() const {
    return components == Components::RGBA ? 4 : components == Components::Alpha ? 1 : 0;
}

int PixelFormat::pixelBytes() const {
    const int componentBytes = depth == Depth::Byte ? 1 : depth == Depth::Short ? 2 : depth == Depth::Float ? 4 : 0;
    return componentBytes * componentCount();
}

PixelFormat formatOf(const PropertySet& properties, PixelFormat otherwise) {
    PixelFormat format = otherwise;
    if (const auto depth = properties.find<const char*>(kOfxImageEffectPropPixelDepth)) {
        switch (const Depth named = depthFrom(*depth)) {
            case Depth::ByteBGR:
                format.depth = Depth::Byte, format.order = PixelOrder::BGRA;
                break;
            case Depth::ShortBGR:
                format.depth = Depth::Short, format.order = PixelOrder::BGRA;
                break;
            case Depth::FloatBGR:
                format.depth = Depth::Float, format.order = PixelOrder::BGRA;
                break;
            default:
                format.depth = named;
        }
    }
    if (const auto components = properties.find<const char*>(kOfxImageEffectPropComponents)) {
        format.components = componentsFrom(*components);
    }
    // The order property outranks the depth's name.
    if (const auto order = properties.find<const char*>(kOfxImageEffectPropPixelOrder)) {
        format.order = pixelOrderFrom(*order);
    }
    return format;
}

Clip::Clip(OfxImageEffectHandle effect, const char* name) {
    OfxPropertySetHandle properties = nullptr;
    const OfxStatus status = suites().imageEffect->clipGetHandle(effect, name, &handle_, &properties);
    // Some hosts answer OK and hand out nothing.
    if (status != kOfxStatOK || handle_ == nullptr) {
        throw Exception::Suite(status == kOfxStatOK ? kOfxStatErrBadHandle : status, std::string("no clip ") + name);
    }
    if (properties == nullptr) {
        Exception::throwUnlessOK(suites().imageEffect->clipGetPropertySet(handle_, &properties), "clipGetPropertySet");
    }
    properties_ = PropertySet(properties);
}

bool Clip::connected() const { return properties_.find<int>(kOfxImageClipPropConnected).value_or(1) != 0; }

PixelFormat Clip::format() const { return formatOf(properties_, {}); }

bool Clip::frameRange(OfxRangeD& range) const {
    const auto first = properties_.find<double>(kOfxImageEffectPropFrameRange, 0);
    const auto last = properties_.find<double>(kOfxImageEffectPropFrameRange, 1);
    if (!first || !last || !std::isfinite(*first) || !std::isfinite(*last)) return false;
    range = {*first, *last};
    return true;
}

} // namespace OFX
