// The loops that effects share, by shape: generators fill rows, colour filters map them, transitions mix two. They keep
// inside the images, feed transparent black where a source has no pixels, and stop when the host aborts.
#pragma once

#include <algorithm>
#include <array>

#include "ofx/image.h"
#include "pixelops/rows.h"

namespace OFX {

// Calls row(y, x1, pixels, count) for the part of every row of the window that the destination holds.
template <class T, class Abort, class Row>
void generateRows(const RectI& window, const Image& destination, Abort aborted, Row row) {
    const RectI area = intersection(window, destination.bounds());
    if (empty(area)) return;
    for (int y = area.y1; y < area.y2 && !aborted(); ++y) row(y, area.x1, destination.at<T>(area.x1, y), width(area));
}

// The longest piece of a row in which a source has no pixels.
inline constexpr int kEmptyPiece = 256;

// Calls row(x, y, pixels of each source, destination, count) for all pixels of the window, N components each. A row
// comes in several pieces where a source begins or ends.
template <class T, int N, std::size_t kSources, class Abort, class Row>
void joinRows(const RectI& window, const std::array<const Image*, kSources>& sources, const Image& destination,
              Abort aborted, Row row) {
    static constexpr T kTransparent[std::size_t{kEmptyPiece} * N] = {};
    generateRows<T>(window, destination, aborted, [&](int y, int x1, T* to, int count) {
        for (int x = x1, end = x1, last = x1 + count; x < last; to += std::ptrdiff_t{N} * (end - x), x = end) {
            end = last;
            std::array<const T*, kSources> from;
            for (std::size_t i = 0; i < kSources; ++i) {
                const RectI& bounds = sources[i]->bounds();
                const bool inRow = y >= bounds.y1 && y < bounds.y2 && x < bounds.x2;
                const bool inside = inRow && x >= bounds.x1;
                from[i] = inside ? sources[i]->template at<const T>(x, y) : kTransparent;
                end = std::min(end, inside ? bounds.x2 : x + kEmptyPiece);
                if (inRow && !inside) end = std::min(end, bounds.x1);
            }
            row(x, y, from, to, end - x);
        }
    });
}

// Calls row(source, destination, count).
template <class T, int N, class Abort, class Row>
void mapRows(const RectI& window, const Image& source, const Image& destination, Abort aborted, Row row) {
    joinRows<T, N>(window, std::array{&source}, destination, aborted,
                   [&](int, int, const auto& from, T* to, int count) { row(from[0], to, count); });
}

template <class T, int N, class Abort>
void copyRows(const RectI& window, const Image& source, const Image& destination, Abort aborted) {
    mapRows<T, N>(window, source, destination, aborted, [](const T* from, T* to, int count) {
        pixelops::copyRow(from, to, static_cast<std::size_t>(count) * N * sizeof(T));
    });
}

// Calls row(x, y, from, to, destination, count) with pixels of four components whatever N is: pixels that are alpha
// alone come, and go, as four components alike.
template <class T, int N, class Abort, class Row>
void mixRows(const RectI& window, const Image& from, const Image& to, const Image& destination, Abort aborted,
             Row row) {
    const auto mix = [&](int x, int y, const std::array<const T*, 2>& sources, T* mixed, int count) {
        if constexpr (N == 4) {
            row(x, y, sources[0], sources[1], mixed, static_cast<std::size_t>(count));
        } else {
            constexpr int kPiece = 256;
            T wide[3][kPiece * 4];
            for (int done = 0, n = 0; done < count; done += n) {
                n = std::min(kPiece, count - done);
                for (int i = 0; i < n; ++i) {
                    std::fill_n(wide[0] + 4 * i, 4, sources[0][done + i]);
                    std::fill_n(wide[1] + 4 * i, 4, sources[1][done + i]);
                }
                row(x + done, y, wide[0], wide[1], wide[2], static_cast<std::size_t>(n));
                for (int i = 0; i < n; ++i) mixed[done + i] = wide[2][4 * i + 3];
            }
        }
    };
    joinRows<T, N>(window, std::array{&from, &to}, destination, aborted, mix);
}

} // namespace OFX
