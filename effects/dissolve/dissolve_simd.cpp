// The rows of the ten dissolves.
#include "effects/dissolve/mix.h"
#include "pixelops/byte_lanes.h"

namespace dissolve {
namespace SIMD_LEVEL {
namespace {

namespace hn = lanes::hn;
using lanes::alphas, lanes::difference, lanes::limited, lanes::narrow, lanes::narrowSaturated, lanes::widen,
    lanes::withAlpha;
using lanes::Bytes, lanes::Codes, lanes::Lanes, lanes::WideCodes;
using Pixel = pixelops::Pixel<Lanes>;

// --- Bytes ---

// a + (d + (d >> 8) >> 8) with d = (b - a) fade + 128 and shifts that round down. With the difference's size instead of
// its sign, a fall needs 127 in place of 128, and all fits into 16 bits.
class Blend {
public:
    explicit Blend(const std::uint8_t (&fade)[4]) : fade_(widen(lanes::codes(fade))) {}

    Codes operator()(Codes a, Codes b) const {
        const Bytes d;
        const auto rises = hn::Eq(hn::Max(a, b), b);
        const WideCodes rounding = widen(hn::IfThenElse(rises, hn::Set(d, 128), hn::Set(d, 127)));
        const WideCodes product = widen(difference(a, b)) * fade_ + rounding;
        const auto way = narrow({scaled(product.even), scaled(product.odd)});
        return hn::IfThenElse(rises, hn::Add(a, way), hn::Sub(a, way));
    }

private:
    static WideCodes::Lane scaled(WideCodes::Lane v) { return hn::ShiftRight<8>(hn::Add(v, hn::ShiftRight<8>(v))); }

    WideCodes fade_;
};

// Products of components, or of sums of two, with a weight of at most 2048, divided by 1024.
WideCodes weighted(WideCodes v, std::uint16_t weight) {
    const auto w = hn::Set(WideCodes::Tag(), weight);
    const auto product = [&](WideCodes::Lane lane) { return hn::MulHigh(hn::ShiftLeft<6>(lane), w); };
    return {product(v.even), product(v.odd)};
}

using Words = hn::Repartition<std::uint32_t, Bytes>;

hn::Vec<Words> colourSum(Codes c) {
    const auto pixel = hn::BitCast(Words(), c), byte = hn::Set(Words(), 0xFF);
    const auto rg = hn::Add(hn::And(pixel, byte), hn::And(hn::ShiftRight<8>(pixel), byte));
    return hn::Add(rg, hn::And(hn::ShiftRight<16>(pixel), byte));
}

// The grey of two pixels, a sixth of their colours' sum, in all lanes.
Codes gray(Codes f, Codes t) {
    const auto sum = hn::BitCast(WideCodes::Tag(), hn::Add(colourSum(f), colourSum(t)));
    const auto sixth = hn::BitCast(Words(), hn::MulHigh(sum, hn::Set(WideCodes::Tag(), 10923))); // exact up to 1530
    const auto pair = hn::Or(sixth, hn::ShiftLeft<8>(sixth));
    return hn::BitCast(Bytes(), hn::Or(pair, hn::ShiftLeft<16>(pair)));
}

hn::Mask<Words> brighter(Codes c, std::int32_t sum) {
    const hn::RebindToSigned<Words> d;
    return hn::RebindMask(Words(), hn::Gt(hn::BitCast(d, colourSum(c)), hn::Set(d, sum)));
}

Codes choose(hn::Mask<Words> first, Codes f, Codes t) {
    return hn::BitCast(Bytes(), hn::IfThenElse(first, hn::BitCast(Words(), f), hn::BitCast(Words(), t)));
}

// --- Floats ---

Lanes lerp(Lanes a, Lanes b, float t) { return t <= 0 ? a : t >= 1 ? b : a + (b - a) * t; }

Pixel lerp(const Pixel& a, const Pixel& b, const float (&t)[4]) {
    return {lerp(a.r, b.r, t[0]), lerp(a.g, b.g, t[1]), lerp(a.b, b.b, t[2]), lerp(a.a, b.a, t[3])};
}

// f(component of a, component of b, index of the component).
template <class F>
Pixel each(const Pixel& a, const Pixel& b, F f) {
    return {f(a.r, b.r, 0), f(a.g, b.g, 1), f(a.b, b.b, 2), f(a.a, b.a, 3)};
}

Pixel limited(const Pixel& p) { return {min(p.r, p.a), min(p.g, p.a), min(p.b, p.a), p.a}; }

Lanes colourSum(const Pixel& p) { return p.r + p.g + p.b; }

Pixel choose(Lanes::Truth first, const Pixel& f, const Pixel& t) {
    return each(f, t, [&](Lanes a, Lanes b, int) { return select(first, a, b); });
}

} // namespace

void mixByteRow(const Mix<std::uint8_t>& m, const std::uint8_t* from, const std::uint8_t* to, std::uint8_t* mixed,
                std::size_t pixels) {
    const auto row = [&](auto mix) { lanes::forCodes(mixed, pixels, mix, from, to); };
    const auto otherRow = [&](auto mix) { // of a leading picture and the other one
        m.second ? lanes::forCodes(mixed, pixels, mix, to, from) : lanes::forCodes(mixed, pixels, mix, from, to);
    };
    const Blend blend(m.fade);
    const std::uint16_t weight = m.weight;
    switch (m.mode) {
        case Additive:
            return otherRow([=](Codes base, Codes other) {
                return hn::SaturatedAdd(base, narrowSaturated(weighted(widen(other), weight)));
            });
        case Subtractive:
            return otherRow([&, second = m.second](Codes base, Codes other) {
                const Codes alpha = second ? blend(other, base) : blend(base, other);
                return limited(withAlpha(difference(base, narrow(weighted(widen(other), weight))), alpha));
            });
        case SubtractiveCrossfade:
            return row([&](Codes f, Codes t) {
                const WideCodes wide = widen(f), sum = weighted(wide + widen(t), weight);
                return limited(withAlpha(narrow(difference(sum, wide)), blend(f, t)));
            });
        case ColorBleed:
            return row([drain = lanes::codes(m.drain), fill = lanes::codes(m.fill)](Codes f, Codes t) {
                return limited(hn::SaturatedAdd(hn::SaturatedSub(f, drain), hn::SaturatedSub(t, fill)));
            });
        case ColorMorph:
            return row([step = lanes::codes(m.step)](Codes f, Codes t) {
                return limited(hn::Max(hn::Min(hn::SaturatedAdd(f, step), t), hn::SaturatedSub(f, step)));
            });
        case ThresholdDissolve:
            return row([threshold = m.threshold](Codes f, Codes t) { return choose(brighter(f, threshold), f, t); });
        case ThresholdAppear:
            return row([threshold = m.threshold](Codes f, Codes t) { return choose(brighter(t, threshold), t, f); });
        case ThroughGray:
            return row([&, second = m.second](Codes f, Codes t) {
                const Codes g = gray(f, t);
                return second ? blend(withAlpha(g, f), t) : blend(f, withAlpha(g, t));
            });
        case ThroughColor: {
            const Codes color = lanes::codes(m.color);
            if (m.second)
                return lanes::forCodes(
                    mixed, pixels, [&](Codes t) { return blend(color, t); }, to);
            return lanes::forCodes(
                mixed, pixels, [&](Codes f) { return blend(f, color); }, from);
        }
        case ChannelByChannel:
            return row([&](Codes f, Codes t) { return limited(blend(f, t)); });
        case kModes:
            return;
    }
}

void mixFloatRow(const Mix<float>& m, const float* from, const float* to, float* mixed, std::size_t pixels) {
    const auto row = [&](auto mix) { lanes::mixPixels(from, to, mixed, pixels, mix); };
    const auto otherRow = [&](auto mix) {
        m.second ? lanes::mixPixels(to, from, mixed, pixels, mix) : lanes::mixPixels(from, to, mixed, pixels, mix);
    };
    const Lanes weight = m.weight, threshold = m.threshold, zero = 0.0f, one = 1.0f;
    switch (m.mode) {
        case Additive:
            return otherRow([=](const Pixel& base, const Pixel& other) {
                return each(base, other, [&](Lanes b, Lanes o, int) { return min(b + o * weight, one); });
            });
        case Subtractive:
            return otherRow([=, second = m.second, fade = m.fade[3]](const Pixel& base, const Pixel& other) {
                Pixel p = each(base, other, [&](Lanes b, Lanes o, int) { return abs(b - o * weight); });
                p.a = second ? lerp(other.a, base.a, fade) : lerp(base.a, other.a, fade);
                return limited(p);
            });
        case SubtractiveCrossfade:
            return row([=, fade = m.fade[3]](const Pixel& f, const Pixel& t) {
                Pixel p = each(f, t, [&](Lanes a, Lanes b, int) { return abs((b + a) * weight - a); });
                p.a = lerp(f.a, t.a, fade);
                return limited(p);
            });
        case ColorBleed:
            return row([&m, zero, one](const Pixel& f, const Pixel& t) {
                Pixel p = each(f, t, [&](Lanes a, Lanes b, int i) {
                    return max(a - m.drain[i], zero) + max(b - m.fill[i], zero);
                });
                p.a = min(p.a, one);
                return limited(p);
            });
        case ColorMorph:
            return row([&m](const Pixel& f, const Pixel& t) {
                return limited(
                    each(f, t, [&](Lanes a, Lanes b, int i) { return max(min(a + m.step[i], b), a - m.step[i]); }));
            });
        case ThresholdDissolve:
            return row([=](const Pixel& f, const Pixel& t) { return choose(colourSum(f) > threshold, f, t); });
        case ThresholdAppear:
            return row([=](const Pixel& f, const Pixel& t) { return choose(colourSum(t) < threshold, f, t); });
        case ThroughGray:
            return row([&m](const Pixel& f, const Pixel& t) {
                const Lanes g = (colourSum(f) + colourSum(t)) / 6.0f;
                return m.second ? lerp({g, g, g, f.a}, t, m.fade) : lerp(f, {g, g, g, t.a}, m.fade);
            });
        case ThroughColor: {
            const Pixel color = {m.color[0], m.color[1], m.color[2], m.color[3]};
            if (m.second)
                return lanes::mapPixels(to, mixed, pixels, [&](const Pixel& t) { return lerp(color, t, m.fade); });
            return lanes::mapPixels(from, mixed, pixels, [&](const Pixel& f) { return lerp(f, color, m.fade); });
        }
        case ChannelByChannel:
            return row([&m](const Pixel& f, const Pixel& t) { return limited(lerp(f, t, m.fade)); });
        case kModes:
            return;
    }
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(mixByteRow);
SIMD_FUNCTION(mixFloatRow);

} // namespace dissolve
