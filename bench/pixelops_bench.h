// Times the YUV converters of the pixel library against a copy of as many bytes.
#pragma once

#include <string>
#include <vector>

namespace bench {

// Medians, in milliseconds per frame of 1920 x 1080 on one thread.
struct YuvRow {
    std::string format, direction;
    double milliseconds, copy; // the copy reads and writes as many bytes in all as the converter
};

// One benchmark for each format and direction, in the library's own list; fills rows when they run.
void addYuvRows(std::vector<YuvRow>& rows);

// Adds a section to the page. Throws when the file cannot be written.
void appendYuv(const std::string& file, const std::vector<YuvRow>& rows);

} // namespace bench
