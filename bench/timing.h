// Times of single calls, and what to make of many.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

// Frames that are timed; the median counts.
inline constexpr int kRepeats = 31;

inline double median(std::vector<double> times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

template <class Work>
double milliseconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

} // namespace bench
