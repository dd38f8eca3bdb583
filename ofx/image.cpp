// Fetching, checking and releasing images.
#include "ofx/image.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "ofx/exception.h"
#include "ofx/suites.h"

namespace OFX {

RectI intersection(const RectI& a, const RectI& b) {
    return {std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2)};
}

bool measurable(const RectI& r) {
    const auto fits = [](std::int64_t low, std::int64_t high) { return std::in_range<int>(high - low); };
    return fits(r.x1, r.x2) && fits(r.y1, r.y2);
}

Image::Image(const Clip& clip, double time) {
    OfxPropertySetHandle handle = nullptr;
    const OfxStatus status = suites().imageEffect->clipGetImage(clip.handle(), time, nullptr, &handle);
    if (status != kOfxStatOK || handle == nullptr) {
        throw Exception::Suite(status == kOfxStatErrMemory ? status : kOfxStatFailed, "an image cannot be had");
    }
    properties_ = PropertySet(handle);
    try {
        read(clip);
    } catch (...) {
        suites().imageEffect->clipReleaseImage(handle);
        throw;
    }
}

Image::~Image() { suites().imageEffect->clipReleaseImage(properties_.handle()); }

int Image::rowLength() const {
    const int pixel = format_.pixelBytes();
    return pixel == 0 ? 0 : static_cast<int>(std::abs(rowBytes_) / pixel);
}

void Image::read(const Clip& clip) {
    format_ = formatOf(properties_, clip.format());
    bounds_ = {properties_.get<int>(kOfxImagePropBounds, 0), properties_.get<int>(kOfxImagePropBounds, 1),
               properties_.get<int>(kOfxImagePropBounds, 2), properties_.get<int>(kOfxImagePropBounds, 3)};
    if (!measurable(bounds_)) throw Exception::Suite(kOfxStatFailed, "an image's bounds make no sense");
    data_ = static_cast<std::byte*>(properties_.find<void*>(kOfxImagePropData).value_or(nullptr));
    const std::ptrdiff_t used =
        (std::ptrdiff_t{bounds_.x2} - std::ptrdiff_t{bounds_.x1}) * std::ptrdiff_t{format_.pixelBytes()};
    rowBytes_ = properties_.find<int>(kOfxImagePropRowBytes).value_or(static_cast<int>(used));
    if (inMemory() && height(bounds_) > 1 && std::abs(rowBytes_) < used) {
        throw Exception::Suite(kOfxStatFailed, "an image's rows are shorter than its bounds");
    }
    const double aspect = properties_.find<double>(kOfxImagePropPixelAspectRatio).value_or(1);
    pixelAspect_ = aspect > 0 && std::isfinite(aspect) ? aspect : 1;
}

} // namespace OFX
