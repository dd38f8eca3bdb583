// Linear wipe and clock wipe: every pixel against the geometry, calculated in double precision from the plain formulas.
#include <cmath>

#include "tests/transition_support.h"

namespace {

using namespace test;

double scaleX(double aspect) { return aspect < 1 ? aspect : 1; }
double scaleY(double aspect) { return aspect < 1 ? 1 : 1 / aspect; }

// The two pictures mixed with a weight that is known up to so much; bytes may then be rounded either way.
Expected mixed(const Format& format, const Pixel& from, const Pixel& to, double fromWeight, double uncertainty) {
    Pixel p;
    double contrast = 0;
    for (std::size_t c = 0; c < 4; ++c) {
        p[c] = to[c] + (from[c] - to[c]) * fromWeight;
        contrast = std::max(contrast, std::abs(from[c] - to[c]));
    }
    const double rounding = format.depth == Depth::Byte ? 0.5 : 1e-6;
    return {p, rounding + contrast * uncertainty + 1e-9};
}

// ---- linear wipe

struct Sweep {
    double a, feather, p, aspect;
    int W, H;

    // 0 where the edge starts, 1 at the far end; x from the left, y from the top.
    double place(int x, int y) const {
        const double kx = scaleX(aspect), ky = scaleY(aspect);
        const double right = (W - 1) * kx, bottom = (H - 1) * ky, X = x * kx, Y = y * ky;
        const auto along = [](double at, double length) { return length == 0 ? 0 : at / length; };
        if (a <= double{0.001f} || a > double{359.999f}) return along(X, right);
        if (a > double{89.999f} && a <= double{90.001f}) return along(Y, bottom);
        if (a > double{179.999f} && a <= double{180.001f}) return along(right - X, right);
        if (a > double{269.999f} && a <= double{270.001f}) return along(bottom - Y, bottom);
        // The edge's normal points from the corner where the wipe starts to the opposite one.
        const double radians = a * std::numbers::pi / 180, nx = std::cos(radians), ny = std::sin(radians);
        const double startX = a < 90 || a > 270 ? 0 : right, startY = a < 180 ? 0 : bottom;
        const double length = std::abs(right * nx) + std::abs(bottom * ny);
        return along(std::abs((X - startX) * nx + (Y - startY) * ny), length);
    }

    Expected pixel(const Format& format, const Pixel& from, const Pixel& to, int x, int y) const {
        if (p <= 0) return {from};
        if (p >= 1) return {to};
        const double h = feather / 4, e = (1 + 2 * h) * p - h, n = place(x, y);
        // A hard edge is to be on the right side; pixels as close as the precision of positions may fall either way.
        if (feather == 0) {
            if (std::abs(n - e) < 2e-6 && n != e) return mixed(format, from, to, 0.5, 0.5);
            return {n <= e ? to : from};
        }
        if (n < e - h) return {to, format.depth == Depth::Byte ? 0 : 1e-6};
        if (n > e + h) return {from, format.depth == Depth::Byte ? 0 : 1e-6};
        const double u = (n - e + h) * 2 / feather;
        return mixed(format, from, to, (3 - 2 * u) * u * u, 1.5 * 2 / feather * 1e-6);
    }
};

Settings settingsOf(const Sweep& s) { return {{"Angle", {s.a}}, {"Feather", {s.feather}}}; }

void expectSweep(Session& session, const Format& format, OfxRectI bounds, Sweep sweep) {
    sweep.W = bounds.x2 - bounds.x1, sweep.H = bounds.y2 - bounds.y1;
    sweep.a = static_cast<float>(sweep.a), sweep.feather = static_cast<float>(sweep.feather);
    sweep.p = static_cast<float>(sweep.p);
    Between pictures(session, kLinearWipe, format, bounds, sweep.aspect);
    const auto image = pictures.at(sweep.p, settingsOf(sweep));
    EXPECT_TRUE(
        pictures.shows(*image, [&](const Pixel& from, const Pixel& to, int x,
                                   int y) { return sweep.pixel(format, from, to, x - bounds.x1, bounds.y2 - 1 - y); }))
        << sweep.a << " degrees, feather " << sweep.feather << ", at " << sweep.p << ", aspect " << sweep.aspect;
}

TEST(LinearWipe, SweepsAtEveryAngleFeatherAndAspect) {
    Session session(oneThread());
    Random random(7);
    const std::vector<double> angles = {0,        0.001, 0.0011,   45,       89.9989, 89.9991,  90.0005,
                                        90.0011,  135,   179.9985, 179.9995, 180,     180.0015, 225,
                                        269.9985, 270,   270.0015, 300,      359.5,   359.9995, 360};
    for (const OfxRectI& bounds : {OfxRectI{0, 0, 37, 21}, OfxRectI{-5, 3, 27, 27}})
        for (const double angle : angles)
            for (const double aspect : {1.0, 0.9, 2.0}) {
                const Format format = random.pick({kBytes, kFloats, kBytesBGRA, kFloatsBGRA});
                expectSweep(session, format, bounds, {angle, 0.1, random.real(0, 1), aspect, 0, 0});
                expectSweep(session, format, bounds, {angle, random.real(0, 1), random.real(0, 1), aspect, 0, 0});
                expectSweep(session, format, bounds,
                            {angle, random.pick({0.0, 1.0}), random.pick({0.0, 0.5, 1.0}), aspect, 0, 0});
            }
}

TEST(LinearWipe, HasPicturesOfOnePixelAndOneLine) {
    Session session(oneThread());
    for (const OfxRectI& bounds : {OfxRectI{0, 0, 1, 1}, OfxRectI{0, 0, 1, 9}, OfxRectI{0, 0, 9, 1}})
        for (const double angle : {0.0, 45.0, 90.0, 180.0, 270.0})
            for (const double feather : {0.0, 0.5})
                expectSweep(session, kBytes, bounds, {angle, feather, 0.4, 1, 0, 0});
}

// The column that a hard edge has just reached counts as passed.
TEST(LinearWipe, APixelOnAHardEdgeShowsTheIncomingPicture) {
    Session session(oneThread());
    Between pictures(session, kLinearWipe, kBytes, {0, 0, 65, 2});
    const auto image = pictures.at(0.5, {{"Angle", {0}}, {"Feather", {0}}}); // 32 of 64 steps
    EXPECT_TRUE(pictures.shows(
        *image, [](const Pixel& from, const Pixel& to, int x, int) { return Expected{x <= 32 ? to : from}; }));
}

// ---- clock wipe

struct Clock {
    int direction;
    double feather, p, aspect;
    int W, H;

    Expected pixel(const Format& format, const Pixel& from, const Pixel& to, int x, int y) const {
        const double turn = 2 * std::numbers::pi;
        const int cx = W / 2, cy = H / 2;
        const double u = (direction == 0 ? x - cx : cx - x) * scaleX(aspect), v = (cy + 0.5 - y) * scaleY(aspect);
        double theta = std::atan2(u, v);
        if (theta < 0) theta += turn;
        const double phi = feather * std::numbers::pi / 180, A = (phi + turn) * p;
        const double w = std::max(std::asin(std::numbers::sqrt2 / std::max(std::hypot(u, v), 2.0)), phi);
        const double E = std::min(phi + turn, A - w);
        const bool bytes = format.depth == Depth::Byte;
        if (p >= 1 || theta <= E - 4e-6) return {to};
        if (p <= 0 || theta >= A + 4e-6) return {from};
        const double s1 = std::min(std::max(1 - (theta - E) / w, 0.0), 1.0), s = (3 - 2 * s1) * s1 * s1;
        // The weight that a byte gets: one of the neighbouring 256ths where it is close to both. Just before the
        // feather begins it is 255, though the picture is whole.
        const double uncertainty = 1.5 * 4e-6 / w;
        if (!bytes) return mixed(format, from, to, 1 - s, uncertainty);
        Expected result;
        for (std::size_t c = 0; c < 4; ++c) {
            const double low = std::trunc((s - uncertainty) * 255 + 0.5),
                         high = std::trunc((s + uncertainty) * 255 + 0.5);
            const double one = from[c] + std::trunc((to[c] - from[c]) * low / 256);
            const double other = from[c] + std::trunc((to[c] - from[c]) * high / 256);
            result.value[c] = (one + other) / 2;
            result.tolerance = std::max(result.tolerance, std::abs(one - other) / 2);
        }
        if (std::abs(theta - E) < 4e-6) result.tolerance += 1;
        return result;
    }
};

void expectClock(Session& session, const Format& format, OfxRectI bounds, Clock clock) {
    clock.W = bounds.x2 - bounds.x1, clock.H = bounds.y2 - bounds.y1;
    clock.feather = static_cast<float>(clock.feather), clock.p = static_cast<float>(clock.p);
    Between pictures(session, kClockWipe, format, bounds, clock.aspect);
    const auto image =
        pictures.at(clock.p, {{"Direction", {clock.direction * 1.0}}, {"FeatherAngle", {clock.feather}}});
    EXPECT_TRUE(
        pictures.shows(*image, [&](const Pixel& from, const Pixel& to, int x,
                                   int y) { return clock.pixel(format, from, to, x - bounds.x1, bounds.y2 - 1 - y); }))
        << clock.feather << " degrees, at " << clock.p << ", direction " << clock.direction << ", aspect "
        << clock.aspect;
}

TEST(ClockWipe, TurnsBothWaysWithEveryFeatherAndAspect) {
    Session session(oneThread());
    Random random(9);
    for (const OfxRectI& bounds : {OfxRectI{0, 0, 37, 21}, OfxRectI{-5, 3, 27, 27}, OfxRectI{0, 0, 200, 90}})
        for (const int direction : {0, 1})
            for (const double aspect : {1.0, 0.9, 2.0})
                for (const double feather : {0.0, 1.0, 30.0, 89.0, 91.0, 200.0, 360.0})
                    for (const double p : {0.0, 1e-3, 0.25, 0.5, 0.999, 1.0, random.real(0, 1), random.real(0, 1)}) {
                        const Format format = random.pick({kBytes, kFloats, kBytesBGRA, kFloatsBGRA});
                        expectClock(session, format, bounds, {direction, feather, p, aspect, 0, 0});
                    }
}

// A quarter past: without a feather the right upper quarter is the incoming picture, but for the edges.
TEST(ClockWipe, StartsAtTwelve) {
    Session session(oneThread());
    Between pictures(session, kClockWipe, kBytes, {0, 0, 101, 101});
    for (const int direction : {0, 1}) {
        const auto image = pictures.at(0.25, {{"FeatherAngle", {0}}, {"Direction", {direction * 1.0}}});
        for (const auto& [x, y, passed] : {std::tuple{80, 80, direction == 0}, std::tuple{80, 20, false},
                                           std::tuple{20, 20, false}, std::tuple{20, 80, direction == 1}})
            EXPECT_EQ(pixelAt(*image, x, y), pixelAt(passed ? *pictures.to : *pictures.from, x, y)) << x << ", " << y;
        // Straight above the centre the hand has long passed.
        EXPECT_EQ(pixelAt(*image, 50, 95), pixelAt(*pictures.to, 50, 95));
    }
}

} // namespace
