// Which extensions are videos, and how each of them is encoded.
#include "host/cli/video.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "host/cli/error.h"
#include "host/cli/pending_file.h"
#include "host/cli/pixels.h"
#include "host/cli/process.h"
#include "host/text.h"

namespace cli {
namespace {

using Words = std::vector<std::string>;

// What ffmpeg decodes; only some of it can be written.
const char* const kReadable[] = {".avi", ".flv", ".m2ts", ".mpeg", ".mpg", ".mts", ".mxf",
                                 ".ogv", ".ts",  ".vob",  ".wmv",  ".y4m", ".3gp"};

struct Encoding {
    const char* extension;
    const char* codec;       // ffmpeg's options, a space between them
    const char* bytePixels;  // ffmpeg's pixel format for byte images
    const char* floatPixels; // and for float images
    const char* oddPixels;   // for an odd width or height, where the usual format does not allow it
    bool yuv;                // the colours become luma and chroma, by the HD matrix, and the file says so
    bool alpha;              // straight; without it the result is shown over black
};

constexpr const char* kH264 = "-c:v libx264 -crf 16 -movflags +faststart";

// To watch (H.264), to edit on (ProRes 4444 with alpha), to keep (FFV1: lossless, with alpha), for the web (VP9).
constexpr Encoding kEncodings[] = {
    {".mp4", kH264, "yuv420p", "yuv420p", "yuv444p", true, false},
    {".m4v", kH264, "yuv420p", "yuv420p", "yuv444p", true, false},
    {".mov", "-c:v prores_ks -profile:v 4444", "yuva444p10le", "yuva444p10le", nullptr, true, true},
    {".mkv", "-c:v ffv1 -level 3 -slicecrc 1", "bgra", "rgba64le", nullptr, false, true},
    {".webm", "-c:v libvpx-vp9 -crf 18 -b:v 0 -row-mt 1", "yuva420p", "yuva420p", nullptr, true, true},
};

const Encoding* findEncoding(const std::string& file) {
    for (const Encoding& encoding : kEncodings)
        if (extension(file) == encoding.extension) return &encoding;
    return nullptr;
}

class VideoSink final : public Sink {
public:
    VideoSink(const std::string& file, const Encoding& encoding, const SinkSettings& settings)
        : name_(file),
          alpha_(encoding.alpha),
          settings_(settings),
          pending_(file),
          process_("ffmpeg", arguments(encoding, settings, pending_.path().string()), Process::Pipe::Input) {}

    void write(int, std::shared_ptr<const host::Image> image) override {
        if (settings_.depth == host::Depth::Byte)
            send<std::uint8_t>(*image);
        else
            send<std::uint16_t>(*image);
    }

    void finish() override {
        if (process_.wait() != 0) fail();
        pending_.commit();
    }

private:
    static Words arguments(const Encoding& encoding, const SinkSettings& settings, const std::string& path) {
        const bool odd = settings.width % 2 != 0 || settings.height % 2 != 0;
        const bool byte = settings.depth == host::Depth::Byte;
        const std::string pixels = encoding.oddPixels && odd ? encoding.oddPixels
                                   : byte                    ? encoding.bytePixels
                                                             : encoding.floatPixels;
        std::string filter = join("setsar=", settings.pixelAspect);
        if (encoding.yuv)
            filter +=
                ",scale=out_color_matrix=bt709:out_range=tv:flags=accurate_rnd+full_chroma_int,setparams="
                "range=tv:colorspace=bt709:color_primaries=bt709:color_trc=bt709";
        Words words = host::split(
            join("-v error -y -f rawvideo -pix_fmt ", byte ? "rgba" : "rgba64le", " -s ", settings.width, "x",
                 settings.height, " -framerate ", settings.rate.numerator, "/", settings.rate.denominator,
                 " -i pipe:0 -vf ", filter, " ", encoding.codec, " -pix_fmt ", pixels),
            ' ');
        words.push_back("file:" + path);
        return words;
    }

    // Top row first.
    template <class T>
    void send(const host::Image& image) {
        const std::size_t stride = 4 * static_cast<std::size_t>(settings_.width);
        std::vector<T> pixels(stride * static_cast<std::size_t>(settings_.height));
        T* to = pixels.data();
        for (int y = settings_.height - 1; y >= 0; --y, to += stride)
            packRow(image.row(y), image.format(), settings_.width, 4, alpha_, to);
        if (!process_.write(pixels.data(), pixels.size() * sizeof(T))) {
            process_.wait();
            fail();
        }
    }

    [[noreturn]] void fail() const { throw Failure("cannot write ", name_, ": ffmpeg: ", process_.errors()); }

    std::string name_;
    bool alpha_;
    SinkSettings settings_;
    PendingFile pending_; // before the process, which has ended when the file is removed
    Process process_;
};

} // namespace

bool isVideo(const std::string& name) {
    return findEncoding(name) != nullptr ||
           std::find(std::begin(kReadable), std::end(kReadable), extension(name)) != std::end(kReadable);
}

std::vector<std::string> videoOutputExtensions() {
    std::vector<std::string> extensions;
    for (const Encoding& encoding : kEncodings) extensions.emplace_back(encoding.extension);
    return extensions;
}

std::unique_ptr<Sink> openVideoSink(const std::string& file, const SinkSettings& settings) {
    const Encoding* encoding = findEncoding(file);
    if (!encoding)
        throw UsageError("cannot write ", file, ": videos can be written as ", host::join(videoOutputExtensions()));
    if (settings.bits != 0) throw UsageError("--bits is for pictures; the video formats have their own");
    if (FramePattern::parse(file)) throw UsageError(file, ": a video holds all frames and needs no frame number");
    return std::make_unique<VideoSink>(file, *encoding, settings);
}

} // namespace cli
