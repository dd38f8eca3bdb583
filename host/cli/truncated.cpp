// Reads just enough of a file's structure to find its end.
#include "host/cli/truncated.h"

#include <cstdint>
#include <fstream>
#include <iterator>

namespace cli {
namespace {

using Bytes = std::string;

unsigned at(const Bytes& bytes, std::size_t i) { return static_cast<unsigned char>(bytes[i]); }

// Walks over the segments, and within compressed data to the next marker, until the end-of-image marker.
bool jpegEnds(const Bytes& bytes) {
    constexpr unsigned kEnd = 0xD9, kScan = 0xDA;
    std::size_t i = 2; // after the start marker
    while (i + 3 < bytes.size() || (i + 1 < bytes.size() && at(bytes, i + 1) == kEnd)) {
        if (at(bytes, i) != 0xFF) return false;
        const unsigned marker = at(bytes, i + 1);
        if (marker == kEnd) return true;
        if (marker == 0xFF) { // a fill byte
            ++i;
            continue;
        }
        i += 2 + 256 * at(bytes, i + 2) + at(bytes, i + 3);
        if (marker != kScan) continue;
        // A zero after 0xFF is data, and so are the restart markers.
        const auto inData = [&](unsigned next) { return next == 0 || (next >= 0xD0 && next <= 0xD7); };
        while (i + 1 < bytes.size() && !(at(bytes, i) == 0xFF && !inData(at(bytes, i + 1)))) ++i;
    }
    return false;
}

// The header tells the file's size; all bits set means that the writer did not know it.
bool dpxEnds(const Bytes& bytes) {
    constexpr std::size_t kSizeField = 16;
    if (bytes.size() < kSizeField + 4) return false;
    const bool bigEndian = bytes[0] == 'S';
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size = size << 8 | at(bytes, kSizeField + (bigEndian ? i : 3 - i));
    return size == UINT32_MAX || size <= bytes.size();
}

} // namespace

bool isTruncated(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    Bytes start(4, '\0');
    stream.read(start.data(), 4);
    const bool jpeg = start.starts_with("\xFF\xD8"), dpx = start == "SDPX" || start == "XPDS";
    if (!jpeg && !dpx) return false;
    stream.seekg(0);
    const Bytes bytes{std::istreambuf_iterator<char>(stream), {}};
    return jpeg ? !jpegEnds(bytes) : !dpxEnds(bytes);
}

} // namespace cli
