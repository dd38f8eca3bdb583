// Memory for temporary planes, and the stages of their blur.
#include "ofx/temporary_plane.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "ofx/processor.h"
#include "ofx/suites.h"

namespace OFX {

TemporaryPlane::TemporaryPlane(const ImageEffect& effect, int width, int height, std::size_t components)
    : plane_{static_cast<std::size_t>(width), static_cast<std::size_t>(height), components, nullptr} {
    constexpr std::size_t kAlignment = 64; // the host's may be any
    const std::size_t bytes = plane_.size() * sizeof(float) + kAlignment;
    if (const auto* suite = suites().memory) {
        ofHost_ = true;
        if (suite->memoryAlloc(effect.handle(), bytes, &memory_) != kOfxStatOK) memory_ = nullptr;
    } else {
        memory_ = std::malloc(bytes);
    }
    if (memory_ == nullptr) throw std::bad_alloc();

    const std::size_t gap = -reinterpret_cast<std::uintptr_t>(memory_) % kAlignment;
    plane_.data = reinterpret_cast<float*>(static_cast<std::byte*>(memory_) + gap);
    const std::size_t used = plane_.width * plane_.components;
    for (std::size_t y = 0; y < plane_.height; ++y) std::fill(plane_.row(y) + used, plane_.row(y + 1), 0.0f);
    std::fill(plane_.row(plane_.height), plane_.data + plane_.size(), 0.0f);
}

TemporaryPlane::~TemporaryPlane() {
    if (!ofHost_) {
        std::free(memory_);
    } else if (memory_ != nullptr) {
        suites().memory->memoryFree(memory_);
    }
}

void TemporaryPlane::blur(double sigmaX, double sigmaY, pixelops::Edge edge) {
    const pixelops::GaussianBlur blur(plane_, sigmaX, sigmaY, edge);
    MultiThread::stage(blur.columnPieces(), [&](auto first, auto last) { blur.blurColumns(first, last); });
    MultiThread::stage(blur.rowPieces(), [&](auto first, auto last) { blur.blurRows(first, last); });
}

} // namespace OFX
