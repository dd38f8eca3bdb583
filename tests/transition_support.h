// What the tests of transitions share: an instance between two pictures, and each pixel compared with a reference.
#pragma once
#include "tests/support.h"

namespace test {

inline constexpr const char* kDissolve = "com.orvixstudioworks:dissolve";
inline constexpr const char* kLinearWipe = "com.orvixstudioworks:linearwipe";
inline constexpr const char* kClockWipe = "com.orvixstudioworks:clockwipe";
inline constexpr const char* kFlash = "com.orvixstudioworks:flash";

// A transition between two pictures of noise; they differ in every pixel.
class Between {
public:
    Between(Session& session, const std::string& effect, Format pixels, OfxRectI area, double pixelAspect = 1)
        : instance(session.make(effect)), format(pixels), bounds(area), aspect(pixelAspect) {
        from = picture(format, bounds, 1), to = picture(format, bounds, 2);
        instance->clip("SourceFrom").connect(from);
        instance->clip("SourceTo").connect(to);
    }

    std::shared_ptr<Image> at(double progress, const Settings& settings = {}, bool openCL = false) {
        set(*instance, settings);
        set(*instance, {{"Transition", {progress}}});
        host::RenderRequest request;
        request.output = blank(format, bounds);
        request.output->pixelAspect = aspect;
        request.openCL = openCL;
        EXPECT_EQ(instance->render(request), kOfxStatOK);
        return request.output;
    }

    // reference(from, to, x, y) is what the pixel must be.
    template <class Reference>
    testing::AssertionResult shows(const Image& image, Reference reference) const {
        return matches(image, bounds, [&](int x, int y) -> Expected {
            return reference(pixelAt(*from, x, y), pixelAt(*to, x, y), x, y);
        });
    }

    std::unique_ptr<Instance> instance;
    Format format;
    OfxRectI bounds;
    double aspect;
    std::shared_ptr<Image> from, to;
};

} // namespace test
