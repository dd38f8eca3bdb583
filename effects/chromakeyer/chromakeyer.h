// Makes the pixels that are close to a key colour transparent.
#pragma once

#include <optional>

#include "effects/chromakeyer/key.h"
#include "ofx/effect.h"
#include "ofx/temporary_plane.h"

struct chromakeyerValues {
    OFX::RGB color;   // 0..1
    double low, high; // thresholds of the distance
    double blur;      // 0..1
    OFX::Boolean showMatte;
};

class chromakeyerProcessorBase : public OFX::EffectProcessor<chromakeyerValues> {
public:
    using EffectProcessor::EffectProcessor;
    void process() override;

protected:
    chromakeyer::Key key(bool bgra) const;
    // The largest component of the key colour, as the place of red, green or blue.
    int dominant() const;

    bool blurs() const { return values.blur > 0; }
    // Standard deviations of the matte's blur, in pixels.
    struct Sigmas {
        double x, y;
    };
    Sigmas sigmas() const;

    // Of the area; only with a blur. The hard matte has a margin of a pixel all around, in which its edge is repeated.
    // Of the soft matte's edges there is a byte for each pixel.
    std::optional<OFX::TemporaryPlane> hard_, soft_, edges_;
    float* hardRow(int y) const { return hard_->plane().row(static_cast<std::size_t>(y - area().y1 + 1)) + 1; }
    float* softRow(int y) const { return soft_->plane().row(static_cast<std::size_t>(y - area().y1)); }
    std::uint8_t* edgesRow(int y) const {
        return reinterpret_cast<std::uint8_t*>(edges_->plane().row(static_cast<std::size_t>(y - area().y1)));
    }
    void repeatEdges() const;
};

OFX_STAGED_EFFECT_CLASSES(chromakeyer);

class chromakeyerPlugin final : public chromakeyerEffect {
public:
    OFX_EFFECT_PLUGIN(chromakeyer);
    bool getClipPreferences(const OFX::PropertySet& outArgs) override;
};
