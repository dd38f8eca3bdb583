// L*a*b* of single colours: the exported forms for every record.
#include "pixelops/lab.h"

#include "pixelops/kr_pixelops.h"

namespace pixelops {
namespace {

void put(KRLAB* lab, const Rgb& c) {
    const Lab result = toLab(c);
    *lab = {result.l, result.a, result.b};
}

template <class Bytes>
void fromBytes(KRLAB* lab, const Bytes* pixel) {
    if (lab != nullptr && pixel != nullptr)
        put(lab, {fromCode(pixel->red), fromCode(pixel->green), fromCode(pixel->blue)});
}

void fromFloats(KRLAB* lab, const KRRGBAFLOAT* pixel) {
    if (lab != nullptr && pixel != nullptr) put(lab, {pixel->red, pixel->green, pixel->blue});
}

} // namespace
} // namespace pixelops

void KRRGBA_To_KRLAB(KRLAB* lab, const KRRGBA* rgba) { pixelops::fromBytes(lab, rgba); }
void KRRGBAFLOAT_To_KRLAB(KRLAB* lab, const KRRGBAFLOAT* rgba) { pixelops::fromFloats(lab, rgba); }
void KRDIBPIXEL_To_KRLAB(KRLAB* lab, const KRDIBPIXEL* pixel) { pixelops::fromBytes(lab, pixel); }
void KRDIBPIXEL_To_KRLAB_Float(KRLAB* lab, const KRRGBAFLOAT* pixel) { pixelops::fromFloats(lab, pixel); }

void KRLAB_To_KRRGBA(KRRGBA* rgba, const KRLAB* lab) {
    if (rgba == nullptr || lab == nullptr) return;
    const auto c = pixelops::toRgb(pixelops::Lab{lab->l, lab->a, lab->b});
    rgba->red = pixelops::wrappedCode(c.r);
    rgba->green = pixelops::wrappedCode(c.g);
    rgba->blue = pixelops::wrappedCode(c.b);
}

void KRLAB_To_KRDIBPIXEL_Float(KRRGBAFLOAT* pixel, const KRLAB* lab) {
    if (pixel == nullptr || lab == nullptr) return;
    const auto c = pixelops::toRgb(pixelops::Lab{lab->l, lab->a, lab->b});
    pixel->red = static_cast<float>(c.r);
    pixel->green = static_cast<float>(c.g);
    pixel->blue = static_cast<float>(c.b);
}
