// One image of a clip, held from its fetch to its release.
#pragma once

#include <cstddef>

#include "ofx/clip.h"

namespace OFX {

using RectI = OfxRectI;

inline int width(const RectI& r) { return r.x2 - r.x1; }
inline int height(const RectI& r) { return r.y2 - r.y1; }
inline bool empty(const RectI& r) { return r.x2 <= r.x1 || r.y2 <= r.y1; }
// Whether width and height are numbers that an int can say; hosts may pass anything.
bool measurable(const RectI& r);
RectI intersection(const RectI& a, const RectI& b);

// What makes the pixels of an aspect ratio square: the smaller factors that columns and rows are multiplied with.
struct AspectScale {
    explicit AspectScale(double pixelAspect)
        : x(pixelAspect < 1 ? pixelAspect : 1), y(pixelAspect < 1 ? 1 : 1 / pixelAspect) {}
    double x, y;
};

class Image {
public:
    // Fetches the image at a time, in frames. Throws Exception::Suite with kOfxStatFailed when it cannot be had or when
    // what the host tells of it makes no sense (rows shorter than the bounds are wide).
    Image(const Clip& clip, double time);
    ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    const PropertySet& properties() const { return properties_; }
    const PixelFormat& format() const { return format_; }
    // Pixels that exist, half-open; row y1 is the lowest, and origins may be negative.
    const RectI& bounds() const { return bounds_; }
    // Width of a pixel divided by its height; 1 where the host does not tell.
    double pixelAspect() const { return pixelAspect_; }
    // False for an image that lives on a device only.
    bool inMemory() const { return data_ != nullptr; }
    // The 2-D image object (cl_mem) of a device image, the window's pixels with row y1 first; null without one.
    void* openCL() const { return properties_.find<void*>(kOfxImageEffectPropOpenCLImage).value_or(nullptr); }

    // Address of the first component of pixel (x, y), which must lie inside the bounds.
    template <class T>
    T* at(int x, int y) const {
        return reinterpret_cast<T*>(data_ + (y - std::ptrdiff_t{bounds_.y1}) * rowBytes_ +
                                    (x - std::ptrdiff_t{bounds_.x1}) * format_.pixelBytes());
    }

    // Distance from row to row in whole pixels, whichever way the rows go.
    int rowLength() const;
    // True when rows follow each other without a gap, from the lowest upwards.
    bool contiguous() const { return rowBytes_ == std::ptrdiff_t{width(bounds_)} * format_.pixelBytes(); }

private:
    void read(const Clip& clip);

    PropertySet properties_;
    PixelFormat format_;
    RectI bounds_{};
    std::byte* data_ = nullptr;
    std::ptrdiff_t rowBytes_ = 0;
    double pixelAspect_ = 1;
};

} // namespace OFX
