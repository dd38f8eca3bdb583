// Images: pixels in memory with their place on the plane.
#include "host/image.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "host/error.h"

namespace host {

namespace {

constexpr std::size_t kAlignment = 64;
constexpr auto kGuard = std::byte{0xA5};

constexpr std::array kDepths = {kOfxBitDepthByte, kOfxBitDepthShort, kOfxBitDepthHalf, kOfxBitDepthFloat};
constexpr std::array kComponents = {kOfxImageComponentRGBA, kOfxImageComponentRGB, kOfxImageComponentAlpha};
constexpr std::array kOrders = {kOfxImagePixelOrderRGBA, kOfxImagePixelOrderBGRA};

template <class Enum, std::size_t n>
Enum find(const std::array<const char*, n>& names, const std::string& name, const char* what) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) throw Error("\"" + name + "\" is no " + what + " of this host", kOfxStatErrImageFormat);
    return static_cast<Enum>(found - names.begin());
}

std::string nextId() {
    static std::atomic<unsigned long long> last = 0;
    return "image" + std::to_string(++last);
}

} // namespace

const char* ofxName(Depth depth) { return kDepths.at(static_cast<std::size_t>(depth)); }
const char* ofxName(Components components) { return kComponents.at(static_cast<std::size_t>(components)); }
const char* ofxName(Order order) { return kOrders.at(static_cast<std::size_t>(order)); }
Depth depthFrom(const std::string& name) { return find<Depth>(kDepths, name, "depth"); }
Components componentsFrom(const std::string& name) { return find<Components>(kComponents, name, "component set"); }

int Format::componentCount() const {
    constexpr std::array kCounts = {4, 3, 1};
    return kCounts.at(static_cast<std::size_t>(components));
}

int Format::componentBytes() const {
    constexpr std::array kBytes = {1, 2, 2, 4};
    return kBytes.at(static_cast<std::size_t>(depth));
}

void Image::Free::operator()(std::byte* memory) const { ::operator delete[](memory, std::align_val_t{kAlignment}); }

Image::Image(Format format, OfxRectI bounds, Layout layout)
    : regionOfDefinition(bounds), uniqueId(nextId()), format_(format), bounds_(bounds) {
    const auto columns = static_cast<long long>(bounds.x2) - bounds.x1;
    const auto rows = static_cast<long long>(bounds.y2) - bounds.y1;
    const long long rowBytes = columns * format.pixelBytes() + layout.rowPadding;
    if (columns <= 0 || rows <= 0 || layout.rowPadding < 0 || layout.guardBytes < 0 ||
        rowBytes > std::numeric_limits<int>::max())
        throw Error("an image cannot be " + std::to_string(columns) + " x " + std::to_string(rows) + " pixels",
                    kOfxStatErrImageFormat);
    rowBytes_ = static_cast<std::ptrdiff_t>(layout.negativeRows ? -rowBytes : rowBytes);
    guardBytes_ = (static_cast<std::size_t>(layout.guardBytes) + kAlignment - 1) / kAlignment * kAlignment;
    memory_.reset(
        static_cast<std::byte*>(::operator new[](pixelMemory() + 2 * guardBytes_, std::align_val_t{kAlignment})));
    data_ = memory_.get() + guardBytes_;
    if (layout.negativeRows) data_ += static_cast<std::ptrdiff_t>(rows - 1) * static_cast<std::ptrdiff_t>(rowBytes);
    writeGuards();
}

std::size_t Image::pixelMemory() const {
    return static_cast<std::size_t>(std::abs(rowBytes_)) * static_cast<std::size_t>(height());
}

void Image::fill(std::byte value) { std::memset(memory_.get() + guardBytes_, static_cast<int>(value), pixelMemory()); }

void Image::writeGuards() {
    std::memset(memory_.get(), static_cast<int>(kGuard), guardBytes_);
    std::memset(memory_.get() + guardBytes_ + pixelMemory(), static_cast<int>(kGuard), guardBytes_);
}

bool Image::guardsIntact() const {
    const auto intact = [&](const std::byte* guard) {
        return std::all_of(guard, guard + guardBytes_, [](std::byte value) { return value == kGuard; });
    };
    return intact(memory_.get()) && intact(memory_.get() + guardBytes_ + pixelMemory());
}

} // namespace host
