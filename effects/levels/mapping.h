// The arithmetic of levels: the input range, straightened or bent by gamma, becomes the output range.
#pragma once

#include <cstddef>

#include "pixelops/rows.h"
#include "pixelops/simd.h"
#include "pixelops/tone_curve.h"

struct levelsValues {
    double inputStart, inputEnd, outputStart, outputEnd; // 0..1, in any order
    double gamma;                                        // above 1 brightens
    int channel;
};

namespace levels {

enum Channel { All, Red, Green, Blue, Alpha };

// The result of one component, from 0 to 1. An input range that is reversed runs backwards, and one narrower than an
// 8-bit code is widened to that.
class Mapping {
public:
    Mapping() = default;
    explicit Mapping(const levelsValues&);

    double operator()(double x) const;

    double inputStart = 0, inputRange = 1, outputStart = 0, outputRange = 1;
    pixelops::ToneCurve curve; // of the place within the input range
};

// Every result in 8 bits; exact halves round up.
pixelops::ByteTable byteTable(const Mapping&);

// The mapping as rows of floats need it. The curve is slope x below the threshold, and from there on
// ((x + inner) scale)^exponent factor + outer.
struct FloatMapping {
    float inputStart, inputStartRest; // both together are the start: steep curves need it to more than 24 bits
    float perInput, outputStart, outputRange;
    float threshold, slope, inner, scale, exponent, factor, outer;
    bool curved;
    Channel channel;
};

FloatMapping floatMapping(const Mapping&, Channel);

// Four floats per pixel. The channel's components, first to third in memory, are mapped and limited to alpha; Alpha
// maps all three and then alpha itself. Pixels without alpha become four zeros.
extern const simd::Function<void(const FloatMapping& mapping, const float* from, float* to, std::size_t pixels)>
    mapFloats;

} // namespace levels
