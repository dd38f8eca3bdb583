// A straight edge sweeps across the picture at any angle, soft or hard.
#pragma once

#include "effects/linearwipe/sweep.h"
#include "ofx/transition.h"

struct linearwipeValues {
    float progress;
    double angle;   // degrees: 0 from the left, 90 from the top
    double feather; // 0..1, twice the width of the soft edge as a fraction of the sweep
};

class linearwipeProcessorBase : public OFX::TransitionProcessor<linearwipeValues> {
public:
    using TransitionProcessor::TransitionProcessor;

    // Of the whole window.
    linearwipe::Sweep sweep() const;
    linearwipe::Edge edge() const;
};

OFX_EFFECT_CLASSES(linearwipe);

class linearwipePlugin final : public linearwipeEffect {
public:
    OFX_EFFECT_PLUGIN(linearwipe);
};
