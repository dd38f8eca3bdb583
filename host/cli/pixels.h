// Between rows of files, which hold interleaved channels with straight or premultiplied alpha, and rows of host images,
// which are premultiplied RGBA, byte or float, in either channel order. No colour transform: values pass as they are.
#pragma once
#include <cstdint>
#include <memory>

#include "host/image.h"

namespace cli {

// Where a file's pixel holds its channels; alpha -1: there is none, the pixel is opaque. Grey has all three at one
// place.
struct Channels {
    int count = 4;
    int red = 0, green = 1, blue = 2, alpha = 3;
    bool straight = true;
};

// T: std::uint8_t, std::uint16_t or float; integers stand for 0 to 1.
template <class T>
void unpackRow(const T* file, const Channels&, int width, const host::Format&, void* image);

// Writes RGBA, or RGB (channels 3), which shows the picture over black. Straight colours where `straight` is set: there
// a pixel of alpha 0 keeps its colours.
template <class T>
void packRow(const void* image, const host::Format&, int width, int channels, bool straight, T* file);

// Straight colours become premultiplied ones.
void premultiply(host::Image&);

// The whole frame, transparent where the image has no pixels; the image itself when it covers exactly the frame.
std::shared_ptr<host::Image> framed(const std::shared_ptr<host::Image>&, const OfxRectI& frame);

} // namespace cli
