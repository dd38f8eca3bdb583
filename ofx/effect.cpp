// The images of a render, and the copy that neutral filters are.
#include "ofx/effect.h"

namespace OFX {
namespace {

class CopyProcessor final : public ImageProcessor {
public:
    CopyProcessor(ImageEffect& effect, const Image& from) : ImageProcessor(effect), source_(from) {}

    void processWindow(const RectI& rows) override {
        const int bytes = source_.format().pixelBytes();
        const auto abort = [this] { return aborted(); };
        bytes == 1    ? copyRows<unsigned char, 1>(rows, source_, *destination, abort)
        : bytes == 16 ? copyRows<float, 4>(rows, source_, *destination, abort)
                      : copyRows<unsigned char, 4>(rows, source_, *destination, abort); // or one float: the same bits
    }

private:
    const Image& source_;
};

} // namespace

Frame::Frame(const ImageEffect& effect, double time) : output_(effect.output()), destination_(output_, time) {
    std::size_t index = 0;
    for (const Clip& clip : effect.sources()) sources_[index++].emplace(clip, time);
}

PixelFormat Frame::format() const {
    // The clip says what is rendered; a host that tells only of the image is served as well.
    const PixelFormat asked = formatOf(output_.properties(), destination_.format());
    if (!asked.rendered() || !destination_.format().rendered()) return {};
    const auto check = [&](const Image& image) {
        if (!image.inMemory()) throw Exception::Suite(kOfxStatFailed, "an image has no pixels in memory");
        if (image.format() != destination_.format()) {
            throw Exception::Suite(kOfxStatFailed, "the images of one render differ in format");
        }
    };
    check(destination_);
    for (const auto& source : sources_) {
        if (source) check(*source);
    }
    return destination_.format();
}

void copyWindow(ImageEffect& effect, const RectI& window, const Image& source, const Image& destination) {
    CopyProcessor processor(effect, source);
    processor.setDestination(&destination);
    processor.setRenderWindow(window);
    processor.process();
}

} // namespace OFX
