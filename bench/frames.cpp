// Frames, and the loops to compare with.
#include "bench/frames.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace bench {
namespace {

// A slow gradient under noise, mostly opaque: every sixteenth block of 256 pixels is half transparent.
template <class T>
void fill(host::Image& image, unsigned seed, double full) {
    unsigned noise = seed * 2654435761u + 1;
    for (int y = 0; y < image.height(); ++y) {
        T* to = image.row<T>(y);
        for (int x = 0; x < image.width(); ++x, to += 4) {
            const double alpha = (x / 256 + y / 256) % 16 == 15 ? 0.5 : 1;
            for (int c = 0; c < 3; ++c) {
                noise = noise * 1664525u + 1013904223u;
                const double level = 0.2 + 0.5 * x / image.width() + 0.2 * (noise >> 8) / 16777216.0;
                to[c] = static_cast<T>(level * alpha * full);
            }
            to[3] = static_cast<T>(alpha * full);
        }
    }
}

// Reads one frame, or two where b is given, and writes one, past the caches where the processor can.
using Stream = void(const std::byte* a, const std::byte* b, std::byte* to, std::size_t bytes);

#ifdef __x86_64__
void stream16(const std::byte* a, const std::byte* b, std::byte* to, std::size_t bytes) {
    const auto at = [](const std::byte* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); };
    for (std::size_t i = 0; i < bytes; i += 16) {
        const __m128i v = b != nullptr ? _mm_xor_si128(at(a + i), at(b + i)) : at(a + i);
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + i), v);
    }
    _mm_sfence();
}

[[gnu::target("avx512f")]] void stream64(const std::byte* a, const std::byte* b, std::byte* to, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; i += 64) {
        __m512i v = _mm512_loadu_si512(a + i);
        if (b != nullptr) v = _mm512_xor_si512(v, _mm512_loadu_si512(b + i));
        _mm512_stream_si512(reinterpret_cast<__m512i*>(to + i), v);
    }
    _mm_sfence();
}

// Whole cache lines at once are up to a tenth faster.
Stream* const stream = __builtin_cpu_supports("avx512f") ? stream64 : stream16;
#else
void plain(const std::byte* a, const std::byte* b, std::byte* to, std::size_t bytes) {
    std::memcpy(to, a, bytes);
    for (std::size_t i = 0; b != nullptr && i < bytes; ++i) to[i] ^= b[i];
}

Stream* const stream = plain;
#endif

std::size_t bytesOf(const host::Image& image) {
    return static_cast<std::size_t>(image.rowBytes()) * static_cast<std::size_t>(image.height());
}

std::size_t statusBytes(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(field)) return std::stoull(line.substr(std::strlen(field))) * 1024;
    }
    return 0;
}

} // namespace

std::size_t lastLevelCache() {
    const auto& caches = benchmark::CPUInfo::Get().caches;
    return caches.empty() ? std::size_t{32} << 20 : static_cast<std::size_t>(caches.back().size);
}

Frames::Frames(Size size, host::Depth depth, std::size_t bytes) : depth_(depth) {
    const OfxRectI bounds{0, 0, size.width, size.height};
    const std::size_t frame = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                              static_cast<std::size_t>(format().pixelBytes());
    const std::size_t count = std::max<std::size_t>(bytes / frame + 1, 3);
    for (std::size_t i = 0; i < count; ++i) {
        for (auto* ring : {&sources_, &destinations_}) {
            auto image = std::make_shared<host::Image>(format(), bounds);
            if (depth == host::Depth::Byte) {
                fill<unsigned char>(*image, static_cast<unsigned>(i), 255);
            } else {
                fill<float>(*image, static_cast<unsigned>(i), 1);
            }
            ring->push_back(std::move(image));
        }
    }
}

void Frames::copy() { stream(source()->data(), nullptr, destination()->data(), bytesOf(*destination())); }

void Frames::triad() { stream(source(0)->data(), source(1)->data(), destination()->data(), bytesOf(*destination())); }

PeakMemory::PeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak counts from here
    before_ = statusBytes("VmRSS:");
}

std::size_t PeakMemory::bytes() const {
    const std::size_t peak = statusBytes("VmHWM:");
    return peak > before_ ? peak - before_ : 0;
}

} // namespace bench
