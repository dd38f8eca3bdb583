// YUV frames through the bundle's exports, against the reference.
#include <algorithm>

#include "tests/pixelops.h"

namespace test {
namespace {

using Size = std::pair<int, int>;
// Rows shorter than vectors, odd ones, and ones that are longer than a block.
const std::vector<Size> kSizes = {{1, 1}, {2, 2}, {3, 2}, {7, 5}, {64, 3}, {201, 3}, {1925, 3}};

class YuvFormats : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(All, YuvFormats, testing::ValuesIn(kYuvFormats), [](const auto& test) { return test.param; });

TEST_P(YuvFormats, TakePixelsAsTheMatrixSays) {
    EXPORTED(KrYUV_RGBToYUV);
    Random random(7);
    for (const auto& [width, height] : kSizes)
        for (int matrix = 0; matrix < 6; ++matrix) {
            SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(matrix));
            const auto pixels = randomPixels(random, static_cast<std::size_t>(width * height));
            YuvFrame frame(GetParam(), width, height, matrix % 2 == 1);
            const auto planes = frame.tops();
            ASSERT_EQ(
                KrYUV_RGBToYUV(planes.data(), frame.pitches(), pixels.data(), 4 * width, static_cast<unsigned>(width),
                               static_cast<unsigned>(height), fourcc(GetParam()), static_cast<unsigned>(matrix)),
                KR_OK);
            ASSERT_TRUE(codesMatch(frame, matrix, pixels, 0.002));
        }
}

TEST_P(YuvFormats, GivePixelsAsTheMatrixSays) {
    EXPORTED(KrYUV_YUVToRGB);
    Random random(8);
    for (const auto& [width, height] : kSizes)
        for (int matrix = 0; matrix < 6; ++matrix) {
            SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(matrix));
            YuvFrame frame(GetParam(), width, height, matrix % 2 == 1);
            frame.fill(random);
            const auto planes = std::as_const(frame).tops();
            // From the bottom, with gaps of three pixels.
            const int pitch = width + 3;
            const KRRGBA untouched = {1, 2, 3, 4};
            std::vector<KRRGBA> memory(static_cast<std::size_t>(pitch * height), untouched), pixels;
            ASSERT_EQ(KrYUV_YUVToRGB(memory.data() + pitch * (height - 1), -4 * pitch, planes.data(), frame.pitches(),
                                     static_cast<unsigned>(width), static_cast<unsigned>(height), fourcc(GetParam()),
                                     static_cast<unsigned>(matrix)),
                      KR_OK);
            for (int y = height - 1; y >= 0; --y) {
                const auto row = memory.begin() + y * pitch;
                pixels.insert(pixels.end(), row, row + width);
                EXPECT_TRUE(std::all_of(row + width, row + pitch, [&](const auto& p) { return same(p, untouched); }));
            }
            ASSERT_TRUE(pixelsMatch(frame, matrix, pixels, width, 1.0 / 16));
        }
}

TEST_P(YuvFormats, KeepColoursOverARoundTrip) {
    EXPORTED(KrYUV_RGBToYUV);
    EXPORTED(KrYUV_YUVToRGB);
    Random random(9);
    for (int i = 0; i < 2000; ++i) {
        const KRRGBA color = randomPixels(random, 1)[0];
        const std::vector<KRRGBA> pixels(4, color);
        std::vector<KRRGBA> back(4);
        YuvFrame frame(GetParam(), 2, 2, false);
        const auto planes = frame.tops();
        const auto matrix = static_cast<unsigned>(i % 6);
        KrYUV_RGBToYUV(planes.data(), frame.pitches(), pixels.data(), 8, 2, 2, fourcc(GetParam()), matrix);
        KrYUV_YUVToRGB(back.data(), 8, std::as_const(frame).tops().data(), frame.pitches(), 2, 2, fourcc(GetParam()),
                       matrix);
        const int tolerance = frame.bits() == 10 ? 1 : 2;
        for (const KRRGBA& pixel : back) {
            ASSERT_NEAR(pixel.red, color.red, tolerance);
            ASSERT_NEAR(pixel.green, color.green, tolerance);
            ASSERT_NEAR(pixel.blue, color.blue, tolerance);
        }
    }
}

TEST(Yuv, RefusesWhatMakesNoSenseAndWritesNothing) {
    EXPORTED(KrYUV_RGBToYUV);
    EXPORTED(KrYUV_YUVToRGB);
    const KRRGBA before = {1, 2, 3, 4};
    std::vector<KRRGBA> pixels(6, before);
    struct {
        const char* what;
        const char* format;
        std::uint32_t width, height, matrix;
        std::int32_t pitch, chromaPitch, pixelPitch;
        bool noPixels, noPlanes, noPitches, noSecondPlane, fails;
    } const cases[] = {
        {"right", "NV12", 3, 2, 0, 3, 4, 12, false, false, false, false, false},
        {"no width", "NV12", 0, 2, 0, 3, 4, 12, false, false, false, false, true},
        {"no height", "NV12", 3, 0, 0, 3, 4, 12, false, false, false, false, true},
        {"huge width", "NV12", 0xFFFFFFFFu, 2, 0, 3, 4, 12, false, false, false, false, true},
        {"unknown matrix", "NV12", 3, 2, 6, 3, 4, 12, false, false, false, false, true},
        {"unknown format", "nv12", 3, 2, 0, 3, 4, 12, false, false, false, false, true},
        {"no layout", "PL10", 3, 2, 0, 30, 30, 12, false, false, false, false, true},
        {"no layout", "A410", 3, 2, 0, 30, 30, 12, false, false, false, false, true},
        {"rows overlap", "NV12", 3, 2, 0, 2, 4, 12, false, false, false, false, true},
        {"chroma rows overlap", "NV12", 3, 2, 0, 3, -3, 12, false, false, false, false, true},
        {"pixel rows overlap", "NV12", 3, 2, 0, 3, 4, 11, false, false, false, false, true},
        {"no pixels", "NV12", 3, 2, 0, 3, 4, 12, true, false, false, false, true},
        {"no planes", "NV12", 3, 2, 0, 3, 4, 12, false, true, false, false, true},
        {"no pitches", "NV12", 3, 2, 0, 3, 4, 12, false, false, true, false, true},
        {"no second plane", "NV12", 3, 2, 0, 3, 4, 12, false, false, false, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<std::uint8_t> luma(6, 9), chroma(8, 9);
        void* const planes[3] = {luma.data(), c.noSecondPlane ? nullptr : chroma.data(), nullptr};
        const void* const constPlanes[3] = {planes[0], planes[1], nullptr};
        const std::int32_t pitches[3] = {c.pitch, c.chromaPitch, 0};
        std::ranges::fill(pixels, before);
        const auto toRgb =
            KrYUV_YUVToRGB(c.noPixels ? nullptr : pixels.data(), c.pixelPitch, c.noPlanes ? nullptr : constPlanes,
                           c.noPitches ? nullptr : pitches, c.width, c.height, fourcc(c.format), c.matrix);
        EXPECT_EQ(toRgb, c.fails ? KR_FAILED : KR_OK);
        EXPECT_EQ(std::ranges::all_of(pixels, [&](const auto& p) { return same(p, before); }), c.fails);
        const auto toYuv = KrYUV_RGBToYUV(c.noPlanes ? nullptr : planes, c.noPitches ? nullptr : pitches,
                                          c.noPixels ? nullptr : pixels.data(), c.pixelPitch, c.width, c.height,
                                          fourcc(c.format), c.matrix);
        EXPECT_EQ(toYuv, c.fails ? KR_FAILED : KR_OK);
        EXPECT_EQ(std::ranges::count(luma, 9) == 6, c.fails);
    }
}

TEST(Yuv422Planar, ChoosesTheMatrixByCodeOrSize) {
    EXPORTED(KrYUV422PlanarToRGBA);
    EXPORTED(KrYUV_YUVToRGB);
    struct {
        std::uint32_t code;
        int width, height;
        unsigned matrix;
    } const cases[] = {{515, 64, 720, 0}, {516, 720, 4, 1}, {517, 720, 4, 2}, {0, 720, 576, 0}, {514, 704, 4, 0},
                       {518, 703, 4, 1},  {0, 721, 4, 1},   {0, 712, 720, 1}, {0, 712, 719, 0}, {0, 1280, 720, 1}};
    Random random(11);
    for (const auto& c : cases) {
        YuvFrame frame("YV16", c.width, c.height, false);
        frame.fill(random);
        const auto planes = std::as_const(frame).tops();
        const std::int32_t* pitches = frame.pitches();
        const auto width = static_cast<unsigned>(c.width), height = static_cast<unsigned>(c.height);
        std::vector<KRRGBA> found(width * height), wanted(width * height);
        const auto at = [&](std::size_t i) { return static_cast<const std::uint8_t*>(planes[i]); };
        ASSERT_EQ(KrYUV422PlanarToRGBA(found.data(), 4 * c.width, width, height, at(0), pitches[0], at(2), pitches[2],
                                       at(1), pitches[1], c.code),
                  KR_OK);
        KrYUV_YUVToRGB(wanted.data(), 4 * c.width, planes.data(), pitches, width, height, fourcc("YV16"), c.matrix);
        EXPECT_TRUE(std::ranges::equal(found, wanted, same)) << c.code << " " << c.width << "x" << c.height;
    }
    std::vector<KRRGBA> pixel(1);
    EXPECT_EQ(KrYUV422PlanarToRGBA(pixel.data(), 4, 1, 1, nullptr, 1, nullptr, 1, nullptr, 1, 515), KR_FAILED);
}

} // namespace
} // namespace test
