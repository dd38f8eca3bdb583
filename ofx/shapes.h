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

// Calls row(x, pixels of each source, count) for the pixels x1 to x2 of line y, N components each: in several pieces
// where a source begins or ends.
template <class T, int N, std::size_t kSources, class Row>
void splitRow(int x1, int x2, int y, const std::array<const Image*, kSources>& sources, Row row) {
    constexpr int kEmptyPiece = 256;
    static constexpr T kTransparent[std::size_t{kEmptyPiece} * N] = {};
    for (int x = x1, end = x1; x < x2; x = end) {
        end = x2;
        std::array<const T*, kSources> from;
        for (std::size_t i = 0; i < kSources; ++i) {
            const RectI& bounds = sources[i]->bounds();
            const bool inRow = y >= bounds.y1 && y < bounds.y2 && x < bounds.x2;
            const bool inside = inRow && x >= bounds.x1;
            from[i] = inside ? sources[i]->template at<const T>(x, y) : kTransparent;
            end = std::min(end, inside ? bounds.x2 : x + std::min(kEmptyPiece, x2 - x));
            if (inRow && !inside) end = std::min(end, bounds.x1);
        }
        row(x, from, end - x);
    }
}

// Calls row(offset, from, to, count) with pixels of four components whatever N is: pixels that are alpha alone come,
// and go, as four components alike. Nothing goes where `to` is null.
template <class T, int N, std::size_t kSources, class Row>
void widenRow(const std::array<const T*, kSources>& from, T* to, int count, Row row) {
    if constexpr (N == 4) {
        row(0, from, to, static_cast<std::size_t>(count));
    } else {
        constexpr int kPiece = 256;
        T wide[kSources + 1][kPiece * 4];
        std::array<const T*, kSources> pixels;
        for (int done = 0, n = 0; done < count; done += n) {
            n = std::min(kPiece, count - done);
            for (std::size_t s = 0; s < kSources; ++s) {
                for (int i = 0; i < n; ++i) std::fill_n(wide[s] + 4 * i, 4, from[s][done + i]);
                pixels[s] = wide[s];
            }
            row(done, pixels, wide[kSources], static_cast<std::size_t>(n));
            for (int i = 0; i < n && to != nullptr; ++i) to[done + i] = wide[kSources][4 * i + 3];
        }
    }
}

// Calls row(source, destination, count) for all pixels of the window.
template <class T, int N, class Abort, class Row>
void mapRows(const RectI& window, const Image& source, const Image& destination, Abort aborted, Row row) {
    generateRows<T>(window, destination, aborted, [&](int y, int x1, T* to, int count) {
        splitRow<T, N>(x1, x1 + count, y, std::array{&source},
                       [&](int x, const auto& from, int n) { row(from[0], to + std::ptrdiff_t{N} * (x - x1), n); });
    });
}

template <class T, int N, class Abort>
void copyRows(const RectI& window, const Image& source, const Image& destination, Abort aborted) {
    mapRows<T, N>(window, source, destination, aborted, [](const T* from, T* to, int count) {
        pixelops::copyRow(from, to, static_cast<std::size_t>(count) * N * sizeof(T));
    });
}

// Calls row(x, y, pixels of each source, destination, count), with four components per pixel as in widenRow.
template <class T, int N, std::size_t kSources, class Abort, class Row>
void joinRows(const RectI& window, const std::array<const Image*, kSources>& sources, const Image& destination,
              Abort aborted, Row row) {
    generateRows<T>(window, destination, aborted, [&](int y, int x1, T* to, int count) {
        splitRow<T, N>(x1, x1 + count, y, sources, [&](int x, const auto& from, int n) {
            widenRow<T, N>(from, to + std::ptrdiff_t{N} * (x - x1), n,
                           [&](int offset, const auto& wide, T* wideTo, std::size_t pixels) {
                               row(x + offset, y, wide, wideTo, pixels);
                           });
        });
    });
}

// Calls row(x, y, pixels, count) for all pixels of the window, with four components per pixel as in widenRow.
template <class T, int N, class Abort, class Row>
void readRows(const RectI& window, const Image& source, Abort aborted, Row row) {
    for (int y = window.y1; y < window.y2 && !aborted(); ++y) {
        splitRow<T, N>(window.x1, window.x2, y, std::array{&source}, [&](int x, const auto& from, int n) {
            widenRow<T, N>(
                from, static_cast<T*>(nullptr), n,
                [&](int offset, const auto& wide, T*, std::size_t pixels) { row(x + offset, y, wide[0], pixels); });
        });
    }
}

} // namespace OFX
