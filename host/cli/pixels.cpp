// Every conversion goes through floats from 0 to 1, which hold 8 and 16 bits exactly.
#include "host/cli/pixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace cli {
namespace {

template <class T>
float toUnit(T value) {
    if constexpr (std::is_floating_point_v<T>)
        return value;
    else
        return static_cast<float>(value) * (1.0f / static_cast<float>(std::numeric_limits<T>::max()));
}

// Rounds to the nearest step; not-a-number becomes 0.
template <class T>
T fromUnit(float value) {
    if constexpr (std::is_floating_point_v<T>)
        return value;
    else {
        constexpr float kMax = static_cast<float>(std::numeric_limits<T>::max());
        return static_cast<T>(static_cast<int>(std::min(1.0f, std::max(0.0f, value)) * kMax + 0.5f));
    }
}

// Calls the function with the row as the type that its depth says. This program makes byte and float images only.
template <class Function>
void withType(const host::Format& format, void* row, Function function) {
    if (format.depth == host::Depth::Byte)
        function(static_cast<std::uint8_t*>(row));
    else
        function(static_cast<float*>(row));
}
template <class Function>
void withType(const host::Format& format, const void* row, Function function) {
    if (format.depth == host::Depth::Byte)
        function(static_cast<const std::uint8_t*>(row));
    else
        function(static_cast<const float*>(row));
}

int redIndex(const host::Format& format) { return format.order == host::Order::BGRA ? 2 : 0; }

template <class T>
constexpr T kOpaque = std::is_floating_point_v<T> ? T(1) : std::numeric_limits<T>::max();

// The rule for one pixel's colours: times the factor, or as they are where nothing changes, which is most pixels.
template <class To, class From>
To scaled(From value, float factor, bool same) {
    if constexpr (std::is_same_v<To, From>)
        if (same) return value;
    return fromUnit<To>(toUnit(value) * factor);
}

} // namespace

template <class T>
void unpackRow(const T* file, const Channels& channels, int width, const host::Format& format, void* image) {
    const int red = redIndex(format), blue = 2 - red;
    withType(format, image, [&](auto* to) {
        using To = std::remove_pointer_t<decltype(to)>;
        for (int x = 0; x < width; ++x, file += channels.count, to += 4) {
            const T alpha = channels.alpha < 0 ? kOpaque<T> : file[channels.alpha];
            const bool same = !channels.straight || alpha == kOpaque<T>;
            const float factor = same ? 1.0f : toUnit(alpha);
            to[red] = scaled<To>(file[channels.red], factor, same);
            to[1] = scaled<To>(file[channels.green], factor, same);
            to[blue] = scaled<To>(file[channels.blue], factor, same);
            to[3] = scaled<To>(alpha, 1, true);
        }
    });
}

template <class T>
void packRow(const void* image, const host::Format& format, int width, int channels, bool straight, T* file) {
    const int red = redIndex(format), blue = 2 - red;
    withType(format, image, [&](const auto* from) {
        using From = std::remove_const_t<std::remove_pointer_t<decltype(from)>>;
        for (int x = 0; x < width; ++x, from += 4, file += channels) {
            const From alpha = from[3];
            const bool same = !straight || alpha == kOpaque<From> || !(alpha > 0);
            const float factor = same ? 1.0f : 1 / toUnit(alpha);
            file[0] = scaled<T>(from[red], factor, same);
            file[1] = scaled<T>(from[1], factor, same);
            file[2] = scaled<T>(from[blue], factor, same);
            if (channels == 4) file[3] = scaled<T>(alpha, 1, true);
        }
    });
}

template void unpackRow(const std::uint8_t*, const Channels&, int, const host::Format&, void*);
template void unpackRow(const std::uint16_t*, const Channels&, int, const host::Format&, void*);
template void unpackRow(const float*, const Channels&, int, const host::Format&, void*);
template void packRow(const void*, const host::Format&, int, int, bool, std::uint8_t*);
template void packRow(const void*, const host::Format&, int, int, bool, std::uint16_t*);
template void packRow(const void*, const host::Format&, int, int, bool, float*);

void premultiply(host::Image& image) {
    const OfxRectI bounds = image.bounds();
    for (int y = bounds.y1; y < bounds.y2; ++y)
        withType(image.format(), image.row(y), [&](auto* pixel) {
            using T = std::remove_pointer_t<decltype(pixel)>;
            for (int x = bounds.x1; x < bounds.x2; ++x, pixel += 4)
                for (int c = 0; c < 3; ++c) pixel[c] = scaled<T>(pixel[c], toUnit(pixel[3]), pixel[3] == kOpaque<T>);
        });
}

std::shared_ptr<host::Image> framed(const std::shared_ptr<host::Image>& image, const OfxRectI& frame) {
    const OfxRectI bounds = image->bounds();
    if (std::memcmp(&bounds, &frame, sizeof frame) == 0) return image;
    auto result = std::make_shared<host::Image>(image->format(), frame);
    const std::size_t pixel = static_cast<std::size_t>(image->format().pixelBytes());
    const int x1 = std::max(bounds.x1, frame.x1), x2 = std::min(bounds.x2, frame.x2);
    for (int y = frame.y1; y < frame.y2; ++y) {
        std::byte* to = result->row(y);
        std::memset(to, 0, pixel * static_cast<std::size_t>(frame.x2 - frame.x1));
        if (x1 >= x2 || y < bounds.y1 || y >= bounds.y2) continue;
        const std::byte* from = image->row(y);
        std::memcpy(to + pixel * static_cast<std::size_t>(x1 - frame.x1),
                    from + pixel * static_cast<std::size_t>(x1 - bounds.x1), pixel * static_cast<std::size_t>(x2 - x1));
    }
    return result;
}

} // namespace cli
