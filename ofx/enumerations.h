// The enumerations through which effects speak of contexts, depths, components and kinds of numbers, with the property
// strings that stand for them at the host.
#pragma once

#include <string_view>

namespace OFX {

enum class Context { None, Generator, Filter, Transition, Paint, General };
enum class Depth { None, Byte = 1, Short = 2, Float = 3, ByteBGR = 5, ShortBGR = 6, FloatBGR = 7 };
enum class Components { None, RGBA, Alpha };
enum class PixelOrder { RGBA, BGRA };
enum class FieldExtraction { Both, Single, Doubled };
enum class DoubleType {
    Plain,
    Angle,
    Scale,
    Time,
    AbsoluteTime,
    NormalisedX,
    NormalisedY,
    NormalisedXAbsolute,
    NormalisedYAbsolute,
    NormalisedXY,
    NormalisedXYAbsolute,
    Polar,
    Chrominance
};

// The host's string for a value; empty for None.
const char* toString(Context);
const char* toString(Depth);
const char* toString(Components);
const char* toString(PixelOrder);
const char* toString(FieldExtraction);
const char* toString(DoubleType);

// The value that a host's string names. Unknown strings and null give None, or RGBA for the pixel order.
Context contextFrom(const char* text);
Depth depthFrom(const char* text);
Components componentsFrom(const char* text);
PixelOrder pixelOrderFrom(const char* text);

} // namespace OFX
