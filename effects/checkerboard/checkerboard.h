// A grid of tiles in two alternating colours, with hard or linearly blended edges.
#pragma once

#include "ofx/effect.h"

struct checkerboardValues {
    double tileWidth, tileHeight; // fractions of the window's width and height
    OFX::Boolean square;
    double blendHorizontal, blendVertical; // fractions of a tile
    OFX::Boolean proportional;
    OFX::RGBA color1, color2; // straight, 0..1
    double offsetX, offsetY;  // fractions of the window
};

namespace checkerboard {

// The tiles along one axis, in pixels. A tile's own colour is pure from blend after its start to blend before its end;
// around each boundary the two colours mix linearly over 2 blend.
struct Axis {
    double tile;
    double blend;
    double origin; // position of the centre of the first pixel
};

struct Grid {
    Axis x, y; // y counts downwards from the top row of the window
};

// The grid of a window of width x height pixels. Tiles keep their ratio when they are widened to the least size: one
// pixel high and one square pixel wide.
Grid grid(const checkerboardValues&, int width, int height, double pixelAspect);

} // namespace checkerboard

class checkerboardProcessorBase : public OFX::EffectProcessor<checkerboardValues> {
public:
    using EffectProcessor::EffectProcessor;
};

OFX_EFFECT_CLASSES(checkerboard);

class checkerboardPlugin final : public checkerboardEffect {
public:
    OFX_EFFECT_PLUGIN(checkerboard);
    void changedParam(const OFX::ChangeArguments&, const char* name) override;
    bool keyframeUplift(const OFX::UpliftArguments&) override;

protected:
    void created() override { linkParams(); }

private:
    void linkParams();
};
