// The outgoing picture flashes up to white, and the incoming one comes down from the same flash.
#pragma once

#include <optional>

#include "effects/flash/light.h"
#include "ofx/temporary_plane.h"
#include "ofx/transition.h"

struct flashValues {
    float progress;
    double horizontal, vertical; // diffusion, 0..1
    OFX::RGB tint;
};

class flashProcessorBase : public OFX::TransitionProcessor<flashValues> {
public:
    using TransitionProcessor::TransitionProcessor;

protected:
    // How far the flash has come: 0 at the ends, 1 in the middle, where the pictures change.
    struct Strength {
        float white, gain;
    };
    Strength strength() const;
    bool second() const { return values.progress >= 0.5f; }
    const OFX::Image& source() const { return *sources[second() ? 1 : 0]; }
    // Standard deviations of the blur, in pixels; 0 for none.
    struct Sigmas {
        double x, y;
    };
    Sigmas sigmas() const;

    float* lumaAt(int x, int y) const {
        return luma_->plane().row(static_cast<std::size_t>(y - area().y1)) + (x - area().x1);
    }

    std::optional<OFX::TemporaryPlane> luma_; // of the area, blurred; only with diffusion
};

OFX_STAGED_EFFECT_CLASSES(flash);

class flashPlugin final : public flashEffect {
public:
    OFX_EFFECT_PLUGIN(flash);
};
