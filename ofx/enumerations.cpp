// The strings of the enumerations: one row per value.
#include "ofx/enumerations.h"

#include "openfx/openfx.h"

namespace OFX {
namespace {

template <class E>
struct Name {
    E value;
    const char* text;
};

constexpr Name<Context> kContexts[] = {
    {Context::Generator, kOfxImageEffectContextGenerator},   {Context::Filter, kOfxImageEffectContextFilter},
    {Context::Transition, kOfxImageEffectContextTransition}, {Context::Paint, kOfxImageEffectContextPaint},
    {Context::General, kOfxImageEffectContextGeneral},
};
constexpr Name<Depth> kDepths[] = {
    {Depth::Byte, kOfxBitDepthByte},         {Depth::Short, kOfxBitDepthShort},
    {Depth::Float, kOfxBitDepthFloat},       {Depth::ByteBGR, kOfxBitDepthByteBGR},
    {Depth::ShortBGR, kOfxBitDepthShortBGR}, {Depth::FloatBGR, kOfxBitDepthFloatBGR},
};
constexpr Name<Components> kComponents[] = {
    {Components::RGBA, kOfxImageComponentRGBA},
    {Components::Alpha, kOfxImageComponentAlpha},
};
constexpr Name<PixelOrder> kPixelOrders[] = {
    {PixelOrder::RGBA, kOfxImagePixelOrderRGBA},
    {PixelOrder::BGRA, kOfxImagePixelOrderBGRA},
};
constexpr Name<FieldExtraction> kFieldExtractions[] = {
    {FieldExtraction::Both, kOfxImageFieldBoth},
    {FieldExtraction::Single, kOfxImageFieldSingle},
    {FieldExtraction::Doubled, kOfxImageFieldDoubled},
};
constexpr Name<DoubleType> kDoubleTypes[] = {
    {DoubleType::Plain, kOfxParamDoubleTypePlain},
    {DoubleType::Angle, kOfxParamDoubleTypeAngle},
    {DoubleType::Scale, kOfxParamDoubleTypeScale},
    {DoubleType::Time, kOfxParamDoubleTypeTime},
    {DoubleType::AbsoluteTime, kOfxParamDoubleTypeAbsoluteTime},
    {DoubleType::NormalisedX, kOfxParamDoubleTypeNormalisedX},
    {DoubleType::NormalisedY, kOfxParamDoubleTypeNormalisedY},
    {DoubleType::NormalisedXAbsolute, kOfxParamDoubleTypeNormalisedXAbsolute},
    {DoubleType::NormalisedYAbsolute, kOfxParamDoubleTypeNormalisedYAbsolute},
    {DoubleType::NormalisedXY, kOfxParamDoubleTypeNormalisedXY},
    {DoubleType::NormalisedXYAbsolute, kOfxParamDoubleTypeNormalisedXYAbsolute},
    {DoubleType::Polar, kOfxParamDoubleTypePolar},
    {DoubleType::Chrominance, kOfxParamDoubleTypeChrominance},
};

template <class E, std::size_t Count>
constexpr const char* textOf(const Name<E> (&names)[Count], E value) {
    for (const auto& name : names) {
        if (name.value == value) return name.text;
    }
    return "";
}

template <class E, std::size_t Count>
E valueOf(const Name<E> (&names)[Count], const char* text) {
    for (const auto& name : names) {
        if (text != nullptr && std::string_view(name.text) == text) return name.value;
    }
    return E{};
}

} // namespace

const char* toString(Context value) { return textOf(kContexts, value); }
const char* toString(Depth value) { return textOf(kDepths, value); }
const char* toString(Components value) { return textOf(kComponents, value); }
const char* toString(PixelOrder value) { return textOf(kPixelOrders, value); }
const char* toString(FieldExtraction value) { return textOf(kFieldExtractions, value); }
const char* toString(DoubleType value) { return textOf(kDoubleTypes, value); }

Context contextFrom(const char* text) { return valueOf(kContexts, text); }
Depth depthFrom(const char* text) { return valueOf(kDepths, text); }
Components componentsFrom(const char* text) { return valueOf(kComponents, text); }
PixelOrder pixelOrderFrom(const char* text) { return valueOf(kPixelOrders, text); }

} // namespace OFX
