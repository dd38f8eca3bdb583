// Images: pixels in memory with their place on the plane.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "openfx/openfx.h"

namespace host {

enum class Depth { Byte, Short, Half, Float };
enum class Components { RGBA, RGB, Alpha };
enum class Order { RGBA, BGRA };

// The names of the C API, and back (ofx("OfxBitDepthByte")); the latter throw Error for a name that has no format here.
const char* ofxName(Depth depth);
const char* ofxName(Components components);
const char* ofxName(Order order);
Depth depthFrom(const std::string& ofxName);
Components componentsFrom(const std::string& ofxName);

// What a pixel is.
struct Format {
    Depth depth = Depth::Float;
    Components components = Components::RGBA;
    Order order = Order::RGBA;

    int componentCount() const;
    int componentBytes() const;
    int pixelBytes() const { return componentCount() * componentBytes(); }
    bool operator==(const Format&) const = default;
};

// How rows lie in memory.
struct Layout {
    int rowPadding = 0;        // unused bytes after each row
    bool negativeRows = false; // row y1 last in memory, row bytes negative
    int guardBytes = 0;        // bytes before and after the pixels that nobody may write
};

// An image owns its pixels. Memory starts 64-byte aligned (after the guard, which is rounded up to 64 bytes) and is not
// cleared: fill() does that. The caller orders access from several threads.
class Image {
public:
    // Throws Error for bounds without area or beyond what an int row size can say, bad_alloc when memory ends.
    Image(Format format, OfxRectI bounds, Layout layout = {});

    const Format& format() const { return format_; }
    const OfxRectI& bounds() const { return bounds_; }
    int width() const { return bounds_.x2 - bounds_.x1; }
    int height() const { return bounds_.y2 - bounds_.y1; }

    // Pixel (bounds.x1, y); y counts upwards.
    std::byte* row(int y) { return data() + static_cast<std::ptrdiff_t>(y - bounds_.y1) * rowBytes_; }
    const std::byte* row(int y) const { return const_cast<Image*>(this)->row(y); }
    template <class Component>
    Component* row(int y) {
        return reinterpret_cast<Component*>(row(y));
    }
    template <class Component>
    const Component* row(int y) const {
        return reinterpret_cast<const Component*>(row(y));
    }

    // Row y1, and the distance to the row above it, which is negative for negativeRows.
    std::byte* data() { return data_; }
    const std::byte* data() const { return data_; }
    std::ptrdiff_t rowBytes() const { return rowBytes_; }

    void fill(std::byte value); // the pixels and the padding, not the guards
    void writeGuards();         // once more, for an image that is used again
    bool guardsIntact() const;

    // What a plug-in is told beside the pixels.
    OfxRectI regionOfDefinition; // the bounds unless changed
    double pixelAspect = 1;
    OfxPointD renderScale{1, 1};
    std::string premultiplication = kOfxImagePreMultiplied;
    std::string field = kOfxImageFieldNone;
    std::string uniqueId; // different for each image unless changed

private:
    struct Free {
        void operator()(std::byte* memory) const;
    };
    std::size_t pixelMemory() const;

    Format format_;
    OfxRectI bounds_;
    std::ptrdiff_t rowBytes_ = 0;
    std::size_t guardBytes_ = 0;
    std::unique_ptr<std::byte[], Free> memory_;
    std::byte* data_ = nullptr;
};

} // namespace host
