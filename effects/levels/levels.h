// Maps an input range of levels to an output range through a gamma curve, on all colours or on one channel.
#pragma once

#include "effects/levels/mapping.h"
#include "ofx/effect.h"

class levelsProcessorBase : public OFX::EffectProcessor<levelsValues> {
public:
    using EffectProcessor::EffectProcessor;
    void preProcess() override;

protected:
    levels::Channel channel() const { return static_cast<levels::Channel>(values.channel); }

    levels::Mapping mapping_;
    pixelops::ByteTable table_{};
    levels::FloatMapping floats_{};
};

OFX_EFFECT_CLASSES(levels);

class levelsPlugin final : public levelsEffect {
public:
    OFX_EFFECT_PLUGIN(levels);
};
