// Dissolve: controls, and what each mode does at a progress.
#include "effects/dissolve/dissolve.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "kernels.h"
#include "pixelops/pixel.h"
#include "pixelops/rows.h"

namespace {

using Values = dissolveValues;

// --- Controls ---

// In the order of dissolve::Mode.
constexpr const char* kModes[] = {
    "Additive dissolve",  "Subtractive dissolve",     "Subtractive crossfade", "Color bleed",
    "Pixel color morph",  "Threshold dissolve",       "Threshold appear",      "Fade through grayscale",
    "Fade through color", "R then G then B crossfade"};

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    OFX::transitionProgress<&Values::progress>,
    {.name = "Type", .field = OFX::at<&Values::mode>, .options = kModes, .unlimited = true,
     .hint = "How one picture becomes the other."},
    {.name = "ColorBleedSpeed", .label = "Color bleed speed", .kind = OFX::Kind::Group},
    {.name = "ColorBleedSpeedRed", .label = "Red", .field = OFX::at<&Values::bleedRed>, .parent = "ColorBleedSpeed",
     .enabled = false, .hint = "How far red drains and fills ahead of slower channels."},
    {.name = "ColorBleedSpeedGreen", .label = "Green", .field = OFX::at<&Values::bleedGreen>,
     .parent = "ColorBleedSpeed", .enabled = false, .hint = "How far green drains and fills ahead of slower channels."},
    {.name = "ColorBleedSpeedBlue", .label = "Blue", .field = OFX::at<&Values::bleedBlue>, .parent = "ColorBleedSpeed",
     .enabled = false, .hint = "How far blue drains and fills ahead of slower channels."},
    {.name = "ColorBleedSpeedAlpha", .label = "Alpha", .field = OFX::at<&Values::bleedAlpha>,
     .parent = "ColorBleedSpeed", .enabled = false, .hint = "How far alpha drains and fills ahead of slower channels."},
    {.name = "ColorMorphSpeed", .label = "Color morph speed", .kind = OFX::Kind::Group},
    {.name = "ColorMorphSpeedRed", .label = "Red", .field = OFX::at<&Values::morphRed>, .parent = "ColorMorphSpeed",
     .enabled = false, .hint = "How far red changes ahead of slower channels."},
    {.name = "ColorMorphSpeedGreen", .label = "Green", .field = OFX::at<&Values::morphGreen>,
     .parent = "ColorMorphSpeed", .enabled = false, .hint = "How far green changes ahead of slower channels."},
    {.name = "ColorMorphSpeedBlue", .label = "Blue", .field = OFX::at<&Values::morphBlue>, .parent = "ColorMorphSpeed",
     .enabled = false, .hint = "How far blue changes ahead of slower channels."},
    {.name = "ColorMorphSpeedAlpha", .label = "Alpha", .field = OFX::at<&Values::morphAlpha>,
     .parent = "ColorMorphSpeed", .enabled = false, .hint = "How far alpha changes ahead of slower channels."},
    {.name = "FadeThroughColor", .label = "Fade through color", .field = OFX::at<&Values::color>,
     .initial = {0, 0, 0, 1}, .enabled = false, .hint = "The color that stands alone half way."},
};
// clang-format on

// --- Arithmetic ---

// Numbers for red, green, blue and alpha.
using Channels = std::array<double, 4>;

Channels bleedSpeeds(const Values& v) { return {v.bleedRed, v.bleedGreen, v.bleedBlue, v.bleedAlpha}; }
Channels morphSpeeds(const Values& v) { return {v.morphRed, v.morphGreen, v.morphBlue, v.morphAlpha}; }

// Premultiplied, at full scale.
Channels colorOf(const Values& v, double full) {
    const auto& [r, g, b, a] = v.color;
    return {full * r * a, full * g * a, full * b * a, full * a};
}

// Bytes count in whole codes: halves round up, a cut-off is a truncation. Floats take everything as it is.
template <class T>
struct Scale {
    static constexpr double kFull = 255;
    static double rounded(double x) { return std::floor(x + 0.5); }
    static double truncated(double x) { return std::trunc(x); }
};
template <>
struct Scale<float> {
    static constexpr double kFull = 1;
    static double rounded(double x) { return x; }
    static double truncated(double x) { return x; }
};

template <class T, int bgra>
void store(T (&to)[4], const Channels& c) {
    pixelops::store<4, bgra>(
        to, pixelops::Pixel<T>{static_cast<T>(c[0]), static_cast<T>(c[1]), static_cast<T>(c[2]), static_cast<T>(c[3])});
}

template <class F>
Channels each(const Channels& from, F f) {
    return {f(from[0]), f(from[1]), f(from[2]), f(from[3])};
}

// How much of every channel has passed after the progress, and how much is still to come: the slowest channel takes all
// of the time, and the others are ahead of it by their speeds.
template <class S>
struct Passage {
    Passage(const Channels& speeds, double progress) {
        double steps = 0;
        for (const double speed : speeds) steps = std::max(steps, S::truncated(S::kFull / (1 + speed)));
        const double done = S::rounded(steps * progress);
        const auto channel = [](double step) {
            return [step](double speed) { return S::truncated(std::clamp(step * (1 + speed), 0.0, S::kFull)); };
        };
        passed = each(speeds, channel(done));
        left = each(speeds, channel(steps - done));
    }

    Channels passed, left;
};

template <class T, int bgra>
dissolve::Mix<T> mixAt(const Values& v) {
    using S = Scale<T>;
    constexpr bool bytes = dissolve::Mix<T>::kBytes;
    const double p = v.progress;
    const double w = bytes ? S::rounded(p * 1024) : p, q = S::rounded(p * S::kFull); // progress on two scales
    const double whole = bytes ? 1024 : 1;

    dissolve::Mix<T> m{};
    m.mode = static_cast<dissolve::Mode>(v.mode);
    Channels fade = {q, q, q, q};
    const auto passage = [&](const Channels& speeds) { return Passage<S>(speeds, p); };
    switch (m.mode) {
        case dissolve::Additive:
        case dissolve::Subtractive:
            m.second = w >= whole / 2;
            m.weight = static_cast<decltype(m.weight)>(m.second ? 2 * (whole - w) : 2 * w);
            break;
        case dissolve::SubtractiveCrossfade:
            m.weight = static_cast<decltype(m.weight)>(w);
            break;
        case dissolve::ColorBleed:
            store<T, bgra>(m.drain, passage(bleedSpeeds(v)).passed);
            store<T, bgra>(m.fill, passage(bleedSpeeds(v)).left);
            break;
        case dissolve::ColorMorph:
            store<T, bgra>(m.step, passage(morphSpeeds(v)).passed);
            break;
        case dissolve::ThresholdDissolve:
        case dissolve::ThresholdAppear: {
            // A pixel's brightness is four thirds of its colours' sum, rounded down, where white has 1020 of 1024.
            const double level = m.mode == dissolve::ThresholdDissolve ? w : whole - w;
            if constexpr (bytes) {
                // The largest sum that is not brighter than the level, or is darker.
                const double above = m.mode == dissolve::ThresholdDissolve ? level + 1 : level;
                m.threshold = static_cast<std::int32_t>(std::ceil(above * 3 / 4)) - 1;
            } else {
                m.threshold = static_cast<float>(level * 3 * 1024 / 1020);
            }
            break;
        }
        case dissolve::ThroughGray:
        case dissolve::ThroughColor: {
            m.second = bytes ? q >= 127 : p >= 0.5;
            const double f = m.second ? std::clamp(2 * q - (bytes ? 254 : 1), 0.0, S::kFull) : 2 * q;
            fade = {f, f, f, m.mode == dissolve::ThroughGray ? q : f};
            store<T, bgra>(m.color, each(colorOf(v, S::kFull), [](double c) {
                               return bytes ? std::trunc(std::clamp(c, 0.0, S::kFull)) : c;
                           }));
            break;
        }
        case dissolve::ChannelByChannel: {
            const double third = S::kFull / 3;
            const auto crossed = [&](double start) { return std::clamp(3 * (q - start), 0.0, S::kFull); };
            fade = {crossed(0), crossed(third), crossed(2 * third), q};
            break;
        }
        case dissolve::kModes:
            break;
    }
    store<T, bgra>(m.fade, fade);
    return m;
}

// The modes whose ends are the pictures themselves, to the bit.
bool showsPictures(int mode) {
    return mode == dissolve::Additive || mode == dissolve::ColorMorph || mode == dissolve::ThroughGray ||
           mode == dissolve::ThroughColor;
}

} // namespace

// --- Processors ---

template <class T, int N, int max, int bgra>
void dissolveProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    if (values.mode < 0 || values.mode >= dissolve::kModes) return;
    if (showsPictures(values.mode) && copyAtEnds<T, N>(band)) return;
    const auto mix = mixAt<T, bgra>(values);
    mixRows<T, N>(band, [&](int, int, const T* from, const T* to, T* mixed, std::size_t pixels) {
        simd::forType<T>(dissolve::mixByteRow, dissolve::mixFloatRow)(mix, from, to, mixed, pixels);
    });
}

void dissolveOpenCLProcessor::process() {
    const auto floats = [](const Channels& c) {
        return cl_float4{
            {static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2]), static_cast<float>(c[3])}};
    };
    const Channels settings = values.mode == dissolve::ColorBleed     ? bleedSpeeds(values)
                              : values.mode == dissolve::ColorMorph   ? morphSpeeds(values)
                              : values.mode == dissolve::ThroughColor ? values.color
                                                                      : Channels{};
    pictureKernel().arg(values.mode).arg(0).arg(values.progress).arg(1.0f).arg(floats(settings)).run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::dissolve, {"k5d8e21c40"});

constinit const OFX::EffectTraits dissolvePlugin::traits = {
    .label = "Orvix Dissolve",
    .contexts = OFX::kTransition,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1290,
};

void dissolvePlugin::changedParam(const OFX::ChangeArguments&, const char* name) {
    if (std::strcmp(name, "Type") == 0) enableParams();
}

// Only what the mode uses can be edited.
void dissolvePlugin::enableParams() {
    const int mode = static_cast<int>(param<&Values::mode>().number());
    const auto enable = [](bool used, const auto&... params) { (params.setEnabled(used), ...); };
    enable(mode == dissolve::ColorBleed, param<&Values::bleedRed>(), param<&Values::bleedGreen>(),
           param<&Values::bleedBlue>(), param<&Values::bleedAlpha>());
    enable(mode == dissolve::ColorMorph, param<&Values::morphRed>(), param<&Values::morphGreen>(),
           param<&Values::morphBlue>(), param<&Values::morphAlpha>());
    enable(mode == dissolve::ThroughColor, param<&Values::color>());
}

OFX_EFFECT(dissolve)
