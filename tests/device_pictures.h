// Pictures and YUV frames on an OpenCL device, for the tests of the pixel library's modules.
#pragma once
#include <algorithm>
#include <cmath>

#include "tests/pixelops.h"

namespace test {

inline constexpr cl_image_format kDeviceBytes = {CL_BGRA, CL_UNORM_INT8}, kRedFirst = {CL_RGBA, CL_UNORM_INT8};
inline constexpr cl_image_format kDeviceFloats = {CL_RGBA, CL_FLOAT};

using Color = std::array<float, 4>;

// A picture on the device, and what is known of it here: floats, or bytes as 0..1.
class DeviceImage {
public:
    DeviceImage(host::OpenCLDevice& device, cl_image_format format, int width, int height)
        : pixels(static_cast<std::size_t>(width * height)),
          width_(width),
          height_(height),
          device_(device),
          format_(format) {
        cl_int status = 0;
        memory = device.api().clCreateImage2D(device.context(), CL_MEM_READ_WRITE, &format, size(0), size(1), 0,
                                              nullptr, &status);
        EXPECT_EQ(status, CL_SUCCESS);
    }
    ~DeviceImage() { device_.release(memory); }
    DeviceImage(const DeviceImage&) = delete;
    DeviceImage& operator=(const DeviceImage&) = delete;

    DeviceImage& fill(Random& random) {
        for (Color& pixel : pixels) {
            const double alpha = random.pick({0.0, 1.0, random.real(0, 1)});
            for (float& c : pixel) c = rounded(random.real(0, alpha));
            pixel[3] = rounded(alpha);
        }
        transfer(true);
        return *this;
    }
    void read() { transfer(false); }
    const Color& at(int x, int y) const {
        return pixels[static_cast<std::size_t>(std::clamp(y, 0, height_ - 1) * width_ + std::clamp(x, 0, width_ - 1))];
    }
    bool bytes() const { return format_.image_channel_data_type == CL_UNORM_INT8; }
    double tolerance() const { return bytes() ? 0.501 / 255 : 1e-5; }
    int width() const { return width_; }
    int height() const { return height_; }

    std::vector<Color> pixels; // red first
    cl_mem memory = nullptr;

private:
    std::size_t size(int axis) const { return static_cast<std::size_t>(axis == 0 ? width_ : height_); }
    float rounded(double c) const { return static_cast<float>(bytes() ? std::floor(c * 255) / 255 : c); }

    void transfer(bool write) {
        const std::size_t origin[3] = {0, 0, 0}, region[3] = {size(0), size(1), 1};
        const auto channel = [&](std::size_t c) { return format_.image_channel_order == CL_BGRA && c < 3 ? 2 - c : c; };
        std::vector<std::uint8_t> codes(bytes() ? 4 * pixels.size() : 0);
        if (write)
            for (std::size_t i = 0; i < codes.size(); ++i)
                codes[i] = static_cast<std::uint8_t>(std::lround(pixels[i / 4][channel(i % 4)] * 255));
        void* data = bytes() ? static_cast<void*>(codes.data()) : pixels.data();
        EXPECT_EQ(write ? device_.api().clEnqueueWriteImage(device_.queue(), memory, CL_TRUE, origin, region, 0, 0,
                                                            data, 0, nullptr, nullptr)
                        : device_.api().clEnqueueReadImage(device_.queue(), memory, CL_TRUE, origin, region, 0, 0, data,
                                                           0, nullptr, nullptr),
                  CL_SUCCESS);
        if (!write)
            for (std::size_t i = 0; i < codes.size(); ++i)
                pixels[i / 4][channel(i % 4)] = static_cast<float>(codes[i] / 255.0);
    }

    int width_, height_;
    host::OpenCLDevice& device_;
    cl_image_format format_;
};

// A frame's planes on the device.
class DevicePlanes {
public:
    DevicePlanes(host::OpenCLDevice& device, YuvFrame& frame) : device_(device), frame_(frame) {
        for (int i = 0; i < frame.planes(); ++i) {
            const auto p = static_cast<std::size_t>(i);
            cl_int status = 0;
            planes[p] = device.api().clCreateBuffer(device.context(), CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR,
                                                    frame.size(i), frame.bytes(i), &status);
            EXPECT_EQ(status, CL_SUCCESS);
        }
    }
    ~DevicePlanes() {
        for (int i = 0; i < frame_.planes(); ++i) device_.release(planes[static_cast<std::size_t>(i)]);
    }
    DevicePlanes(const DevicePlanes&) = delete;
    DevicePlanes& operator=(const DevicePlanes&) = delete;
    void read() {
        for (int i = 0; i < frame_.planes(); ++i)
            EXPECT_EQ(device_.api().clEnqueueReadBuffer(device_.queue(), planes[static_cast<std::size_t>(i)], CL_TRUE,
                                                        0, frame_.size(i), frame_.bytes(i), 0, nullptr, nullptr),
                      CL_SUCCESS);
    }
    std::array<cl_mem, 3> planes{};

private:
    host::OpenCLDevice& device_;
    YuvFrame& frame_;
};

} // namespace test
