// Three-way colour correction: pushes the colours of shadows, mid-tones and highlights, and moves luma and saturation.
#pragma once

#include "effects/colorcorrector/correction.h"
#include "ofx/effect.h"

class colorcorrectorProcessorBase : public OFX::EffectProcessor<colorcorrectorValues> {
public:
    using EffectProcessor::EffectProcessor;
    void preProcess() override;

protected:
    unsigned stages_ = 0;
    colorcorrector::Correction correction_; // for the pixels of the destination
};

OFX_EFFECT_CLASSES(colorcorrector);

class colorcorrectorPlugin final : public colorcorrectorEffect {
public:
    OFX_EFFECT_PLUGIN(colorcorrector);

protected:
    bool neutral(const colorcorrectorValues&) const override;
};
