// The checkerboard's pixels: worked out by hand, and by a slow painter that follows the definition pixel by pixel; the
// grid's restarts.
#include <cmath>
#include <limits>

#include "tests/support.h"

namespace {

using namespace test;

// ---- a painter that goes by the definition

struct Board {
    double width = 0.1, height = 0.1;
    bool square = true;
    double horizontal = 0, vertical = 0;
    bool proportional = true;
    Pixel color1{0, 0, 0, 1}, color2{1, 1, 1, 1};
    double offsetX = 0, offsetY = 0;

    Settings settings() const {
        Settings all = {{"Color1", {color1.begin(), color1.end()}}, {"Color2", {color2.begin(), color2.end()}}};
        all["TileDimensionsWidth"] = {width}, all["TileDimensionsHeight"] = {height};
        all["TileDimensionsSquare"] = {square * 1.0}, all["EdgeBlendingProportional"] = {proportional * 1.0};
        all["EdgeBlendingHorizontal"] = {horizontal}, all["EdgeBlendingVertical"] = {vertical};
        all["GridOffsetX"] = {offsetX}, all["GridOffsetY"] = {offsetY};
        return all;
    }
};

long tileAt(double position, double tile) {
    long index = static_cast<long>(std::floor(position / tile));
    if (static_cast<double>(index) * tile > position) --index; // the quotient was rounded up
    return index;
}

bool isOdd(long index) { return index % 2 != 0; }

// The colour on the way from one to the other, `distance` of 2 `half` along; bytes count the way in 65536 steps.
Pixel mixed(const Pixel& one, const Pixel& other, double distance, double half, bool bytes) {
    Pixel result;
    if (bytes) {
        const double t = std::trunc(distance * 32768 / half + 0.5);
        for (std::size_t i = 0; i < 4; ++i) result[i] = std::trunc((one[i] * (65536 - t) + other[i] * t) / 65536);
    } else {
        const double t = distance * (0.5 / half);
        for (std::size_t i = 0; i < 4; ++i) result[i] = one[i] * (1 - t) + other[i] * t;
    }
    return result;
}

// The pixels of a w x h window, the lowest row first.
std::vector<Pixel> paint(const Board& board, int w, int h, double aspect, bool bytes) {
    const auto premultiplied = [bytes](Pixel c) {
        for (std::size_t i = 0; i < 3; ++i) c[i] *= c[3];
        if (bytes)
            for (double& component : c) component = std::trunc(component * 255);
        return c;
    };
    const Pixel first = premultiplied(board.color1), second = premultiplied(board.color2);
    double tw = board.width * w, th = board.square ? tw * aspect : board.height * h;
    if (1 / aspect > tw) th = th * (1 / aspect) / tw, tw = 1 / aspect;
    if (th < 1) tw = tw / th, th = 1;
    const double bx = std::max(0.5, board.horizontal * tw * 0.5);
    const double by = std::max(0.5, (board.proportional ? board.horizontal : board.vertical) * th * 0.5);

    std::vector<Pixel> pixels;
    for (int j = 0; j < h; ++j) {
        const double y = (h - 1 - j) + 0.5 - board.offsetY * h;
        const long ty = tileAt(y, th);
        const double start = static_cast<double>(ty) * th + by, end = static_cast<double>(ty + 1) * th - by;
        Pixel a = first, b = second;
        if (y < start || y >= end) {
            const double distance = y < start ? start - y : y - end;
            a = mixed(first, second, distance, by, bytes);
            b = mixed(second, first, distance, by, bytes);
        }
        const auto x = [&](int i) { return 0.5 - board.offsetX * w + i; };
        int i = 0;
        for (long tx = tileAt(x(0), tw); i < w; ++tx) {
            const Pixel &own = isOdd(tx + ty) ? b : a, &other = isOdd(tx + ty) ? a : b;
            const double soft = static_cast<double>(tx) * tw + bx, next = static_cast<double>(tx + 1) * tw - bx;
            for (; i < w && x(i) < soft; ++i) pixels.push_back(mixed(own, other, soft - x(i), bx, bytes));
            for (; i < w && x(i) < next; ++i) pixels.push_back(own);
        }
    }
    return pixels;
}

// Bytes are exact. Floats: two mixes of colours up to 1, with the weights and the four products and sums in single
// precision, which is off by less than ten halves of 2^-23 in all.
constexpr double kFloatTolerance = 6e-7;

testing::AssertionResult isBoard(const Image& image, const Board& board, OfxRectI window, OfxRectI area) {
    const bool bytes = image.format().depth == Depth::Byte;
    const int w = window.x2 - window.x1;
    const auto pixels = paint(board, w, window.y2 - window.y1, image.pixelAspect, bytes);
    return matches(image, area, [&](int x, int y) {
        return Expected{pixels[static_cast<std::size_t>((y - window.y1) * w + x - window.x1)],
                        bytes ? 0 : kFloatTolerance};
    });
}

Board anyBoard(Random& random) {
    const auto share = [&] { return random.pick({0.0, 1.0, 0.5, random.real(0, 1), random.real(0, 0.2)}); };
    const auto color = [&] {
        return Pixel{share(), share(), share(), random.pick({0.0, 1.0, 1.0, random.real(0, 1)})};
    };
    Board board;
    board.width = std::max(0.001, share());
    board.height = std::max(0.001, share());
    board.square = random.integer(0, 1);
    board.horizontal = share();
    board.vertical = share();
    board.proportional = random.integer(0, 1);
    board.color1 = color();
    board.color2 = color();
    board.offsetX = share();
    board.offsetY = share();
    return board;
}

// ---- by hand

std::shared_ptr<Image> painted(const Settings& settings, OfxRectI bounds, Format format = kBytes) {
    Session session(oneThread());
    return rendered(*session.make(kCheckerboard, settings), format, bounds);
}

// The reds of a row from the left; rows count from the top.
std::vector<int> reds(const Image& image, int fromTop) {
    std::vector<int> row;
    for (int x = image.bounds().x1; x < image.bounds().x2; ++x)
        row.push_back(static_cast<int>(pixelAt(image, x, image.bounds().y2 - 1 - fromTop)[0]));
    return row;
}

using Row = std::vector<int>;

TEST(Checkerboard, HasHardEdgesByDefaultWithTheFirstColorTopLeft) {
    const auto image = painted({}, {0, 0, 1920, 1080});
    EXPECT_TRUE(matches(*image, image->bounds(), [](int x, int y) {
        const double white = (x / 192 + (1079 - y) / 192) % 2 * 255;
        return Expected{{white, white, white, 255}};
    }));
}

TEST(Checkerboard, WidensTilesToOnePixelAndKeepsTheirRatio) {
    const auto square = painted({{"TileDimensionsWidth", {0.001}}}, {0, 0, 6, 4});
    EXPECT_EQ(reds(*square, 0), (Row{0, 255, 0, 255, 0, 255}));
    EXPECT_EQ(reds(*square, 1), (Row{255, 0, 255, 0, 255, 0}));
    // 0.5 of 8 rows, ten times as high once the tiles are ten times as wide.
    const auto tall =
        painted({{"TileDimensionsSquare", {0}}, {"TileDimensionsWidth", {0.01}}, {"TileDimensionsHeight", {0.5}}},
                {0, 0, 10, 8});
    for (int row = 0; row < 8; ++row) EXPECT_EQ(reds(*tall, row), (Row{0, 255, 0, 255, 0, 255, 0, 255, 0, 255}));
    // 0.01 of 10 rows is a tenth of a row: ten times as wide, 20 columns.
    const auto flat =
        painted({{"TileDimensionsSquare", {0}}, {"TileDimensionsWidth", {0.25}}, {"TileDimensionsHeight", {0.01}}},
                {0, 0, 8, 10});
    EXPECT_EQ(reds(*flat, 0), Row(8, 0));
    EXPECT_EQ(reds(*flat, 1), Row(8, 255));
}

TEST(Checkerboard, BlendsLinearlyAndMeetsHalfwayOnTheBoundary) {
    // Tiles of 10: weights of (5 - 0.5 - i) / 10, truncated after a weight in units of 1/65536.
    const auto whole =
        painted({{"TileDimensionsWidth", {0.5}}, {"EdgeBlendingHorizontal", {1}}, {"EdgeBlendingProportional", {0}}},
                {0, 0, 20, 1});
    const Row dark = {114, 89, 63, 38, 12, 12, 38, 63, 89, 114},
              bright = {140, 165, 191, 216, 242, 242, 216, 191, 165, 140};
    EXPECT_EQ(reds(*whole, 0), [&] {
        Row both = dark;
        both.insert(both.end(), bright.begin(), bright.end());
        return both;
    }());
    // Tiles of 1.5: the second pixel lies on the boundary, in both directions.
    const auto small = painted({{"TileDimensionsWidth", {0.5}}}, {0, 0, 3, 3});
    EXPECT_EQ(reds(*small, 0), (Row{0, 127, 255}));
    EXPECT_EQ(reds(*small, 1), (Row{127, 127, 127}));
    EXPECT_EQ(reds(*small, 2), (Row{255, 127, 0}));
}

TEST(Checkerboard, MovesRightAndDownwardsByTheOffset) {
    const Settings moved = {{"TileDimensionsWidth", {0.5}}, {"GridOffsetX", {0.25}}, {"GridOffsetY", {0.125}}};
    const auto image = painted(moved, {0, 0, 8, 8});
    EXPECT_EQ(reds(*image, 0), (Row{0, 0, 255, 255, 255, 255, 0, 0}));
    EXPECT_EQ(reds(*image, 1), (Row{255, 255, 0, 0, 0, 0, 255, 255}));
}

TEST(Checkerboard, TruncatesPremultipliedColors) {
    const Settings colors = {
        {"Color1", {1, 0.5, 0.2, 0}}, {"Color2", {1, 0.5, 0.999, 0.5}}, {"TileDimensionsWidth", {0.5}}};
    const auto bytes = painted(colors, {0, 0, 4, 2});
    EXPECT_EQ(pixelAt(*bytes, 0, 1), (Pixel{0, 0, 0, 0})) << "alpha 0 leaves nothing";
    EXPECT_EQ(pixelAt(*bytes, 3, 1), (Pixel{127, 63, 127, 127})) << "127.5, 63.75, 127.37";
    const auto floats = painted(colors, {0, 0, 4, 2}, kFloats);
    EXPECT_EQ(pixelAt(*floats, 3, 1), (Pixel{0.5, 0.25, static_cast<double>(0.4995f), 0.5}));
    const auto bgra = painted(colors, {0, 0, 4, 2}, kBytesBGRA);
    EXPECT_EQ(std::to_integer<int>(bgra->row(1)[12]), 127);
    EXPECT_EQ(std::to_integer<int>(bgra->row(1)[13]), 63);
}

TEST(Checkerboard, LimitsBytesToTheirRangeAndFloatsNot) {
    const Settings colors = {{"Color1", {2, -1, 0.5, 1}}, {"Color2", {1, 1, 1, 3}}, {"TileDimensionsWidth", {0.5}}};
    const auto bytes = painted(colors, {0, 0, 4, 2});
    EXPECT_EQ(pixelAt(*bytes, 0, 1), (Pixel{255, 0, 127, 255}));
    EXPECT_EQ(pixelAt(*bytes, 3, 1), (Pixel{255, 255, 255, 255}));
    const auto floats = painted(colors, {0, 0, 4, 2}, kFloats);
    EXPECT_EQ(pixelAt(*floats, 0, 1), (Pixel{2, -1, 0.5, 1}));
    EXPECT_EQ(pixelAt(*floats, 3, 1), (Pixel{3, 3, 3, 3}));
}

// ---- against the painter

TEST(Checkerboard, IsWhatTheDefinitionPaints) {
    Session session(oneThread());
    Random random(31);
    for (int i = 0; i < 1000; ++i) {
        const Board board = anyBoard(random);
        const OfxRectI bounds = {0, 0, random.integer(1, 70), random.integer(1, 40)};
        const auto instance = session.make(kCheckerboard, board.settings());
        const auto image = blank(random.pick({kBytes, kFloats, kBytesBGRA, kFloatsBGRA}), bounds, {.guardBytes = 64});
        image->pixelAspect = random.pick({1.0, 1.0, 2.0, 0.5, 8.0 / 9, 3.7, random.real(0.1, 5)});
        ASSERT_EQ(render(*instance, image, bounds), kOfxStatOK);
        ASSERT_TRUE(isBoard(*image, board, bounds, bounds)) << "board " << i << ", aspect " << image->pixelAspect;
        ASSERT_TRUE(image->guardsIntact());
    }
}

TEST(Checkerboard, TakesItsGeometryFromTheWindowEvenWhereTheImageIsSmaller) {
    Session session(oneThread());
    Random random(32);
    for (int i = 0; i < 300; ++i) {
        const Board board = anyBoard(random);
        const OfxRectI bounds = {-7, -5, 30, 20};
        const int x1 = random.integer(-20, 25), y1 = random.integer(-20, 15);
        const OfxRectI window = {x1, y1, x1 + random.integer(1, 60), y1 + random.integer(1, 50)};
        const OfxRectI area = {std::max(window.x1, bounds.x1), std::max(window.y1, bounds.y1),
                               std::min(window.x2, bounds.x2), std::min(window.y2, bounds.y2)};
        const auto instance = session.make(kCheckerboard, board.settings());
        const auto image = blank(random.pick({kBytes, kFloats}), bounds, {.guardBytes = 64});
        ASSERT_EQ(render(*instance, image, window), kOfxStatOK);
        ASSERT_TRUE(isBoard(*image, board, window, area)) << "board " << i;
        ASSERT_TRUE(untouchedOutside(*image, window)) << "board " << i;
    }
}

TEST(Checkerboard, StartsAnewInEveryBand) {
    Random random(33);
    for (unsigned threads = 2; threads <= 7; ++threads) {
        host::Options options;
        options.threads = threads;
        Session session(options);
        for (int i = 0; i < 20; ++i) {
            const Board board = anyBoard(random);
            const OfxRectI bounds = {0, -3, random.integer(1, 40), random.integer(0, 40)};
            const auto image =
                rendered(*session.make(kCheckerboard, board.settings()), random.pick({kBytes, kFloats}), bounds);
            const unsigned rows = static_cast<unsigned>(bounds.y2 - bounds.y1);
            for (unsigned k = 0; k < threads; ++k) {
                const OfxRectI band = {bounds.x1, bounds.y1 + static_cast<int>(k * rows / threads), bounds.x2,
                                       bounds.y1 + static_cast<int>((k + 1) * rows / threads)};
                ASSERT_TRUE(isBoard(*image, board, band, band)) << "band " << k << " of " << threads;
            }
        }
    }
}

TEST(Checkerboard, HasSquarePixelsWhereTheHostTellsNonsense) {
    Board board;
    board.width = 0.3;
    for (const double aspect : {0.0, -2.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        host::Options options = oneThread();
        options.onImage = [aspect](host::PropertySet& image) { image.set(kOfxImagePropPixelAspectRatio, aspect); };
        Session session(options);
        const OfxRectI bounds = {0, 0, 20, 10};
        EXPECT_TRUE(
            isBoard(*rendered(*session.make(kCheckerboard, board.settings()), kBytes, bounds), board, bounds, bounds))
            << aspect;
    }
}

} // namespace
