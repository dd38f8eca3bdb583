// The pixel library's OpenCL modules through the bundle's exports, on the first device that takes images; skipped where
// there is none.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <future>

#include "tests/device_pictures.h"

namespace test {
namespace {

EXPORTED(DibCopy_OpenCL_Initialize);
EXPORTED(DibCopy_OpenCL_Shutdown);
EXPORTED(DibInterlace_OpenCL_Initialize);
EXPORTED(DibInterlace_OpenCL_Shutdown);
EXPORTED(DibComposite_OpenCL_Initialize);
EXPORTED(DibComposite_OpenCL_Shutdown);
EXPORTED(VidHelp_OpenCL_Initialize);
EXPORTED(VidHelp_OpenCL_Shutdown);
EXPORTED(YUV_OpenCL_Initialize);
EXPORTED(YUV_OpenCL_Shutdown);
EXPORTED(KrDibCopyOCL);
EXPORTED(KrDibCopyInterlaceOCL);
EXPORTED(KrDibCompositeOCL);
EXPORTED(KrVidHelpOCL);
EXPORTED(KrYUV_YUVToRGB_OCL);
EXPORTED(KrYUV_RGBToYUV_OCL);

struct Module {
    decltype(::DibCopy_OpenCL_Initialize)* initialize;
    decltype(::DibCopy_OpenCL_Shutdown)* shutdown;
};
const Module kModules[] = {{DibCopy_OpenCL_Initialize, DibCopy_OpenCL_Shutdown},
                           {DibInterlace_OpenCL_Initialize, DibInterlace_OpenCL_Shutdown},
                           {DibComposite_OpenCL_Initialize, DibComposite_OpenCL_Shutdown},
                           {VidHelp_OpenCL_Initialize, VidHelp_OpenCL_Shutdown},
                           {YUV_OpenCL_Initialize, YUV_OpenCL_Shutdown}};

class PixelModules : public testing::Test {
protected:
    static void SetUpTestSuite() {
        const auto devices = host::openCLDevices();
        for (std::size_t i = 0; i < devices.size() && device_ == nullptr; ++i)
            if (devices[i].hasImages) device_ = std::make_unique<host::OpenCLDevice>(static_cast<int>(i));
        if (device_ == nullptr) return;
        table_ = &device_->api();
        for (const Module& module : kModules) ASSERT_EQ(module.initialize(&table_, compile), KR_OK);
    }
    static void TearDownTestSuite() {
        if (device_ == nullptr) return;
        for (const Module& module : kModules) module.shutdown();
        device_.reset();
    }
    void SetUp() override {
        if (device_ == nullptr) GTEST_SKIP() << "no OpenCL device on this machine";
    }

    static void* compile(const char* source, std::int32_t flag) {
        EXPECT_EQ(flag, 0);
        cl_program program = nullptr;
        EXPECT_EQ(device_->compile(source, &program), kOfxStatOK) << device_->buildLog();
        return program;
    }
    static OpenCLApi& api() { return *table_; }
    static cl_command_queue queue() { return device_->queue(); }

    static inline std::unique_ptr<host::OpenCLDevice> device_;
    static inline OpenCLApi* table_ = nullptr;
};

// Reads the image; every pixel is what the reference says. The reference answers a double for each channel.
template <class Reference>
testing::AssertionResult follows(DeviceImage& image, Reference reference) {
    image.read();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            for (std::size_t c = 0; c < 4; ++c) {
                const double wanted = reference(x, y, c), found = image.at(x, y)[c];
                if (!(std::abs(found - wanted) <= image.tolerance()))
                    return testing::AssertionFailure()
                           << x << ", " << y << " channel " << c << ": " << found << ", wanted " << wanted;
            }
    return testing::AssertionSuccess();
}

// ---- life

TEST_F(PixelModules, AreBuiltOnceAndReleased) {
    static constexpr auto fails = [](const char*, std::int32_t) -> void* { return nullptr; };
    static constexpr auto wrong = [](const char*, std::int32_t flag) -> void* {
        return compile("__kernel void other(int x) {}", flag);
    };
    DeviceImage image(*device_, kDeviceBytes, 4, 4), other(*device_, kDeviceBytes, 4, 4);
    for (const Module& module : kModules) {
        const auto works = [&] {
            const KRRECTF all = {0, 0, 4, 4};
            const cl_mem planes[3] = {};
            const std::int32_t pitches[3] = {8, 8, 8};
            // One operation of each module; YUV's has no buffers, and fails in any case.
            if (&module == &kModules[0]) return KrDibCopyOCL(image.memory, &all, other.memory, &all, 1, queue());
            if (&module == &kModules[1]) return KrDibCopyInterlaceOCL(image.memory, other.memory, 2, 0, queue());
            if (&module == &kModules[2])
                return KrDibCompositeOCL(image.memory, other.memory, other.memory, 0, 0, 1, queue());
            if (&module == &kModules[3]) return KrVidHelpOCL(image.memory, other.memory, 0, queue());
            return KrYUV_YUVToRGB_OCL(image.memory, planes, pitches, 4, 4, fourcc("YUYV"), 0, queue());
        };
        const bool yuv = &module == &kModules[4];
        EXPECT_EQ(module.initialize(&table_, compile), 1) << "built already";
        EXPECT_EQ(works(), yuv ? KR_FAILED : KR_OK);
        module.shutdown();
        EXPECT_EQ(works(), KR_FAILED);
        module.shutdown();

        EXPECT_EQ(module.initialize(&table_, nullptr), 1);
        EXPECT_EQ(module.initialize(&table_, fails), 1);
        OpenCLApi* none = nullptr;
        EXPECT_EQ(module.initialize(&none, compile), KR_FAILED);
        EXPECT_EQ(works(), KR_FAILED);
        EXPECT_EQ(module.initialize(&table_, wrong), KR_FAILED) << "a program without the kernels";
        EXPECT_EQ(works(), KR_FAILED);
        module.shutdown();
        EXPECT_EQ(module.initialize(&table_, compile), KR_OK);
        EXPECT_EQ(works(), yuv ? KR_FAILED : KR_OK);
    }
    api().clFinish(queue());
}

TEST_F(PixelModules, WaitForTheCallLockAndReportCallsThatFail) {
    DeviceImage image(*device_, kDeviceBytes, 4, 4), other(*device_, kDeviceBytes, 4, 4);
    const auto work = [&] { return KrVidHelpOCL(image.memory, other.memory, KR_PREMULTIPLY, queue()); };
    std::future<std::int32_t> result;
    {
        const std::lock_guard guard(*api().callLock);
        result = std::async(std::launch::async, work);
        EXPECT_EQ(result.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    }
    EXPECT_EQ(result.get(), KR_OK);

    const auto entries = api().entry;
    api().entry.clSetKernelArg = nullptr;
    EXPECT_EQ(work(), KR_FAILED);
    api().entry = entries;
    api().entry.clEnqueueNDRangeKernel = nullptr;
    EXPECT_EQ(work(), KR_FAILED);
    api().entry = entries;
    EXPECT_EQ(work(), KR_OK);
    api().clFinish(queue());
}

// ---- copying

TEST_F(PixelModules, CopyWithoutScalingIsAnImageCopy) {
    Random random(1);
    for (const auto format : {kDeviceBytes, kDeviceFloats}) {
        DeviceImage to(*device_, format, 23, 19), from(*device_, format, 31, 17);
        to.fill(random);
        from.fill(random);
        const auto before = to.pixels;
        const KRRECTF target = {2, 3, 22, 18}, source = {10.0004f, 2, 30.0004f, 17};
        const auto copies = api().copyCount, kernels = api().enqueueCount;
        EXPECT_EQ(KrDibCopyOCL(to.memory, &target, from.memory, &source, 1.0005f, queue()), KR_OK);
        EXPECT_EQ(api().copyCount, copies + 1);
        EXPECT_EQ(api().enqueueCount, kernels);
        EXPECT_TRUE(follows(to, [&](int x, int y, std::size_t c) {
            const bool inside = x >= 2 && x < 22 && y >= 3 && y < 18;
            return double{inside ? from.at(x + 8, y - 1)[c] : before[static_cast<std::size_t>(y * 23 + x)][c]};
        }));
        // The same to another format takes a kernel.
        DeviceImage other(*device_, kRedFirst, 23, 19);
        EXPECT_EQ(KrDibCopyOCL(other.memory, &target, from.memory, &source, 1, queue()), KR_OK);
        EXPECT_EQ(api().copyCount, copies + 1);
        EXPECT_EQ(api().enqueueCount, kernels + 1);
    }
}

TEST_F(PixelModules, CopyScalesBilinearly) {
    Random random(2);
    for (int i = 0; i < 40; ++i) {
        const auto format = random.pick({kDeviceBytes, kRedFirst, kDeviceFloats});
        DeviceImage to(*device_, format, 37, 29), from(*device_, kDeviceFloats, 24, 33);
        to.fill(random);
        from.fill(random);
        const auto before = to.pixels;
        const auto rect = [&](int width, int height) {
            const double x = random.real(0, width - 3), y = random.real(0, height - 3);
            return KRRECTF{static_cast<float>(x), static_cast<float>(y), static_cast<float>(random.real(x + 1, width)),
                           static_cast<float>(random.real(y + 1, height))};
        };
        const KRRECTF t = rect(37, 29), s = i % 4 == 0 ? KRRECTF{0, 0, 24, 33} : rect(24, 33);
        const float ratio = random.pick({1.0f, 1.0f, 0.5f, 2.0f, 1.3f});
        ASSERT_EQ(KrDibCopyOCL(to.memory, &t, from.memory, &s, ratio, queue()), KR_OK);
        const double sx = (double{s.x2} - s.x1) / (double{t.x2} - t.x1) / ratio;
        const double sy = (double{s.y2} - s.y1) / (double{t.y2} - t.y1) / ratio;
        // Within the rectangle's outermost pixels, or in the middle of what is less than a pixel.
        const auto limited = [](double v, double low, double high) {
            return high - low > 1 ? std::clamp(v, low + 0.5, high - 0.5) : (low + high) / 2;
        };
        int nearEdges = 0;
        const auto reference = [&](int x, int y, std::size_t c) -> double {
            const double cx = x + 0.5, cy = y + 0.5;
            if (cx < t.x1 || cx >= t.x2 || cy < t.y1 || cy >= t.y2)
                return before[static_cast<std::size_t>(y * 37 + x)][c];
            const double px = (double{s.x1} + s.x2) / 2 + (cx - (double{t.x1} + t.x2) / 2) * sx;
            const double py = (double{s.y1} + s.y2) / 2 + (cy - (double{t.y1} + t.y2) / 2) * sy;
            const auto close = [](double a, double b) { return std::abs(a - b) < 1e-4; };
            if (ratio < 1) {
                if (close(px, s.x1) || close(px, s.x2) || close(py, s.y1) || close(py, s.y2)) {
                    ++nearEdges; // where single precision may decide otherwise
                    return to.at(x, y)[c];
                }
                if (px < s.x1 || px >= s.x2 || py < s.y1 || py >= s.y2) return 0;
            }
            const double qx = limited(px, s.x1, s.x2) - 0.5, qy = limited(py, s.y1, s.y2) - 0.5;
            const int ix = static_cast<int>(std::floor(qx)), iy = static_cast<int>(std::floor(qy));
            const double fx = qx - ix, fy = qy - iy;
            return (from.at(ix, iy)[c] * (1 - fx) + from.at(ix + 1, iy)[c] * fx) * (1 - fy) +
                   (from.at(ix, iy + 1)[c] * (1 - fx) + from.at(ix + 1, iy + 1)[c] * fx) * fy;
        };
        EXPECT_TRUE(follows(to, reference)) << i;
        EXPECT_LT(nearEdges, 10);
    }
}

TEST_F(PixelModules, CopyRefusesWhatMakesNoSense) {
    DeviceImage to(*device_, kDeviceBytes, 8, 8), from(*device_, kDeviceBytes, 8, 8);
    const KRRECTF all = {0, 0, 8, 8};
    const auto fails = [&](cl_mem a, const KRRECTF* r, cl_mem b, const KRRECTF* s, float ratio, cl_command_queue q) {
        return KrDibCopyOCL(a, r, b, s, ratio, q) == KR_FAILED;
    };
    for (const KRRECTF& rect : {KRRECTF{-1, 0, 8, 8}, KRRECTF{0, 0, 8.5f, 8}, KRRECTF{4, 0, 4, 8}, KRRECTF{0, 5, 8, 4},
                                KRRECTF{0, 0, NAN, 8}}) {
        EXPECT_TRUE(fails(to.memory, &rect, from.memory, &all, 1, queue()));
        EXPECT_TRUE(fails(to.memory, &all, from.memory, &rect, 1, queue()));
    }
    for (const float ratio : {0.0f, -1.0f, NAN, INFINITY})
        EXPECT_TRUE(fails(to.memory, &all, from.memory, &all, ratio, queue()));
    EXPECT_TRUE(fails(nullptr, &all, from.memory, &all, 1, queue()));
    EXPECT_TRUE(fails(to.memory, nullptr, from.memory, &all, 1, queue()));
    EXPECT_TRUE(fails(to.memory, &all, from.memory, &all, 1, nullptr));
    EXPECT_TRUE(fails(to.memory, &all, to.memory, &all, 2, queue()));
}

// ---- fields

TEST_F(PixelModules, InterlaceWeavesExtractsCopiesAndDoubles) {
    Random random(3);
    for (const auto format : {kDeviceBytes, kDeviceFloats})
        for (const int height : {1, 2, 7, 8})
            for (const unsigned field : {0u, 1u}) {
                const int width = 9, parity = static_cast<int>(field), fieldRows = (height + 1 - parity) / 2;
                if (fieldRows == 0) continue;
                DeviceImage frame(*device_, format, width, height), frameTo(*device_, format, width, height);
                DeviceImage half(*device_, format, width, fieldRows), halfTo(*device_, format, width, fieldRows);
                frame.fill(random), half.fill(random), frameTo.fill(random);
                auto before = frameTo.pixels;
                const auto kept = [&](int x, int y, std::size_t c) {
                    return double{before[static_cast<std::size_t>(y * width + x)][c]};
                };
                ASSERT_EQ(KrDibCopyInterlaceOCL(frameTo.memory, half.memory, KR_FIELD_WEAVE, field, queue()), KR_OK);
                EXPECT_TRUE(follows(frameTo, [&](int x, int y, std::size_t c) {
                    return y % 2 == parity ? double{half.at(x, y / 2)[c]} : kept(x, y, c);
                }));
                ASSERT_EQ(KrDibCopyInterlaceOCL(halfTo.memory, frame.memory, KR_FIELD_EXTRACT, field, queue()), KR_OK);
                EXPECT_TRUE(follows(
                    halfTo, [&](int x, int y, std::size_t c) { return double{frame.at(x, 2 * y + parity)[c]}; }));
                before = frameTo.pixels;
                ASSERT_EQ(KrDibCopyInterlaceOCL(frameTo.memory, frame.memory, KR_FIELD_COPY, field, queue()), KR_OK);
                EXPECT_TRUE(follows(frameTo, [&](int x, int y, std::size_t c) {
                    return y % 2 == parity ? double{frame.at(x, y)[c]} : kept(x, y, c);
                }));
                ASSERT_EQ(KrDibCopyInterlaceOCL(frameTo.memory, frame.memory, KR_FIELD_DOUBLE, field, queue()), KR_OK);
                EXPECT_TRUE(follows(frameTo, [&](int x, int y, std::size_t c) -> double {
                    if (y % 2 == parity) return frame.at(x, y)[c];
                    const int above = y > 0 ? y - 1 : y + 1, below = y + 1 < height ? y + 1 : y - 1;
                    return (double{frame.at(x, above)[c]} + frame.at(x, below)[c]) / 2;
                }));
                EXPECT_EQ(KrDibCopyInterlaceOCL(frameTo.memory, frame.memory, 4, field, queue()), KR_FAILED);
                EXPECT_EQ(KrDibCopyInterlaceOCL(frameTo.memory, frame.memory, KR_FIELD_COPY, 2, queue()), KR_FAILED);
                EXPECT_EQ(KrDibCopyInterlaceOCL(frame.memory, frame.memory, KR_FIELD_COPY, field, queue()), KR_FAILED);
                DeviceImage wider(*device_, format, width + 1, fieldRows), higher(*device_, format, width, height + 2);
                EXPECT_EQ(KrDibCopyInterlaceOCL(frameTo.memory, wider.memory, KR_FIELD_WEAVE, field, queue()),
                          KR_FAILED);
                EXPECT_EQ(KrDibCopyInterlaceOCL(higher.memory, half.memory, KR_FIELD_WEAVE, field, queue()), KR_FAILED);
                EXPECT_EQ(KrDibCopyInterlaceOCL(higher.memory, frame.memory, KR_FIELD_DOUBLE, field, queue()),
                          KR_FAILED);
            }
}

// ---- compositing and helpers

TEST_F(PixelModules, CompositeIsPremultipliedOver) {
    Random random(4);
    const int origins[][2] = {{0, 0}, {5, 3}, {-4, -6}, {30, 2}, {INT_MIN, INT_MAX}, {INT_MAX, -1}};
    for (const auto& origin : origins)
        for (const float opacity : {1.0f, 0.0f, 0.37f, 5.0f, -1.0f}) {
            const auto format = random.pick({kDeviceBytes, kDeviceFloats});
            DeviceImage to(*device_, format, 33, 21), below(*device_, format, 33, 21), over(*device_, format, 12, 11);
            below.fill(random), over.fill(random);
            ASSERT_EQ(KrDibCompositeOCL(to.memory, below.memory, over.memory, origin[0], origin[1], opacity, queue()),
                      KR_OK);
            const double o = std::clamp(double{opacity}, 0.0, 1.0);
            EXPECT_TRUE(follows(to, [&](int x, int y, std::size_t c) -> double {
                const std::int64_t fx = std::int64_t{x} - origin[0], fy = std::int64_t{y} - origin[1];
                if (fx < 0 || fy < 0 || fx >= 12 || fy >= 11) return below.at(x, y)[c];
                const Color& front = over.at(static_cast<int>(fx), static_cast<int>(fy));
                return front[c] * o + below.at(x, y)[c] * (1 - front[3] * o);
            }));
        }
    DeviceImage a(*device_, kDeviceBytes, 8, 8), b(*device_, kDeviceBytes, 8, 8), c(*device_, kDeviceBytes, 8, 9);
    EXPECT_EQ(KrDibCompositeOCL(a.memory, b.memory, b.memory, 0, 0, NAN, queue()), KR_FAILED);
    EXPECT_EQ(KrDibCompositeOCL(a.memory, c.memory, b.memory, 0, 0, 1, queue()), KR_FAILED);
    EXPECT_EQ(KrDibCompositeOCL(a.memory, a.memory, b.memory, 0, 0, 1, queue()), KR_FAILED);
    EXPECT_EQ(KrDibCompositeOCL(a.memory, b.memory, nullptr, 0, 0, 1, queue()), KR_FAILED);
}

TEST_F(PixelModules, HelpersSwapAndPremultiply) {
    Random random(5);
    for (const auto format : {kDeviceBytes, kDeviceFloats}) {
        DeviceImage to(*device_, format, 19, 13), from(*device_, format, 19, 13), other(*device_, format, 13, 19);
        from.fill(random);
        ASSERT_EQ(KrVidHelpOCL(to.memory, from.memory, KR_SWAP_RED_BLUE, queue()), KR_OK);
        EXPECT_TRUE(follows(to, [&](int x, int y, std::size_t c) { return double{from.at(x, y)[c < 3 ? 2 - c : 3]}; }));
        ASSERT_EQ(KrVidHelpOCL(to.memory, from.memory, KR_PREMULTIPLY, queue()), KR_OK);
        EXPECT_TRUE(follows(to, [&](int x, int y, std::size_t c) {
            return double{from.at(x, y)[c]} * (c < 3 ? from.at(x, y)[3] : 1);
        }));
        ASSERT_EQ(KrVidHelpOCL(to.memory, from.memory, KR_UNPREMULTIPLY, queue()), KR_OK);
        EXPECT_TRUE(follows(to, [&](int x, int y, std::size_t c) -> double {
            const Color& color = from.at(x, y);
            return color[3] == 0 ? 0 : c < 3 ? double{color[c]} / color[3] : color[3];
        }));
        EXPECT_EQ(KrVidHelpOCL(to.memory, from.memory, 3, queue()), KR_FAILED);
        EXPECT_EQ(KrVidHelpOCL(other.memory, from.memory, KR_PREMULTIPLY, queue()), KR_FAILED);
        EXPECT_EQ(KrVidHelpOCL(to.memory, to.memory, KR_PREMULTIPLY, queue()), KR_FAILED);
    }
}

// ---- YUV

std::vector<KRRGBA> codesOf(const DeviceImage& image) {
    std::vector<KRRGBA> pixels;
    const auto code = [](float c) { return static_cast<std::uint8_t>(std::lround(c * 255)); };
    for (const Color& p : image.pixels) pixels.push_back({code(p[2]), code(p[1]), code(p[0]), code(p[3])});
    return pixels;
}

TEST_F(PixelModules, YuvFollowsTheMatrixBothWays) {
    Random random(6);
    for (const std::string& format : kYuvFormats)
        for (const auto& [width, height] : {std::pair(1, 1), std::pair(13, 7), std::pair(48, 2)})
            for (int matrix = 0; matrix < 6; ++matrix) {
                SCOPED_TRACE(format + " " + std::to_string(width) + " " + std::to_string(matrix));
                const auto w = static_cast<unsigned>(width), h = static_cast<unsigned>(height);
                DeviceImage image(*device_, matrix % 2 == 0 ? kDeviceBytes : kRedFirst, width, height);
                image.fill(random);
                YuvFrame frame(format, width, height, matrix % 2 == 1);
                DevicePlanes planes(*device_, frame);
                ASSERT_EQ(KrYUV_RGBToYUV_OCL(planes.planes.data(), frame.pitches(), image.memory, w, h, fourcc(format),
                                             static_cast<unsigned>(matrix), queue()),
                          KR_OK);
                planes.read();
                ASSERT_TRUE(codesMatch(frame, matrix, codesOf(image), 0.002));

                frame.fill(random);
                DevicePlanes filled(*device_, frame);
                ASSERT_EQ(KrYUV_YUVToRGB_OCL(image.memory, filled.planes.data(), frame.pitches(), w, h, fourcc(format),
                                             static_cast<unsigned>(matrix), queue()),
                          KR_OK);
                image.read();
                ASSERT_TRUE(pixelsMatch(frame, matrix, codesOf(image), width, 0.002));
            }
}

TEST_F(PixelModules, YuvRefusesBuffersThatAreTooSmall) {
    YuvFrame frame("NV12", 8, 6, false), shorter("NV12", 8, 5, false);
    DevicePlanes planes(*device_, frame), small(*device_, shorter);
    DeviceImage image(*device_, kDeviceBytes, 8, 6);
    const auto fails = [&](const cl_mem* p, const std::int32_t* pitches, cl_mem rgba, unsigned width, unsigned height,
                           const char* format, unsigned matrix, cl_command_queue q) {
        return KrYUV_YUVToRGB_OCL(rgba, p, pitches, width, height, fourcc(format), matrix, q) == KR_FAILED &&
               KrYUV_RGBToYUV_OCL(p, pitches, rgba, width, height, fourcc(format), matrix, q) == KR_FAILED;
    };
    const cl_mem* const right = planes.planes.data();
    const cl_mem images[3] = {image.memory, image.memory, nullptr};
    EXPECT_FALSE(fails(right, frame.pitches(), image.memory, 8, 6, "NV12", 0, queue()));
    EXPECT_TRUE(fails(small.planes.data(), frame.pitches(), image.memory, 8, 6, "NV12", 0, queue()));
    EXPECT_TRUE(fails(right, frame.pitches(), image.memory, 8, 7, "NV12", 0, queue())) << "more than the image has";
    EXPECT_TRUE(fails(right, frame.pitches(), image.memory, 8, 6, "A410", 0, queue()));
    EXPECT_TRUE(fails(right, frame.pitches(), image.memory, 8, 6, "NV12", 6, queue()));
    EXPECT_TRUE(fails(right, nullptr, image.memory, 8, 6, "NV12", 0, queue()));
    EXPECT_TRUE(fails(nullptr, frame.pitches(), image.memory, 8, 6, "NV12", 0, queue()));
    EXPECT_TRUE(fails(right, frame.pitches(), planes.planes[0], 8, 6, "NV12", 0, queue())) << "no image";
    EXPECT_TRUE(fails(images, frame.pitches(), image.memory, 8, 6, "NV12", 0, queue())) << "no buffers";
    EXPECT_TRUE(fails(right, frame.pitches(), image.memory, 8, 6, "NV12", 0, nullptr));
    api().clFinish(queue());
}

} // namespace
} // namespace test
