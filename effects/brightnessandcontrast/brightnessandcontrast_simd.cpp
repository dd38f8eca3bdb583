// The float row of brightness and contrast.
#include "effects/brightnessandcontrast/tone.h"
#include "pixelops/lanes.h"

namespace brightnessandcontrast {
namespace SIMD_LEVEL {

void toneRow(const Tone& tone, const float* from, float* to, std::size_t pixels) {
    lanes::mapPixels(from, to, pixels, [tone](auto p) {
        if (tone.shifts) p = mapStraight(p, [&](auto c) { return c + tone.offset; });
        if (tone.scales) p = mapStraight(p, [&](auto c) { return (c - tone.center) * tone.factor + tone.center; });
        return p;
    });
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(toneRow);

} // namespace brightnessandcontrast
