// Reads videos: ffprobe tells about the file, ffmpeg decodes it into a pipe, from the frame that is wanted on.
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "host/cli/error.h"
#include "host/cli/pixels.h"
#include "host/cli/process.h"
#include "host/cli/video.h"
#include "host/text.h"

namespace cli {
namespace {

using Json = nlohmann::json;

// "30000/1001" or "16:15"; empty for "0/0" and nonsense.
std::optional<Rate> fraction(const std::string& text) {
    char* end = nullptr;
    const long numerator = std::strtol(text.c_str(), &end, 10);
    const long denominator = *end ? std::strtol(end + 1, nullptr, 10) : 1;
    if (numerator <= 0 || denominator <= 0) return std::nullopt;
    return Rate{static_cast<int>(numerator), static_cast<int>(denominator)};
}

bool liesOnItsSide(const Json& stream) {
    for (const Json& data : stream.value("side_data_list", Json::array()))
        if (data.contains("rotation")) return std::abs(data["rotation"].get<int>()) % 180 == 90;
    return false;
}

Json probe(const std::string& file, const std::vector<std::string>& more) {
    std::vector<std::string> words = {"-v", "error", "-select_streams", "v:0", "-show_streams", "-of", "json"};
    words.insert(words.end(), more.begin(), more.end());
    words.push_back("file:" + file);
    try {
        const ProgramOutput output = outputOf("ffprobe", words);
        if (!output.messages.empty()) std::cerr << "orvix: warning: " << file << ": " << output.messages << '\n';
        const Json streams = Json::parse(output.text).value("streams", Json::array());
        if (!streams.empty()) return streams[0];
    } catch (const Json::exception&) {
    } catch (const Failure& failure) {
        throw Failure("cannot read ", file, ": ", failure.what());
    }
    throw Failure("cannot read ", file, ": it holds no video");
}

class VideoSource final : public Source {
public:
    explicit VideoSource(const std::string& file) : Source(file) {
        const Json stream = probe(file, {});
        info_.width = stream.value("width", 0);
        info_.height = stream.value("height", 0);
        if (const auto aspect = fraction(stream.value("sample_aspect_ratio", "1:1")))
            info_.pixelAspect = aspect->perSecond();
        if (liesOnItsSide(stream)) {
            std::swap(info_.width, info_.height);
            info_.pixelAspect = 1 / info_.pixelAspect;
        }
        const std::string pixels = stream.value("pix_fmt", "");
        info_.deep = pixels.ends_with("le") || pixels.ends_with("be"); // several bytes per component
        readRate(stream);
        readFrameCount(stream);
        // Files of HD size that do not name their matrix mean the HD one; ffmpeg alone would take the other.
        if (stream.value("color_space", "unknown") == "unknown" && info_.height >= 720) matrix_ = "bt709";
        // ffmpeg's own VP9 and VP8 decoders leave out the alpha plane.
        const std::string codec = stream.value("codec_name", "");
        const Json tags = stream.value("tags", Json::object());
        const bool alpha = tags.value("alpha_mode", tags.value("ALPHA_MODE", "0")) == "1";
        if (alpha && (codec == "vp9" || codec == "vp8")) decoder_ = codec == "vp9" ? "libvpx-vp9" : "libvpx";
    }

private:
    void readRate(const Json& stream) {
        const auto base = fraction(stream.value("r_frame_rate", "")),
                   average = fraction(stream.value("avg_frame_rate", ""));
        constant_ = base && average && std::abs(base->perSecond() / average->perSecond() - 1) < 1e-3;
        info_.rate = constant_ || !average ? base : average;
        if (!info_.rate) info_.rate = Rate{};
    }

    // Not every container stores the count; then the packets are counted.
    void readFrameCount(const Json& stream) {
        int count = std::atoi(stream.value("nb_frames", "0").c_str());
        if (count <= 0) count = std::atoi(probe(name(), {"-count_packets"}).value("nb_read_packets", "0").c_str());
        if (count <= 0 || info_.width <= 0 || info_.height <= 0)
            throw Failure("cannot read ", name(), ": it has no frames");
        info_.frames = FrameRange{0, count - 1};
    }

    // Starts decoding so that the next frame in the pipe is `number`, or one before it where a jump is not exact.
    void start(int number, bool bytes) {
        process_.reset();
        next_ = constant_ ? number : 0;
        std::vector<std::string> words = host::split("-nostdin -v error", ' ');
        // Half a frame early, since containers round their times.
        if (next_ > 0) words.insert(words.end(), {"-ss", host::formatNumber((next_ - 0.5) / info_.rate->perSecond())});
        if (!decoder_.empty()) words.insert(words.end(), {"-c:v", decoder_});
        words.insert(words.end(), {"-i", "file:" + name()});
        const std::string output =
            join("-map 0:v:0 -vsync passthrough -vf scale=in_color_matrix=", matrix_,
                 ":flags=accurate_rnd+full_chroma_int+full_chroma_inp:sws_dither=none -f rawvideo -pix_fmt ",
                 bytes ? "rgba" : "rgba64le", " pipe:1");
        for (const std::string& word : host::split(output, ' ')) words.push_back(word);
        process_ = std::make_unique<Process>("ffmpeg", words, Process::Pipe::Output);
    }

    std::shared_ptr<host::Image> read(int number, const host::Format& format) override {
        const bool bytes = format.depth == host::Depth::Byte;
        // Decoding on is cheaper than a new start for a few frames.
        constexpr int kNear = 50;
        if (!process_ || number < next_ || (constant_ && number > next_ + kNear)) start(number, bytes);
        return bytes ? readTo<std::uint8_t>(number, format) : readTo<std::uint16_t>(number, format);
    }

    template <class T>
    std::shared_ptr<host::Image> readTo(int number, const host::Format& format) {
        const std::size_t stride = 4 * static_cast<std::size_t>(info_.width);
        std::vector<T> pixels(stride * static_cast<std::size_t>(info_.height));
        for (; next_ <= number; ++next_)
            if (process_->read(pixels.data(), pixels.size() * sizeof(T)) < pixels.size() * sizeof(T))
                return ended(number, format);
        auto image = std::make_shared<host::Image>(format, OfxRectI{0, 0, info_.width, info_.height});
        const T* from = pixels.data();
        for (int y = info_.height - 1; y >= 0; --y, from += stride)
            unpackRow(from, Channels{}, info_.width, format, image->row(y));
        return image;
    }

    // The file has fewer frames than it says. Harmless when the decoder has nothing to complain about: some files count
    // frames that their edit list hides. The last frame stays then.
    std::shared_ptr<host::Image> ended(int number, const host::Format& format) {
        const int status = process_->wait();
        const std::string errors = process_->errors();
        process_.reset();
        if (status != 0 || !errors.empty() || next_ == 0)
            throw Failure("cannot read frame ", number, " of ", name(),
                          ": ffmpeg: ", errors.empty() ? "the file ends before it" : errors);
        std::cerr << "orvix: " << name() << " ends before frame " << next_ << "; its last frame is held\n";
        info_.frames->last = next_ - 1;
        return read(next_ - 1, format);
    }

    std::unique_ptr<Process> process_;
    int next_ = 0;         // the frame that comes next out of the pipe
    bool constant_ = true; // frames have equal distances, so that a frame's time is known
    std::string matrix_ = "auto", decoder_;
};

} // namespace

std::unique_ptr<Source> openVideoSource(const std::string& file) { return std::make_unique<VideoSource>(file); }

} // namespace cli
