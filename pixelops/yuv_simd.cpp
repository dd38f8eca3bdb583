// YUV samples to pixels and back, in integers.
#include "pixelops/lanes.h"
#include "pixelops/yuv_rows.h"

namespace pixelops {
namespace SIMD_LEVEL {
namespace {

using I32 = hn::ScalableTag<std::int32_t>;
using I16 = hn::ScalableTag<std::int16_t>;
using U16 = hn::ScalableTag<std::uint16_t>;
using Half = hn::Half<U16>;
using Wide = hn::Vec<I32>;
using Narrow = hn::Vec<I16>;
constexpr std::size_t kWide = HWY_LANES(std::int32_t);
constexpr std::size_t kNarrow = HWY_LANES(std::int16_t);
static_assert(kYuvStep % (2 * kNarrow) == 0);

Wide load(const std::uint16_t* samples) { return hn::PromoteTo(I32(), hn::LoadU(Half(), samples)); }

// Sums of products with 22 fraction bits, rounded to six, in the upper half of each lane.
struct ChromaTerms {
    Wide red, green, blue;

    ChromaTerms(const YuvToRgb& c, const std::uint16_t* uRow, const std::uint16_t* vRow) {
        const I32 d;
        const Wide middle = hn::Set(d, c.middle);
        const Wide half = hn::Set(d, 1 << (YuvToRgb::kFractionBits - YuvToRgb::kSumBits - 1));
        const Wide u = hn::Sub(load(uRow), middle), v = hn::Sub(load(vRow), middle);
        const auto product = [&](Wide x, std::int32_t by) HWY_ATTR { return hn::Mul(x, hn::Set(d, by)); };
        red = hn::Add(product(v, c.redFromV), half);
        green = hn::Add(hn::Add(product(u, c.greenFromU), product(v, c.greenFromV)), half);
        blue = hn::Add(product(u, c.blueFromU), half);
    }
};

// Each lane's upper half, twice.
Narrow twice(Wide terms) {
    const auto low = hn::BitCast(I32(), hn::ShiftRight<16>(hn::BitCast(hn::RebindToUnsigned<I32>(), terms)));
    return hn::BitCast(I16(), hn::Or(hn::And(terms, hn::Set(I32(), -65536)), low));
}

// Each lane's upper half, once.
Narrow once(Wide first, Wide second) {
    return hn::ConcatOdd(I16(), hn::BitCast(I16(), second), hn::BitCast(I16(), first));
}

Narrow code(Narrow luma, Narrow term) {
    const Narrow sum = hn::ShiftRight<YuvToRgb::kSumBits>(hn::SaturatedAdd(luma, term));
    return hn::Min(hn::Max(sum, hn::Zero(I16())), hn::Set(I16(), 255));
}

Wide byteOf(Wide pixels, int index) {
    const Wide mask = hn::Set(I32(), 255);
    return index == 0   ? hn::And(pixels, mask)
           : index == 1 ? hn::And(hn::ShiftRight<8>(pixels), mask)
                        : hn::And(hn::ShiftRight<16>(pixels), mask);
}

Wide loadWide(const std::uint8_t* pixels) {
    return hn::BitCast(I32(), hn::LoadU(hn::Repartition<std::uint8_t, I32>(), pixels));
}

void storeCodes(Wide first, Wide second, std::uint16_t* to) {
    const U16 d;
    hn::StoreU(hn::ConcatEven(d, hn::BitCast(d, second), hn::BitCast(d, first)), d, to);
}

// Four times the mean of the pixels that share a chroma sample, as blue and red in the halves of each lane, and green.
struct Sums {
    Wide blueRed, green;
};

Sums sumOf(Wide upper, Wide lower) {
    const Wide even = hn::Set(I32(), 0x00FF00FF), second = hn::Set(I32(), 255);
    return {hn::Add(hn::And(upper, even), hn::And(lower, even)),
            hn::Add(hn::And(hn::ShiftRight<8>(upper), second), hn::And(hn::ShiftRight<8>(lower), second))};
}

// Neighbours added, of two vectors.
Wide paired(Wide first, Wide second) {
    return hn::Add(hn::ConcatEven(I32(), second, first), hn::ConcatOdd(I32(), second, first));
}

template <bool halved>
Sums sumsAt(const std::uint8_t* upper, const std::uint8_t* lower) {
    const Sums first = sumOf(loadWide(upper), loadWide(lower));
    if constexpr (!halved) return {hn::Add(first.blueRed, first.blueRed), hn::Add(first.green, first.green)};
    const Sums second = sumOf(loadWide(upper + 4 * kWide), loadWide(lower + 4 * kWide));
    return {paired(first.blueRed, second.blueRed), paired(first.green, second.green)};
}

// Halves are rounded down: the largest sum then just fits 32 bits, and the largest code, too.
Wide chroma(const std::int32_t* row, const Sums& sums, const RgbToYuv& c) {
    const I32 d;
    const Wide red = hn::ShiftRight<16>(sums.blueRed), blue = hn::And(sums.blueRed, hn::Set(d, 0xFFFF));
    Wide sum = hn::Add(hn::Mul(red, hn::Set(d, row[0])), hn::Mul(sums.green, hn::Set(d, row[1])));
    sum = hn::Add(sum, hn::Mul(blue, hn::Set(d, row[2])));
    sum = hn::Add(sum, hn::Set(d, (1 << (c.fractionBits + 1)) - 1));
    return hn::Add(hn::ShiftRightSame(sum, c.fractionBits + 2), hn::Set(d, c.middle));
}

template <bool halved>
void chromaRow(const RgbToYuv& c, const std::uint8_t* upper, const std::uint8_t* lower, std::uint16_t* u,
               std::uint16_t* v, std::size_t count) {
    constexpr std::size_t kPixels = halved ? 2 : 1; // that share a sample
    constexpr std::size_t kBytes = 4 * kPixels * kWide;
    for (std::size_t i = 0; i < count; i += kPixels * kNarrow) {
        const Sums first = sumsAt<halved>(upper, lower), second = sumsAt<halved>(upper + kBytes, lower + kBytes);
        storeCodes(chroma(c.u, first, c), chroma(c.u, second, c), u);
        storeCodes(chroma(c.v, first, c), chroma(c.v, second, c), v);
        upper += 2 * kBytes, lower += 2 * kBytes, u += kNarrow, v += kNarrow;
    }
}

template <bool halved>
void pixelRow(const YuvToRgb& c, const std::uint16_t* y, const std::uint16_t* u, const std::uint16_t* v,
              std::uint8_t* pixels, std::size_t count) {
    const I16 d;
    const U16 du;
    const auto scale = hn::Set(du, c.luma);
    const Narrow black = hn::Set(d, c.black), opaque = hn::Set(d, static_cast<std::int16_t>(0xFF00));
    for (std::size_t i = 0; i < count; i += kNarrow) {
        const auto wide = hn::ShiftLeftSame(hn::LoadU(du, y + i), 16 - c.bits);
        const Narrow luma = hn::Sub(hn::BitCast(d, hn::MulHigh(wide, scale)), black);
        Narrow red, green, blue;
        if constexpr (halved) {
            const ChromaTerms terms(c, u + i / 2, v + i / 2);
            red = twice(terms.red), green = twice(terms.green), blue = twice(terms.blue);
        } else {
            const ChromaTerms first(c, u + i, v + i), second(c, u + i + kWide, v + i + kWide);
            red = once(first.red, second.red), green = once(first.green, second.green);
            blue = once(first.blue, second.blue);
        }
        const Narrow blueGreen = hn::Or(code(luma, blue), hn::ShiftLeft<8>(code(luma, green)));
        const Narrow redAlpha = hn::Or(code(luma, red), opaque);
        hn::StoreInterleaved2(hn::BitCast(du, blueGreen), hn::BitCast(du, redAlpha), du,
                              reinterpret_cast<std::uint16_t*>(pixels + 4 * i));
    }
}

} // namespace

void yuvToPixels(const YuvToRgb& c, const std::uint16_t* y, const std::uint16_t* u, const std::uint16_t* v,
                 std::uint8_t* pixels, std::size_t count, bool halved) {
    halved ? pixelRow<true>(c, y, u, v, pixels, count) : pixelRow<false>(c, y, u, v, pixels, count);
}

void pixelsToLuma(const RgbToYuv& c, const std::uint8_t* pixels, std::uint16_t* y, std::size_t count) {
    const I32 d;
    const Wide offset = hn::Set(d, (c.black << c.fractionBits) + (1 << (c.fractionBits - 1)));
    const auto luma = [&](const std::uint8_t* from) HWY_ATTR {
        const Wide p = loadWide(from);
        Wide sum = hn::Add(offset, hn::Mul(byteOf(p, 2), hn::Set(d, c.y[0])));
        sum = hn::Add(sum, hn::Mul(byteOf(p, 1), hn::Set(d, c.y[1])));
        sum = hn::Add(sum, hn::Mul(byteOf(p, 0), hn::Set(d, c.y[2])));
        return hn::ShiftRightSame(sum, c.fractionBits);
    };
    for (std::size_t i = 0; i < count; i += kNarrow) {
        storeCodes(luma(pixels + 4 * i), luma(pixels + 4 * (i + kWide)), y + i);
    }
}

void pixelsToChroma(const RgbToYuv& c, const std::uint8_t* upper, const std::uint8_t* lower, std::uint16_t* u,
                    std::uint16_t* v, std::size_t count, bool halved) {
    halved ? chromaRow<true>(c, upper, lower, u, v, count) : chromaRow<false>(c, upper, lower, u, v, count);
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(yuvToPixels);
SIMD_FUNCTION(pixelsToLuma);
SIMD_FUNCTION(pixelsToChroma);

} // namespace pixelops
