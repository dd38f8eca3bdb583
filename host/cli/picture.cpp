// Pictures through OpenImageIO. Its own premultiplication is switched off: it rounds 8-bit colours and follows the
// gamma that a file may name, where ours must be the same for every format.
#include "host/cli/picture.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "host/cli/error.h"
#include "host/cli/pending_file.h"
#include "host/cli/pixels.h"
#include "host/cli/truncated.h"
#include "host/cli/video.h"
#include "host/text.h"

namespace cli {
namespace {

using Alpha = PictureFormat::Alpha;

const std::vector<PictureFormat>& formats() {
    static const std::vector<PictureFormat> list = {
        {"PNG", {".png"}, {8, 16}, 8, 16, Alpha::Straight, INT_MAX},
        {"JPEG", {".jpg", ".jpeg"}, {8}, 8, 8, Alpha::None, INT_MAX},
        {"TIFF", {".tif", ".tiff"}, {8, 16, 32}, 8, 16, Alpha::Straight, 32},
        {"OpenEXR", {".exr"}, {16, 32}, 16, 16, Alpha::Premultiplied, 16},
        {"DPX", {".dpx"}, {8, 10, 16}, 10, 10, Alpha::None, INT_MAX},
    };
    return list;
}

// What a library complained of first; the rest repeats it in other words.
std::string complaint(const std::string& errors) { return errors.substr(0, errors.find('\n')); }

OIIO::ImageSpec openConfiguration() {
    OIIO::ImageSpec configuration;
    configuration["oiio:UnassociatedAlpha"] = 1;
    return configuration;
}

OIIO::ImageBuf open(const std::string& file) {
    if (!std::filesystem::exists(file)) throw Failure("no file ", file);
    if (std::filesystem::is_directory(file))
        throw Failure(file, " is a folder; for its pictures give a pattern such as ", file, "/frame.%04d.png");
    const OIIO::ImageSpec configuration = openConfiguration();
    OIIO::ImageBuf picture(file, 0, 0, nullptr, &configuration);
    if (!picture.init_spec(file, 0, 0)) throw Failure("cannot read ", file, ": ", complaint(picture.geterror()));
    return picture;
}

// The channels of a file by their names, since EXR files hold more of them in any order.
Channels channelsOf(const OIIO::ImageSpec& spec) {
    Channels channels{.count = spec.nchannels,
                      .red = spec.channelindex("R"),
                      .green = spec.channelindex("G"),
                      .blue = spec.channelindex("B"),
                      .alpha = spec.alpha_channel};
    if (channels.red < 0 || channels.green < 0 || channels.blue < 0) {
        const int grey = std::max(spec.channelindex("Y"), 0);
        channels.red = channels.green = channels.blue = grey;
        if (channels.alpha == grey) channels.alpha = -1;
    }
    channels.straight = spec.get_int_attribute("oiio:UnassociatedAlpha") != 0;
    return channels;
}

// Fills the image, whose frame is the file's display window; the file may hold more or less than that.
template <class T>
void unpack(const OIIO::ImageBuf& picture, OIIO::TypeDesc type, host::Image& image) {
    const OIIO::ImageSpec& spec = picture.spec();
    const Channels channels = channelsOf(spec);
    const OIIO::ROI full = picture.roi_full();
    const OIIO::ROI roi = OIIO::roi_intersection(full, picture.roi());
    if (roi.npixels() == 0) return;
    std::vector<T> row(static_cast<std::size_t>(roi.width()) * static_cast<std::size_t>(spec.nchannels));
    for (int y = roi.ybegin; y < roi.yend; ++y) {
        const OIIO::ROI line(roi.xbegin, roi.xend, y, y + 1, 0, 1, 0, spec.nchannels);
        if (!picture.get_pixels(line, type, row.data()))
            throw Failure(picture.name(), ": ", complaint(picture.geterror()));
        std::byte* to = image.row(full.yend - 1 - y);
        const std::ptrdiff_t left = std::ptrdiff_t{image.format().pixelBytes()} * (roi.xbegin - full.xbegin);
        unpackRow(row.data(), channels, roi.width(), image.format(), to + left);
    }
}

template <class T>
std::vector<T> packed(const host::Image& frame, int channels, bool straight) {
    const OfxRectI bounds = frame.bounds();
    const int width = bounds.x2 - bounds.x1;
    const std::size_t stride = static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
    std::vector<T> pixels(stride * static_cast<std::size_t>(bounds.y2 - bounds.y1));
    T* to = pixels.data();
    for (int y = bounds.y2 - 1; y >= bounds.y1; --y, to += stride)
        packRow(frame.row(y), frame.format(), width, channels, straight, to);
    return pixels;
}

OIIO::ImageSpec outputSpec(const host::Image& frame, const PictureFormat& format, double pixelAspect, int bits) {
    const OfxRectI bounds = frame.bounds();
    const OIIO::TypeDesc type = bits >= format.floatFrom ? (bits == 16 ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::FLOAT)
                                : bits == 8              ? OIIO::TypeDesc::UINT8
                                                         : OIIO::TypeDesc::UINT16;
    OIIO::ImageSpec spec(bounds.x2 - bounds.x1, bounds.y2 - bounds.y1, format.alpha == Alpha::None ? 3 : 4, type);
    if (bits == 10) spec["oiio:BitsPerSample"] = 10;
    if (format.alpha == Alpha::Straight) spec["oiio:UnassociatedAlpha"] = 1; // what we hand over, and what is written
    if (pixelAspect != 1) spec["PixelAspectRatio"] = static_cast<float>(pixelAspect);
    if (bits == 8 && format.alpha == Alpha::None) {
        spec["Compression"] = "jpeg:95";
        spec["jpeg:subsampling"] = "4:4:4";
    }
    return spec;
}

} // namespace

MediaInfo pictureInfo(const std::string& file) {
    const OIIO::ImageBuf picture = open(file);
    const OIIO::ImageSpec& spec = picture.spec();
    MediaInfo info;
    info.width = spec.full_width;
    info.height = spec.full_height;
    const float aspect = spec.get_float_attribute("PixelAspectRatio", 1);
    info.pixelAspect = aspect > 0 ? static_cast<double>(aspect) : 1;
    if (picture.orientation() >= 5) { // lies on its side
        std::swap(info.width, info.height);
        info.pixelAspect = 1 / info.pixelAspect;
    }
    info.deep = spec.format != OIIO::TypeDesc::UINT8;
    return info;
}

std::shared_ptr<host::Image> readPicture(const std::string& file, const host::Format& format) {
    OIIO::ImageBuf picture = open(file);
    const bool bytes = picture.spec().format == OIIO::TypeDesc::UINT8;
    const OIIO::TypeDesc type = bytes ? OIIO::TypeDesc::UINT8 : OIIO::TypeDesc::FLOAT;
    if (isTruncated(file)) throw Failure("cannot read ", file, ": the file is cut off");
    if (!picture.read(0, 0, true, type)) throw Failure("cannot read ", file, ": ", complaint(picture.geterror()));
    if (picture.orientation() > 1) picture = OIIO::ImageBufAlgo::reorient(picture);
    const OIIO::ROI full = picture.roi_full();
    auto image = std::make_shared<host::Image>(format, OfxRectI{0, 0, full.width(), full.height()});
    if (bytes)
        unpack<std::uint8_t>(picture, type, *image);
    else
        unpack<float>(picture, type, *image);
    return image;
}

std::vector<std::string> pictureExtensions() {
    std::vector<std::string> extensions;
    for (const PictureFormat& format : formats())
        extensions.insert(extensions.end(), format.extensions.begin(), format.extensions.end());
    return extensions;
}

const PictureFormat& pictureFormat(const std::string& file) {
    const std::string wanted = extension(file);
    for (const PictureFormat& format : formats())
        if (std::find(format.extensions.begin(), format.extensions.end(), wanted) != format.extensions.end())
            return format;
    throw UsageError("cannot write ", file, ": '", wanted,
                     "' is not a format that can be written; pictures: ", host::join(pictureExtensions()),
                     "; videos: ", host::join(videoOutputExtensions()));
}

int pictureBits(const std::string& file, int wanted, host::Depth depth) {
    const PictureFormat& format = pictureFormat(file);
    if (wanted == 0) return depth == host::Depth::Byte ? format.byteBits : format.floatBits;
    if (std::find(format.bits.begin(), format.bits.end(), wanted) != format.bits.end()) return wanted;
    std::vector<std::string> allowed;
    for (const int bits : format.bits) allowed.push_back(std::to_string(bits));
    throw UsageError(format.name, " files cannot have ", wanted, " bits per channel; allowed: ", host::join(allowed));
}

// The file is made in memory: not every format's library notices a full disk, and some end the program over it.
void writePicture(const std::string& file, const host::Image& frame, double pixelAspect, int bits) {
    const PictureFormat& format = pictureFormat(file);
    const OIIO::ImageSpec spec = outputSpec(frame, format, pixelAspect, bits);
    const bool straight = format.alpha == Alpha::Straight;
    OIIO::Filesystem::IOVecOutput memory;
    const auto output = OIIO::ImageOutput::create(file);
    if (!output || !output->set_ioproxy(&memory))
        throw Failure("cannot write ", file, ": ", complaint(OIIO::geterror()));
    const auto write = [&](OIIO::TypeDesc type, const auto& pixels) {
        if (!output->open(file, spec) || !output->write_image(type, pixels.data()) || !output->close())
            throw Failure("cannot write ", file, ": ", complaint(output->geterror()));
    };
    if (frame.format().depth == host::Depth::Byte)
        write(OIIO::TypeDesc::UINT8, packed<std::uint8_t>(frame, spec.nchannels, straight));
    else
        write(OIIO::TypeDesc::FLOAT, packed<float>(frame, spec.nchannels, straight));

    PendingFile pending(file);
    std::ofstream stream(pending.path(), std::ios::binary);
    const auto bytes = memory.buffer();
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) throw Failure("cannot write ", file, ": ", std::strerror(errno));
    pending.commit();
}

} // namespace cli
