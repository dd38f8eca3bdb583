// The levels' mapping and its table.
#include "effects/levels/mapping.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace levels {
namespace {

constexpr double kNarrowest = 1.0f / 255; // input range, in single precision
constexpr double kThreshold = 1e-6f;      // a gamma that is closer to 1 is 1

} // namespace

Mapping::Mapping(const levelsValues& v)
    : inputStart(v.inputStart),
      inputRange(v.inputEnd - v.inputStart),
      outputStart(v.outputStart),
      outputRange(v.outputEnd - v.outputStart) {
    if (std::abs(inputRange) < kNarrowest) inputRange = kNarrowest;
    if (std::abs(v.gamma - 1) >= kThreshold) curve = pixelops::ToneCurve(1 / v.gamma);
}

double Mapping::operator()(double x) const {
    const double place = std::clamp((x - inputStart) / inputRange, 0.0, 1.0);
    return curve(place) * outputRange + outputStart;
}

pixelops::ByteTable byteTable(const Mapping& mapping) {
    constexpr double kUp = 1.5e-8; // lifts what falls just short of a half
    pixelops::ByteTable table{};
    for (std::size_t i = 0; i < std::size(table.results); ++i) {
        const double result = mapping(static_cast<double>(i) / 255) * 255;
        table.results[i] = static_cast<std::uint8_t>(std::lrint(result + kUp));
    }
    return table;
}

FloatMapping floatMapping(const Mapping& mapping, Channel channel) {
    const pixelops::ToneCurve& curve = mapping.curve;
    const bool inside = curve.exponent > 1; // where the curve's offset stands
    const auto single = [](double x) { return static_cast<float>(x); };
    return {.inputStart = single(mapping.inputStart),
            .inputStartRest = single(mapping.inputStart - static_cast<double>(single(mapping.inputStart))),
            .perInput = single(1 / mapping.inputRange),
            .outputStart = single(mapping.outputStart),
            .outputRange = single(mapping.outputRange),
            .threshold = single(curve.threshold),
            .slope = single(curve.slope),
            .inner = inside ? single(curve.offset) : 0,
            .scale = single(curve.scale),
            .exponent = single(curve.exponent),
            .factor = inside ? 1 : single(curve.offset + 1),
            .outer = inside ? 0 : single(-curve.offset),
            .curved = curve.exponent != 1,
            .channel = channel};
}

} // namespace levels
