// A hand turns about the centre and leaves the incoming picture behind it.
#pragma once

#include "effects/clockwipe/hand.h"
#include "ofx/transition.h"

struct clockwipeValues {
    float progress;
    OFX::Choice direction; // 0 clockwise, 1 counterclockwise
    double featherAngle;   // degrees
};

class clockwipeProcessorBase : public OFX::TransitionProcessor<clockwipeValues> {
public:
    using TransitionProcessor::TransitionProcessor;

    clockwipe::Hand hand() const;
};

OFX_EFFECT_CLASSES(clockwipe);

class clockwipePlugin final : public clockwipeEffect {
public:
    OFX_EFFECT_PLUGIN(clockwipe);
};
