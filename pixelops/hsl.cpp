// HSL of single colours: the exported forms for every record.
#include "pixelops/hsl.h"

#include "pixelops/kr_pixelops.h"

namespace pixelops {
namespace {

KRHSL record(const Hsl& c, double alpha) { return {c.h, c.s, c.l, alpha}; }

template <class Bytes>
void fromBytes(KRHSL* hsl, const Bytes* pixel) {
    if (hsl == nullptr || pixel == nullptr) return;
    *hsl = record(toHsl({fromCode(pixel->red), fromCode(pixel->green), fromCode(pixel->blue)}), fromCode(pixel->alpha));
}

void fromFloats(KRHSL* hsl, const KRRGBAFLOAT* pixel) {
    if (hsl == nullptr || pixel == nullptr) return;
    *hsl = record(toHsl({pixel->red, pixel->green, pixel->blue}), double{pixel->alpha});
}

template <class Bytes>
void toBytes(Bytes* pixel, const KRHSL* hsl) {
    if (hsl == nullptr || pixel == nullptr) return;
    if (const auto c = toRgb(Hsl{hsl->hue, hsl->saturation, hsl->lightness})) {
        pixel->red = wrappedCode(c->r), pixel->green = wrappedCode(c->g), pixel->blue = wrappedCode(c->b);
    }
    pixel->alpha = wrappedCode(clampedUnit(hsl->alpha));
}

void toFloats(KRRGBAFLOAT* pixel, const KRHSL* hsl) {
    if (hsl == nullptr || pixel == nullptr) return;
    if (const auto c = toRgb(Hsl{hsl->hue, hsl->saturation, hsl->lightness})) {
        pixel->red = static_cast<float>(c->r), pixel->green = static_cast<float>(c->g);
        pixel->blue = static_cast<float>(c->b);
    }
    pixel->alpha = static_cast<float>(clampedUnit(hsl->alpha));
}

} // namespace
} // namespace pixelops

void KRRGBA_To_KRHSL(KRHSL* hsl, const KRRGBA* rgba) { pixelops::fromBytes(hsl, rgba); }
void KRHSL_To_KRRGBA(KRRGBA* rgba, const KRHSL* hsl) { pixelops::toBytes(rgba, hsl); }
void KRRGBAFLOAT_To_KRHSL(KRHSL* hsl, const KRRGBAFLOAT* rgba) { pixelops::fromFloats(hsl, rgba); }
void KRHSL_To_KRRGBAFLOAT(KRRGBAFLOAT* rgba, const KRHSL* hsl) { pixelops::toFloats(rgba, hsl); }
void KRDIBPIXEL_To_KRHSL(KRHSL* hsl, const KRDIBPIXEL* pixel) { pixelops::fromBytes(hsl, pixel); }
void KRDIBPIXEL_To_KRHSL_Float(KRHSL* hsl, const KRRGBAFLOAT* pixel) { pixelops::fromFloats(hsl, pixel); }
void KRHSL_To_KRDIBPIXEL(KRDIBPIXEL* pixel, const KRHSL* hsl) { pixelops::toBytes(pixel, hsl); }
void KRHSL_To_KRDIBPIXEL_Float(KRRGBAFLOAT* pixel, const KRHSL* hsl) { pixelops::toFloats(pixel, hsl); }
