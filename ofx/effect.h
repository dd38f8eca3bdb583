// The road of a render, written once: fetch the images, choose the processor by pixel format, read the parameters into
// it, run it. An effect supplies its values, its processors and what is special about it.
#pragma once

#include <optional>

#include "ofx/exception.h"
#include "ofx/factory.h"
#include "ofx/image_effect.h"
#include "ofx/processor.h"
#include "ofx/shapes.h"
#include "ofx/traits.h"

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

template <class Base, template <class, int, int, int> class CPU>
class Effect : public ImageEffect {
public:
    using Values = typename Base::Values;

    Effect(OfxImageEffectHandle handle, const EffectTraits& traits, Context context)
        : ImageEffect(handle, sourceClips(context), traits.params), traits_(traits), context_(context) {}

    void render(const RenderArguments& arguments) override {
        const Frame frame(*this, arguments.time);
        if (arguments.openCLEnabled) throw Exception::Suite(kOfxStatFailed, "there is no OpenCL processor");
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
    // What a processor needs beyond images, window and values.
    virtual void setUp(Base&, const RenderArguments&) {}

    Values valuesAt(double time) const {
        Values values{};
        readAt(time, &values);
        return values;
    }
    const EffectTraits& traits() const { return traits_; }

private:
    template <class Processor>
    void run(const Frame& frame, const RenderArguments& arguments) {
        Processor processor(*this);
        processor.setDestination(&frame.destination());
        processor.setRenderWindow(arguments.renderWindow);
        processor.sources[0] = frame.source(0);
        processor.sources[1] = frame.source(1);
        processor.values = valuesAt(arguments.time);
        if (sources().size() == 1 && neutral(processor.values)) {
            return copyWindow(*this, arguments.renderWindow, *frame.source(0), frame.destination());
        }
        setUp(processor, arguments);
        processor.process();
    }

    const EffectTraits& traits_;
    Context context_;
};

} // namespace OFX

// The classes of an effect whose shape never varies. Before it stand <fx>Values and <fx>ProcessorBase, after it
// <fx>Plugin.
#define OFX_EFFECT_CLASSES(fx)                                                                 \
    template <class T, int N, int max, int bgra>                                               \
    class fx##Processor final : public fx##ProcessorBase {                                     \
    public:                                                                                    \
        using fx##ProcessorBase::fx##ProcessorBase;                                            \
        void processWindow(const OFX::RectI& band) override;                                   \
    };                                                                                         \
    using fx##Effect = OFX::Effect<fx##ProcessorBase, fx##Processor>;                          \
    class fx##Plugin;                                                                          \
    class fx##PluginFactory final : public OFX::EffectFactory<fx##PluginFactory, fx##Plugin> { \
    public:                                                                                    \
        using EffectFactory::EffectFactory;                                                    \
    }

// The members of <fx>Plugin that never vary; public ones.
#define OFX_EFFECT_PLUGIN(fx)                       \
    fx##Plugin(OfxImageEffectHandle, OFX::Context); \
    static const OFX::EffectTraits traits

// The last line of an effect's source: what the registry calls.
#define OFX_EFFECT(fx) \
    OFX::PluginFactory* new_##fx(const char* identifier) { return new fx##PluginFactory(identifier); }
