// The road of a render, written once: fetch the images, choose the processor by pixel format, read the parameters into
// it, run it. An effect supplies its values, its processors and what is special about it.
#pragma once

#include <optional>

#include "ofx/device_blur.h"
#include "ofx/exception.h"
#include "ofx/factory.h"
#include "ofx/image_effect.h"
#include "ofx/processor.h"
#include "ofx/shapes.h"
#include "ofx/traits.h"
#include "opencl/temporary_image.h"

namespace OFX {

// Base of every effect's processors: the parameter values at the render's time, and the source images.
template <class V>
class EffectProcessor : public ImageProcessor {
public:
    using Values = V;
    using ImageProcessor::ImageProcessor;

    V values{};
    const Image* sources[2] = {}; // filters: Source; transitions: SourceFrom, SourceTo

protected:
    auto abort() const {
        return [this] { return aborted(); };
    }
};

// Base of every effect's OpenCL processor, on top of <fx>ProcessorBase: process() enqueues the kernels on the host's
// queue and does not wait.
template <class Base>
class OpenCLProcessor : public Base {
public:
    OpenCLProcessor(ImageEffect& effect, OpenCL::Program& program, const RenderArguments& arguments)
        : Base(effect),
          program_(program),
          context_(static_cast<cl_context>(arguments.openCLContext)),
          queue_(static_cast<cl_command_queue>(arguments.openCLQueue)) {}

    void processWindow(const RectI&) override {}

protected:
    OpenCL::KernelCall kernel(std::size_t index = 0) const { return {program_, index, queue_}; }
    // A kernel whose first arguments are those of most: the source images, the output, width and height.
    OpenCL::KernelCall pictureKernel(std::size_t index = 0) const {
        OpenCL::KernelCall call = kernel(index);
        for (const Image* source : this->sources) {
            if (source != nullptr) call.arg(device(source));
        }
        call.arg(device(this->destination)).arg(width()).arg(height());
        return call;
    }
    // The device image of a fetched image. Throws the failed render without one.
    static cl_mem device(const Image* image) {
        if (void* memory = image->openCL()) return static_cast<cl_mem>(memory);
        throw Exception::Suite(kOfxStatFailed, "an image is not on the device");
    }
    int width() const { return OFX::width(this->window); }
    int height() const { return OFX::height(this->window); }
    // For passes between images: in the format of another, released when it goes. Throws the failed render.
    OpenCL::TemporaryImage temporary(const Image* like) const {
        return {program_.api(), context_, device(like), width(), height()};
    }
    // For a DeviceBlur with the program's kernels from that index on.
    DeviceBlurTarget blurTarget(std::size_t firstKernel) const {
        return {program_, firstKernel, context_, queue_, width(), height()};
    }

private:
    OpenCL::Program& program_;
    cl_context context_;
    cl_command_queue queue_;
};

// The images of one render, released when it ends.
class Frame {
public:
    // Fetches the output and every source. Throws when one cannot be had.
    Frame(const ImageEffect& effect, double time);

    const Image& destination() const { return destination_; }
    const Image* source(std::size_t index) const { return sources_[index] ? &*sources_[index] : nullptr; }
    // The format to render in; throws when the images are on a device only or differ in format among each other.
    PixelFormat format() const;

private:
    const Clip& output_;
    Image destination_;
    std::optional<Image> sources_[2];
};

// Copies the window of the source; pixels outside the source become transparent black.
void copyWindow(ImageEffect& effect, const RectI& window, const Image& source, const Image& destination);

template <class Base, template <class, int, int, int> class CPU, class DeviceProcessor>
class Effect : public ImageEffect {
public:
    using Values = typename Base::Values;

    Effect(OfxImageEffectHandle handle, const EffectTraits& traits, Context context)
        : ImageEffect(handle, sourceClips(context), traits.params), traits_(traits), context_(context) {
        if (traits.program != nullptr) traits.program->build(hostCompile(), 0);
    }

    void render(const RenderArguments& arguments) override {
        const Frame frame(*this, arguments.time);
        if (arguments.openCLEnabled) return runOnDevice(frame, arguments);
        const auto [depth, components, order] = frame.format();
        const bool alpha = components == Components::Alpha, bgra = order == PixelOrder::BGRA;
        if (depth == Depth::Byte) {
            if (alpha) return run<CPU<unsigned char, 1, 255, 0>>(frame, arguments);
            if (bgra) return run<CPU<unsigned char, 4, 255, 1>>(frame, arguments);
            return run<CPU<unsigned char, 4, 255, 0>>(frame, arguments);
        }
        if (depth == Depth::Float) {
            if (alpha) return run<CPU<float, 1, 1, 0>>(frame, arguments);
            if (bgra) return run<CPU<float, 4, 1, 1>>(frame, arguments);
            return run<CPU<float, 4, 1, 0>>(frame, arguments);
        }
    }

    bool isIdentity(const IdentityArguments& arguments, Identity& identity) override {
        if (sources().size() != 1) return false;
        if (!neutral(valuesAt(arguments.time))) return false;
        identity = {kOfxImageEffectSimpleSourceClipName, arguments.time};
        return true;
    }

    // Generators and transitions have no extent of their own; the host crops to its frame.
    bool getRegionOfDefinition(const RegionArguments&, OfxRectD& region) override {
        if (context_ == Context::Filter) return false;
        region = {kOfxFlagInfiniteMin, kOfxFlagInfiniteMin, kOfxFlagInfiniteMax, kOfxFlagInfiniteMax};
        return true;
    }

protected:
    // True where the values leave the picture as it is; a filter is then a copy, and the host is told so.
    virtual bool neutral(const Values&) const { return false; }
    // The last step of a creation: linking rules, for instance.
    virtual void created() {}
    // What a processor needs beyond images, window and values.
    virtual void setUp(Base&, const RenderArguments&) {}

    Values valuesAt(double time) const {
        Values values{};
        readAt(time, &values);
        return values;
    }
    const EffectTraits& traits() const { return traits_; }

private:
    void prepare(Base& processor, const Frame& frame, const RenderArguments& arguments) {
        processor.setDestination(&frame.destination());
        processor.setRenderWindow(arguments.renderWindow);
        processor.sources[0] = frame.source(0);
        processor.sources[1] = frame.source(1);
        processor.values = valuesAt(arguments.time);
        setUp(processor, arguments);
    }

    template <class Processor>
    void run(const Frame& frame, const RenderArguments& arguments) {
        Processor processor(*this);
        prepare(processor, frame, arguments);
        if (sources().size() == 1 && neutral(processor.values)) {
            return copyWindow(*this, arguments.renderWindow, *frame.source(0), frame.destination());
        }
        processor.process();
    }

    // The host asked for the device; nothing falls back to the CPU.
    void runOnDevice(const Frame& frame, const RenderArguments& arguments) {
        if (traits_.program == nullptr) throw Exception::Suite(kOfxStatFailed, "the effect has no kernels");
        DeviceProcessor processor(*this, *traits_.program, arguments);
        prepare(processor, frame, arguments);
        processor.process();
    }

    const EffectTraits& traits_;
    Context context_;
};

} // namespace OFX

// The classes of an effect whose shape never varies. Before it stand <fx>Values and <fx>ProcessorBase, after it
// <fx>Plugin. In a staged effect preProcess, too, knows the pixels.
#define OFX_EFFECT_CLASSES(fx) OFX_EFFECT_CLASSES_WITH(fx, )
#define OFX_STAGED_EFFECT_CLASSES(fx) OFX_EFFECT_CLASSES_WITH(fx, void preProcess() override;)
#define OFX_EFFECT_CLASSES_WITH(fx, stages)                                                    \
    template <class T, int N, int max, int bgra>                                               \
    class fx##Processor final : public fx##ProcessorBase {                                     \
    public:                                                                                    \
        using fx##ProcessorBase::fx##ProcessorBase;                                            \
        stages void processWindow(const OFX::RectI& band) override;                            \
    };                                                                                         \
    class fx##OpenCLProcessor final : public OFX::OpenCLProcessor<fx##ProcessorBase> {         \
    public:                                                                                    \
        using OpenCLProcessor::OpenCLProcessor;                                                \
        void process() override;                                                               \
    };                                                                                         \
    using fx##Effect = OFX::Effect<fx##ProcessorBase, fx##Processor, fx##OpenCLProcessor>;     \
    class fx##Plugin;                                                                          \
    class fx##PluginFactory final : public OFX::EffectFactory<fx##PluginFactory, fx##Plugin> { \
    public:                                                                                    \
        using EffectFactory::EffectFactory;                                                    \
    }

// The members of <fx>Plugin that never vary; public ones.
#define OFX_EFFECT_PLUGIN(fx)                                                                                         \
    fx##Plugin(OfxImageEffectHandle handle, OFX::Context context) : fx##Effect(handle, fx##Plugin::traits, context) { \
        created();                                                                                                    \
    }                                                                                                                 \
    static const OFX::EffectTraits traits

// The last line of an effect's source: what the registry calls.
#define OFX_EFFECT(fx) \
    OFX::PluginFactory* new_##fx(const char* identifier) { return new fx##PluginFactory(identifier); }
