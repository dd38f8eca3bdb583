// One picture file, read and written through OpenImageIO.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "host/cli/media.h"

namespace cli {

// Throws a Failure when the file is missing or is no picture.
MediaInfo pictureInfo(const std::string& file);
std::shared_ptr<host::Image> readPicture(const std::string& file, const host::Format&);

// The formats that can be written. Straight alpha in PNG and TIFF, premultiplied in EXR, none in JPEG and DPX.
struct PictureFormat {
    enum class Alpha { None, Straight, Premultiplied };
    const char* name;
    std::vector<std::string> extensions;
    std::vector<int> bits;   // per channel that the file may have
    int byteBits, floatBits; // what byte and float images become unless the user says otherwise
    Alpha alpha;
    int floatFrom; // files of at least so many bits hold floating-point numbers
};

// Throws a UsageError that lists the formats when the extension names none of them.
const PictureFormat& pictureFormat(const std::string& file);
// The bits for this file; throws a UsageError when the format does not have them.
int pictureBits(const std::string& file, int wanted, host::Depth);
std::vector<std::string> pictureExtensions();

void writePicture(const std::string& file, const host::Image& frame, double pixelAspect, int bits);

} // namespace cli
