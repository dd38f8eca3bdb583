// Adds a brightness offset, then expands or compresses contrast about a centre; can derive both from the footage.
#pragma once

#include <optional>

#include "effects/brightnessandcontrast/tone.h"
#include "ofx/analysis.h"
#include "ofx/effect.h"
#include "pixelops/rows.h"

struct brightnessandcontrastValues {
    double brightness, contrast; // -1..1
    double center;               // 0..1
};

namespace brightnessandcontrast {

pixelops::ByteTable byteTable(const brightnessandcontrastValues&);
Tone tone(const brightnessandcontrastValues&);

} // namespace brightnessandcontrast

class brightnessandcontrastProcessorBase : public OFX::EffectProcessor<brightnessandcontrastValues> {
public:
    using EffectProcessor::EffectProcessor;
    void preProcess() override;

protected:
    pixelops::ByteTable table_{};
    brightnessandcontrast::Tone tone_;
};

OFX_EFFECT_CLASSES(brightnessandcontrast);

class brightnessandcontrastPlugin final : public brightnessandcontrastEffect {
public:
    OFX_EFFECT_PLUGIN(brightnessandcontrast);
    void changedParam(const OFX::ChangeArguments&, const char* name) override;

protected:
    bool neutral(const brightnessandcontrastValues&) const override;

private:
    void analyse(double time);
    std::optional<brightnessandcontrastValues> settingFor(const OFX::LumaHistogram&, double time) const;
};
