// A dissolve from one picture to the other, in ten ways.
#pragma once

#include "effects/dissolve/mix.h"
#include "ofx/transition.h"

struct dissolveValues {
    float progress;
    OFX::Choice mode;
    double bleedRed, bleedGreen, bleedBlue, bleedAlpha; // 0..1, how far a channel runs ahead
    double morphRed, morphGreen, morphBlue, morphAlpha;
    OFX::RGBA color; // straight, 0..1
};

class dissolveProcessorBase : public OFX::TransitionProcessor<dissolveValues> {
public:
    using TransitionProcessor::TransitionProcessor;
};

OFX_EFFECT_CLASSES(dissolve);

class dissolvePlugin final : public dissolveEffect {
public:
    OFX_EFFECT_PLUGIN(dissolve);
    void changedParam(const OFX::ChangeArguments&, const char* name) override;

protected:
    void created() override { enableParams(); }

private:
    void enableParams();
};
