// Checkerboard: controls, geometry, and rows built from a few distinct ones.
#include "effects/checkerboard/checkerboard.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "effects/checkerboard/blend.h"
#include "kernels.h"
#include "ofx/log.h"
#include "pixelops/pixel.h"
#include "pixelops/rows.h"

namespace {

using Values = checkerboardValues;

// --- Controls ---

// One row, one control.
// clang-format off
constexpr OFX::Param kParams[] = {
    {.name = "TileDimensions", .label = "Tile dimensions", .kind = OFX::Kind::Group},
    {.name = "TileDimensionsWidth", .label = "Width", .field = OFX::at<&Values::tileWidth>,
     .parent = "TileDimensions", .initial = {0.1}, .range = {0.001, 1},
     .hint = "Width of a tile as a fraction of the picture's width."},
    {.name = "TileDimensionsHeight", .label = "Height", .field = OFX::at<&Values::tileHeight>,
     .parent = "TileDimensions", .initial = {0.1}, .range = {0.001, 1}, .enabled = false,
     .hint = "Height of a tile as a fraction of the picture's height; follows the width while Square is on."},
    {.name = "TileDimensionsSquare", .label = "Square", .field = OFX::at<&Values::square>,
     .parent = "TileDimensions", .initial = {1}, .hint = "Tiles as high as they are wide on the display."},
    {.name = "EdgeBlending", .label = "Edge blending", .kind = OFX::Kind::Group},
    {.name = "EdgeBlendingHorizontal", .label = "Horizontal", .field = OFX::at<&Values::blendHorizontal>,
     .parent = "EdgeBlending", .hint = "Soft part of a tile's width: 0 is a hard edge, 1 a ramp from tile to tile."},
    {.name = "EdgeBlendingVertical", .label = "Vertical", .field = OFX::at<&Values::blendVertical>,
     .parent = "EdgeBlending", .enabled = false,
     .hint = "Soft part of a tile's height; follows the horizontal amount while Proportional is on."},
    {.name = "EdgeBlendingProportional", .label = "Proportional", .field = OFX::at<&Values::proportional>,
     .parent = "EdgeBlending", .initial = {1}, .hint = "Blend as much vertically as horizontally."},
    {.name = "Color1", .label = "Color 1", .field = OFX::at<&Values::color1>, .initial = {0, 0, 0, 1},
     .hint = "Colour of the first tile, top left."},
    {.name = "Color2", .label = "Color 2", .field = OFX::at<&Values::color2>, .initial = {1, 1, 1, 1},
     .hint = "Colour of the other tiles."},
    {.name = "GridOffset", .label = "Grid offset", .kind = OFX::Kind::Group},
    {.name = "GridOffsetX", .label = "X", .field = OFX::at<&Values::offsetX>, .parent = "GridOffset",
     .hint = "Shift of the grid to the right, as a fraction of the picture's width."},
    {.name = "GridOffsetY", .label = "Y", .field = OFX::at<&Values::offsetY>, .parent = "GridOffset",
     .hint = "Shift of the grid downwards, as a fraction of the picture's height."},
};
// clang-format on

// What the legacy effect saved for one keyframe. Its colours stand as four floats each, 0..1, before the numbers.
struct LegacyRecord {
    float color1[4];
    float color2[4];
    double tileWidth, tileHeight, blendHorizontal, blendVertical, offsetX, offsetY;
    std::uint8_t square, proportional, unused[6];
};
static_assert(sizeof(LegacyRecord) == 88 && offsetof(LegacyRecord, tileWidth) == 32 &&
              offsetof(LegacyRecord, square) == 80);

// --- Arithmetic ---

// Where a position lies among the tiles of an axis.
struct Place {
    std::int64_t tile;
    double towards; // how far the neighbouring tile's colour is mixed in: distance into the soft part, in pixels
};

std::int64_t tileAt(double position, double tile) {
    auto index = static_cast<std::int64_t>(position / tile);
    if (static_cast<double>(index) * tile > position) --index;
    return index;
}

// The row of tiles that a line lies in, and how deep it is in the soft part at either end.
Place placeOfRow(const checkerboard::Axis& axis, double position) {
    const std::int64_t tile = tileAt(position, axis.tile);
    const double start = static_cast<double>(tile) * axis.tile + axis.blend;
    const double end = static_cast<double>(tile + 1) * axis.tile - axis.blend;
    return {tile, position < start ? start - position : position >= end ? position - end : 0};
}

// Component values in memory order.
template <class T>
using Color = std::array<T, 4>;

// The premultiplied colour; bytes are truncated.
template <class T, int max, int bgra>
Color<T> premultiplied(const OFX::RGBA& c) {
    pixelops::Pixel<T> pixel;
    if constexpr (max == 255) {
        const auto limited = [&c](std::size_t i) { return std::clamp(c[i], 0.0, 1.0); };
        const auto byte = [&](std::size_t i) { return static_cast<T>(limited(i) * limited(3) * max); };
        pixel = {byte(0), byte(1), byte(2), static_cast<T>(limited(3) * max)};
    } else {
        const auto component = [&c](std::size_t i) { return static_cast<T>(c[i] * c[3]); };
        pixel = {component(0), component(1), component(2), static_cast<T>(c[3])};
    }
    Color<T> color;
    pixelops::store<4, bgra>(color.data(), pixel);
    return color;
}

// Weights: bytes mix in units of 1/65536, floats in 0..1.
template <class T>
using Weight = std::conditional_t<std::is_same_v<T, float>, float, std::uint32_t>;

template <class T>
constexpr Weight<T> kWhole = std::is_same_v<T, float> ? 1 : 65536;

template <class T>
Weight<T> weightOf(double towards, double blend) {
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(towards) * static_cast<float>(0.5 / blend);
    } else {
        return static_cast<std::uint32_t>(towards * 32768 / blend + 0.5);
    }
}

template <class T>
void blendRow(const Color<T>& a, const Color<T>& b, const Weight<T>* ofA, const Weight<T>* ofB, T* to,
              std::size_t pixels) {
    if constexpr (std::is_same_v<T, float>) {
        checkerboard::blendFloatRow(a.data(), b.data(), ofA, ofB, to, pixels);
    } else {
        checkerboard::blendByteRow(a.data(), b.data(), ofA, ofB, to, pixels);
    }
}

template <class T>
Color<T> mix(const Color<T>& own, const Color<T>& other, Weight<T> otherWeight) {
    const Weight<T> ownWeight = kWhole<T> - otherWeight;
    Color<T> result;
    blendRow(own, other, &ownWeight, &otherWeight, result.data(), 1);
    return result;
}

// What the columns of a row take of the row's two colours, when the first tile of the grid has the first one.
template <class T>
struct Columns {
    std::vector<Weight<T>> ofA, ofB;
};

// Walks the tiles of one line, from left to right, for so many pixels from the first on.
template <class T>
Columns<T> columns(const checkerboard::Axis& axis, int first, int count) {
    const auto edge = [&axis](std::int64_t index) { return static_cast<double>(index) * axis.tile; };
    const auto size = static_cast<std::size_t>(count);
    Columns<T> result{std::vector<Weight<T>>(size), std::vector<Weight<T>>(size)};
    std::int64_t tile = tileAt(axis.origin, axis.tile);
    for (std::size_t i = 0; i < size; ++i) {
        const double position = axis.origin + (first + static_cast<double>(i));
        // Tiles that lie wholly behind are passed at once, however many fit into a pixel.
        tile = std::max(tile, tileAt(position - axis.blend, axis.tile));
        while (position >= edge(tile) + axis.blend && position >= edge(tile + 1) - axis.blend) ++tile;
        const double start = edge(tile) + axis.blend;
        const Weight<T> other = position < start ? weightOf<T>(start - position, axis.blend) : 0;
        const Weight<T> own = kWhole<T> - other;
        result.ofA[i] = tile % 2 == 0 ? own : other;
        result.ofB[i] = tile % 2 == 0 ? other : own;
    }
    return result;
}

} // namespace

checkerboard::Grid checkerboard::grid(const checkerboardValues& v, int width, int height, double pixelAspect) {
    const double w = width, h = height, leastWidth = 1 / pixelAspect;
    double tileWidth = v.tileWidth * w;
    double tileHeight = v.square ? tileWidth * pixelAspect : v.tileHeight * h;
    if (leastWidth > tileWidth) {
        tileHeight = tileHeight * leastWidth / tileWidth;
        tileWidth = leastWidth;
    }
    if (tileHeight < 1) {
        tileWidth /= tileHeight;
        tileHeight = 1;
    }
    // Not every host links the two amounts, so the lock counts here as well.
    const double blendVertical = v.proportional ? v.blendHorizontal : v.blendVertical;
    return {{tileWidth, std::max(0.5, v.blendHorizontal * tileWidth * 0.5), 0.5 - v.offsetX * w},
            {tileHeight, std::max(0.5, blendVertical * tileHeight * 0.5), 0.5 - v.offsetY * h}};
}

// --- Processors ---

// The grid begins anew in every band: the geometry is that of the rectangle which one call is given.
template <class T, int N, int max, int bgra>
void checkerboardProcessor<T, N, max, bgra>::processWindow(const OFX::RectI& band) {
    const checkerboard::Grid grid =
        checkerboard::grid(values, OFX::width(band), OFX::height(band), destination->pixelAspect());
    const auto color1 = premultiplied<T, max, bgra>(values.color1), color2 = premultiplied<T, max, bgra>(values.color2);
    const OFX::RectI area = OFX::intersection(band, destination->bounds()); // may be a small part of the band
    if (OFX::empty(area)) return;
    const auto weights = columns<T>(grid.x, area.x1 - band.x1, OFX::width(area));

    using Row = std::vector<T>;
    const auto paint = [&](Row& row, const Color<T>& a, const Color<T>& b) {
        const std::size_t pixels = weights.ofA.size();
        row.resize(pixels * 4);
        blendRow<T>(a, b, weights.ofA.data(), weights.ofB.data(), row.data(), pixels);
        if constexpr (N == 1) {
            for (std::size_t i = 0; i < pixels; ++i) row[i] = row[4 * i + 3];
        }
    };

    Row pure[2], blended;
    OFX::generateRows<T>(band, *destination, abort(), [&](int y, int, T* to, int count) {
        const Place place = placeOfRow(grid.y, grid.y.origin + (band.y2 - 1 - y));
        const bool odd = place.tile % 2 != 0;
        Row& row = place.towards > 0 ? blended : pure[odd];
        if (place.towards > 0 || row.empty()) {
            const Weight<T> w = weightOf<T>(place.towards, grid.y.blend);
            const auto a = mix<T>(color1, color2, w), b = mix<T>(color2, color1, w);
            paint(row, odd ? b : a, odd ? a : b);
        }
        pixelops::copyRow(row.data(), to, static_cast<std::size_t>(count) * N * sizeof(T));
    });
}

void checkerboardOpenCLProcessor::process() {
    const auto [x, y] = checkerboard::grid(values, width(), height(), destination->pixelAspect());
    const auto pair = [](double a, double b) { return cl_float2{{static_cast<float>(a), static_cast<float>(b)}}; };
    // Byte images take the CPU's whole codes, so that the device need not truncate.
    const auto color = [this](const OFX::RGBA& straight) {
        if (destination->format().depth == OFX::Depth::Byte) {
            const auto [r, g, b, a] = premultiplied<std::uint8_t, 255, 0>(straight);
            return cl_float4{{r / 255.0f, g / 255.0f, b / 255.0f, a / 255.0f}};
        }
        const auto [r, g, b, a] = premultiplied<float, 1, 0>(straight);
        return cl_float4{{r, g, b, a}};
    };
    kernel()
        .arg(device(destination))
        .arg(cl_int2{{width(), height()}})
        .arg(pair(x.tile, y.tile))
        .arg(pair(x.blend, y.blend))
        .arg(pair(0.5 / x.blend, 0.5 / y.blend))
        .arg(pair(0.5 - x.origin, 0.5 - y.origin))
        .arg(color(values.color2))
        .arg(color(values.color1))
        .run(width(), height());
}

// --- The plug-in ---

static OpenCL::Program kernelProgram(kernels::checkerboard, {"k273207df0"});

constinit const OFX::EffectTraits checkerboardPlugin::traits = {
    .label = "Orvix Checkerboard",
    .contexts = OFX::kGenerator,
    .params = kParams,
    .program = &kernelProgram,
    .helpContext = 1240,
    .upliftGuid = "{DB10DAB1-5247-4194-B666-E076AD51BE19}",
    .childrenOnPage = false,
};

void checkerboardPlugin::changedParam(const OFX::ChangeArguments&, const char*) { linkParams(); }

void checkerboardPlugin::linkParams() {
    const bool square = param<&Values::square>().on(), proportional = param<&Values::proportional>().on();
    param<&Values::tileHeight>().follow(param<&Values::tileWidth>(), square);
    param<&Values::blendVertical>().follow(param<&Values::blendHorizontal>(), proportional);
}

bool checkerboardPlugin::keyframeUplift(const OFX::UpliftArguments& arguments) {
    if (arguments.record.size() != sizeof(LegacyRecord)) {
        OFX::log(OFX::LogLevel::Error, "A legacy record of %d bytes is not one of this effect.",
                 static_cast<int>(arguments.record.size()));
        return false;
    }
    static_assert(std::endian::native == std::endian::little, "the record's numbers are little-endian");
    LegacyRecord record;
    std::memcpy(&record, arguments.record.data(), sizeof record);
    const auto color = [](const float(&c)[4]) { return OFX::RGBA{c[0], c[1], c[2], c[3]}; };
    param<&Values::square>().setNumber(record.square != 0);
    param<&Values::proportional>().setNumber(record.proportional != 0);
    param<&Values::tileWidth>().setNumber(record.tileWidth);
    param<&Values::tileHeight>().setNumber(record.tileHeight);
    param<&Values::blendHorizontal>().setNumber(record.blendHorizontal);
    param<&Values::blendVertical>().setNumber(record.blendVertical);
    param<&Values::offsetX>().setNumber(record.offsetX);
    param<&Values::offsetY>().setNumber(record.offsetY);
    param<&Values::color1>().setNumbers(color(record.color1));
    param<&Values::color2>().setNumbers(color(record.color2));
    linkParams();
    return true;
}

OFX_EFFECT(checkerboard)
