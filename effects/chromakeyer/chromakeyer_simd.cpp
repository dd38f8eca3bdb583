// The rows of the chroma keyer.
#include "effects/chromakeyer/key.h"
#include "pixelops/lanes.h"

namespace chromakeyer {
namespace SIMD_LEVEL {
namespace {

namespace hn = lanes::hn;
using lanes::Lanes;
using Pixel = pixelops::Pixel<Lanes>;
using Truth = Lanes::Truth;

// The key's numbers in single precision.
class Distance {
public:
    explicit Distance(const Key& key)
        : r_(number(key.color.r)),
          g_(number(key.color.g)),
          b_(number(key.color.b)),
          h_(number(key.color.h)),
          s_(number(key.color.s)),
          l_(number(key.color.l)) {}

    // Of a pixel whose colours are premultiplied with `alpha`, in any scale. The quotients that make up hue and
    // saturation are taken before the division by alpha, so that byte pixels lose nothing.
    Lanes operator()(const Pixel& p, Lanes alpha) const {
        const Lanes zero = 0.0f, one = 1.0f, most = max(max(p.r, p.g), p.b), least = min(min(p.r, p.g), p.b);
        const Lanes sum = most + least, d = most - least;
        const Lanes l = sum / alpha * 0.5f;
        const Truth grey = sum <= zero || d <= zero;
        const Lanes divisor = select(l <= Lanes(0.5f), sum, alpha + alpha - sum);
        const Lanes s = select(grey, zero, d / divisor);
        const Lanes h = select(grey, zero, sixths(p, most, least, d) * (1 / 6.0f));

        const Lanes turn = abs(h - h_), dh = select(turn > Lanes(0.5f), one - turn, turn);
        const Lanes dr = p.r / alpha - r_, dg = p.g / alpha - g_, db = p.b / alpha - b_;
        const Lanes rgb = sqrt(dr * dr + dg * dg + db * db);
        return (rgb * 1.7320508f + (2.0f * dh + abs(l - l_) + abs(s - s_)) * (1 / 3.0f)) * 0.5f;
    }

private:
    static Lanes number(double x) { return static_cast<float>(x); }

    // The hue in sixths of a turn: from the pure colour before the largest component on where the next component is the
    // smallest, else back from the one after it.
    static Lanes sixths(const Pixel& p, Lanes most, Lanes least, Lanes d) {
        const Truth red = equal(p.r, most), green = equal(p.g, most);
        const Lanes next = select(red, p.g, select(green, p.b, p.r)), last = select(red, p.b, select(green, p.r, p.g));
        const Truth rises = equal(next, least);
        const Lanes way = (most - select(rises, last, next)) / d;
        const Lanes before = select(red, Lanes(5.0f), select(green, Lanes(1.0f), Lanes(3.0f)));
        const Lanes after = select(red, Lanes(1.0f), select(green, Lanes(3.0f), Lanes(5.0f)));
        return select(rises, before + way, after - way);
    }

    static Truth equal(Lanes a, Lanes b) { return a <= b && b <= a; }

    Lanes r_, g_, b_, h_, s_, l_;
};

// Red first.
Pixel ordered(bool bgra, const Pixel& p) { return bgra ? Pixel{p.b, p.g, p.r, p.a} : p; }

// What a distance makes of the rising part of the matte. No number leaves the pixel as it is.
Lanes thresholded(const Key& key, Lanes distance, Lanes rising, float full) {
    const Lanes opaque = select(distance <= static_cast<float>(key.high - 1e-6), rising, full);
    return select(distance < static_cast<float>(key.low), Lanes(0.0f), opaque);
}

Lanes between(Lanes x, float low, float high) { return min(max(x, Lanes(low)), Lanes(high)); }

class Matte {
public:
    explicit Matte(const Key& key) : key_(key), distance_(key) {}

    Lanes operator()(const float*, const Pixel& p) const {
        const Lanes one = 1.0f;
        const Lanes distance = distance_(ordered(key_.bgra, p), select(p.a > Lanes(0.0f) && p.a < one, p.a, one));
        const Lanes rising = between((distance - low()) * scale(), 0, 1);
        return thresholded(key_, distance, rising, 1);
    }

    // Truncated to whole codes. Where single precision cannot tell on which side of a step a pixel lies, double does.
    Lanes operator()(const std::uint8_t* from, const Pixel& p) const {
        constexpr float kError = 2e-6f; // of a distance, with room to spare
        const Lanes opaque = 255.0f;
        const Lanes distance = distance_(ordered(key_.bgra, p), select(p.a > Lanes(0.0f), p.a, opaque));
        const Lanes rising = (distance - low()) * scale() * 255.0f, whole = trunc(between(rising, 0, 255));
        const float error = 255 * (scale() < 0 ? -scale() : scale()) * kError + 1e-4f;
        const Lanes beyond = rising - whole;
        const Truth nearStep = (beyond < error && whole > Lanes(0.5f)) || beyond > 1.0f - error;
        const bool hard = !(key_.high - key_.low > 1e-3);
        const Truth nearEnd =
            abs(distance - static_cast<float>(key_.high)) < 4e-6f || (abs(distance - low()) < (hard ? kError : -1.0f));
        const Truth unsure = (nearStep && distance <= static_cast<float>(key_.high) && distance >= low()) || nearEnd;
        const Lanes matte = thresholded(key_, distance, whole, 255);
        return any(unsure) ? settled(from, matte, unsure) : matte;
    }

private:
    float low() const { return static_cast<float>(key_.low); }
    float scale() const { return static_cast<float>(key_.scale); }

    [[gnu::noinline]] Lanes settled(const std::uint8_t* from, Lanes matte, Truth unsure) const {
        const Lanes::Tag d;
        float mattes[Lanes::kCount], asked[Lanes::kCount];
        hn::StoreU(matte.v, d, mattes);
        hn::StoreU(select(unsure, Lanes(1.0f), Lanes(0.0f)).v, d, asked);
        for (std::size_t i = 0; i < Lanes::kCount; ++i) {
            const std::uint8_t* p = from + 4 * i;
            if (asked[i] != 0) mattes[i] = matteOf(key_, p[key_.bgra ? 2 : 0], p[1], p[key_.bgra ? 0 : 2], p[3]);
        }
        return hn::LoadU(d, mattes);
    }

    const Key& key_;
    const Distance distance_;
};

template <class T>
constexpr float kFull = sizeof(T) == 1 ? 255 : 1;

template <class T>
Pixel keyed(const Pixel& p, Lanes matte, bool showMatte) {
    const Lanes alpha = min(matte, p.a);
    return showMatte ? Pixel{alpha, alpha, alpha, kFull<T>} : Pixel{p.r, p.g, p.b, alpha};
}

template <class T>
void keyRow(const Key& key, const T* from, T* to, std::size_t pixels) {
    const Matte matteAt(key);
    const auto step = [&](auto streamed, std::size_t, T* t, const T* f) {
        const Pixel p = lanes::loadPixels(f);
        lanes::storePixels<streamed>(keyed<T>(p, matteAt(f, p), key.showMatte), t);
    };
    lanes::forVectors(to, pixels, step, from);
}

template <class T>
void softRow(const SoftKey& key, const T* from, const float* soft, const std::uint8_t* edges, T* to,
             std::size_t pixels) {
    const auto despilled = [&](Pixel p, Truth edge) {
        Lanes& dominant = key.dominant == 0 ? p.r : key.dominant == 1 ? p.g : p.b;
        const Lanes others = key.dominant == 0 ? max(p.g, p.b) : key.dominant == 1 ? max(p.r, p.b) : max(p.r, p.g);
        dominant = select(edge, min(dominant, others), dominant);
        return p;
    };
    const auto step = [&](auto streamed, std::size_t first, T* t, const T* f) {
        const Truth edge = lanes::loadNumbers<T>(edges + first) > Lanes(0.0f);
        const Lanes matte = between(lanes::loadNumbers<T>(soft + first), 0, kFull<T>);
        lanes::storePixels<streamed>(keyed<T>(despilled(lanes::loadPixels(f), edge), matte, key.showMatte), t);
    };
    lanes::forVectors(to, pixels, step, from);
}

} // namespace

void matteByteRow(const Key& key, const std::uint8_t* from, float* matte, std::size_t pixels) {
    lanes::numberPixels(from, matte, pixels, Matte(key));
}
void matteFloatRow(const Key& key, const float* from, float* matte, std::size_t pixels) {
    lanes::numberPixels(from, matte, pixels, Matte(key));
}
void keyByteRow(const Key& key, const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
    keyRow(key, from, to, pixels);
}
void keyFloatRow(const Key& key, const float* from, float* to, std::size_t pixels) { keyRow(key, from, to, pixels); }

void refineRow(const Neighbourhood& n, float* refined, std::uint8_t* edges, std::size_t pixels) {
    const Lanes::Tag d;
    const hn::RebindToSigned<Lanes::Tag> words;
    const hn::Rebind<std::uint8_t, Lanes::Tag> bytes;
    for (std::size_t x = 0; x < pixels; x += Lanes::kCount) {
        const auto at = [&](const float* row, std::ptrdiff_t offset) -> Lanes {
            return hn::LoadU(d, row + static_cast<std::ptrdiff_t>(x) + offset);
        };
        const Lanes a = at(n.above, -1), b = at(n.above, 0), c = at(n.above, 1), e = at(n.row, -1), own = at(n.row, 0),
                    f = at(n.row, 1), g = at(n.below, -1), h = at(n.below, 0), i = at(n.below, 1);
        const Lanes least = min(min(min(a, b), min(c, e)), min(min(f, g), min(h, i)));
        const Lanes mean = (((a + b) + (c + e)) + ((f + g) + (h + i))) * 0.125f;
        const Truth edge = least <= Lanes(0.0f);
        hn::StoreU(select(edge, min(mean, own), own).v, d, refined + x);
        const Lanes flags = select(edge, Lanes(255.0f), Lanes(0.0f));
        hn::StoreU(hn::DemoteTo(bytes, hn::ConvertTo(words, flags.v)), bytes, edges + x);
    }
}

void softByteRow(const SoftKey& key, const std::uint8_t* from, const float* soft, const std::uint8_t* edges,
                 std::uint8_t* to, std::size_t pixels) {
    softRow(key, from, soft, edges, to, pixels);
}
void softFloatRow(const SoftKey& key, const float* from, const float* soft, const std::uint8_t* edges, float* to,
                  std::size_t pixels) {
    softRow(key, from, soft, edges, to, pixels);
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(matteByteRow);
SIMD_FUNCTION(matteFloatRow);
SIMD_FUNCTION(keyByteRow);
SIMD_FUNCTION(keyFloatRow);
SIMD_FUNCTION(refineRow);
SIMD_FUNCTION(softByteRow);
SIMD_FUNCTION(softFloatRow);

} // namespace chromakeyer
