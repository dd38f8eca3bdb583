// The loops that effects share, by shape: generators fill rows, colour filters map them. They keep inside the images,
// feed transparent black where a source has no pixels, and stop when the host aborts.
#pragma once

#include <algorithm>

#include "ofx/image.h"

namespace OFX {

// Calls row(y, x1, pixels, count) for the part of every row of the window that the destination holds.
template <class T, class Abort, class Row>
void generateRows(const RectI& window, const Image& destination, Abort aborted, Row row) {
    const RectI area = intersection(window, destination.bounds());
    if (empty(area)) return;
    for (int y = area.y1; y < area.y2 && !aborted(); ++y) row(y, area.x1, destination.at<T>(area.x1, y), width(area));
}

// Calls row(source, destination, count) with the pixels of every row of the window, N components each; a row may come
// in several pieces.
template <class T, int N, class Abort, class Row>
void mapRows(const RectI& window, const Image& source, const Image& destination, Abort aborted, Row row) {
    constexpr int kPiece = 256;
    static constexpr T kTransparent[std::size_t{kPiece} * N] = {};
    const auto outside = [&](T* to, int count) {
        for (; count > 0; count -= kPiece, to += kPiece * N) row(kTransparent, to, std::min(count, kPiece));
    };
    generateRows<T>(window, destination, aborted, [&](int y, int x1, T* to, int count) {
        const RectI line = {x1, y, x1 + count, y + 1};
        const RectI inside = intersection(line, source.bounds());
        if (empty(inside)) return outside(to, count);
        outside(to, inside.x1 - x1);
        row(source.at<const T>(inside.x1, y), to + (inside.x1 - x1) * N, width(inside));
        outside(to + (inside.x2 - x1) * N, line.x2 - inside.x2);
    });
}

} // namespace OFX
