// What was measured, and the page that shows it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bench/frames.h"

namespace bench {

// Medians, in milliseconds per frame.
struct Row {
    std::string effect, setting;
    Size size;
    host::Depth depth;
    unsigned threads;
    std::size_t inputs = 0;
    double milliseconds = 0;
    double copy = 0;  // of one frame of the same size and depth, on one thread, in the same moments
    double triad = 0; // two frames read and one written; for effects with two inputs
    std::size_t peakBytes = 0;

    std::string name(const char* separator) const; // effect, setting, size, depth, threads
};

// The instruction-set level that the bundle takes on this machine; empty where it has one only.
std::string bestLevel();

// The page, or one more section of it with the rows of a level. Throw when the file cannot be written.
void writePage(const std::string& file, const std::vector<Row>& rows,
               const std::vector<std::pair<std::string, double>>& firstFrames);
void appendLevel(const std::string& file, const std::string& level, const std::vector<Row>& rows);

} // namespace bench
