// The arithmetic of the colour corrector's editor: fields, sliders, and picking colours on wheels.
#include "effects/colorcorrector/editor.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>

namespace {

using namespace colorcorrector;

TEST(Fields, ShowTheirDecimalsInAnyLocale) {
    std::setlocale(LC_ALL, "");
    EXPECT_EQ(kAngle.text(359.96), "360.0");
    EXPECT_EQ(kMagnitude.text(0.12345), "0.123");
    EXPECT_EQ(kOffsetControl.text(-254), "-254.0");
    EXPECT_EQ(kGainControl.text(1), "1.000");
}

TEST(Fields, TakeNumbersWithinTheirRangeInTheirSteps) {
    EXPECT_EQ(kAngle.typed("12.344"), 12.34);
    EXPECT_EQ(kAngle.typed(" 360 "), 360);
    EXPECT_EQ(kMagnitude.typed("0.00016"), 0.0002);
    EXPECT_EQ(kOffsetControl.typed("-253.996"), -254);
    EXPECT_EQ(kGammaControl.typed("0"), 0);
    EXPECT_EQ(kSaturationControl.typed("3"), 3);
    for (const char* text : {"", " ", "-0.1", "360.001", "1,5", "12x", "nan", "inf", "0x10"})
        EXPECT_EQ(kAngle.typed(text), std::nullopt) << text;
    EXPECT_EQ(kGainControl.typed("0.0999"), std::nullopt) << "the editor keeps gain from black";
    EXPECT_EQ(kGainControl.typed("0.1"), 0.1);
}

TEST(Sliders, RunOverWholePositions) {
    const auto ends = [](const Control& c) { return std::pair(c.firstPosition(), c.lastPosition()); };
    EXPECT_EQ(ends(kOffsetControl), std::pair(-2540, 2540));
    EXPECT_EQ(ends(kGammaControl), std::pair(0, 2000));
    EXPECT_EQ(ends(kGainControl), std::pair(100, 2000));
    EXPECT_EQ(ends(kSaturationControl), std::pair(0, 3000));
    EXPECT_EQ(kOffsetControl.position(-12.36), -124);
    EXPECT_EQ(kOffsetControl.valueAt(-124), -12.4);
    EXPECT_EQ(kGainControl.position(0), 100) << "a gain that only the parameter allows";
}

TEST(Wheels, TurnAnticlockwiseFromTheAxisOfBlue) {
    const auto expect = [](double u, double v, double angle, double magnitude) {
        const auto [a, m] = wheelAt(u, v);
        EXPECT_NEAR(a, angle, 1e-9) << u << " " << v;
        EXPECT_NEAR(m, magnitude, 1e-9) << u << " " << v;
    };
    expect(0.25, 0, 0, 0.5);
    expect(0, 0.25, 90, 0.5);
    expect(-0.25, 0, 180, 0.5);
    expect(0, -0.25, 270, 0.5);
    expect(0, 0, 90, 0);
    expect(0.09, 0.09, 45, std::pow(0.0162, 0.25));
    expect(-0.09, -0.09, 225, std::pow(0.0162, 0.25));
    expect(0.9, -1.2, 306.86989764584402, 1); // no further than the rim
}

TEST(Wheels, PickColorsTowardsAndAway) {
    // Blue (0, 0, 255): luma 29.07, u = 225.93 x 0.492 / 127.5, v = -29.07 x 0.877 / 127.5.
    const double u = 0.871824, v = -0.199956;
    const Wheel towards = picked(0, 0, 255, Pick::Towards), away = picked(0, 0, 255, Pick::Away);
    EXPECT_NEAR(towards[0], 347.0820, 1e-3);
    EXPECT_NEAR(away[0], 167.0820, 1e-3);
    EXPECT_NEAR(towards[1], std::sqrt(std::hypot(u, v)), 1e-5);
    EXPECT_EQ(away[1], towards[1]);
    EXPECT_EQ(picked(255, 0, 0, Pick::Towards)[1], 1) << "red lies beyond the rim";
    EXPECT_EQ(picked(10, 20, 30, Pick::Reset), (Wheel{0, 0}));
}

TEST(Interact, ChangesTheValuesThatAControlNames) {
    const colorcorrectorValues initial{{0, 0}, {30, 0.5}, {0, 0}, 1, 1, 1, 0};
    colorcorrectorInteract editor = colorcorrectorInteractDescriptor().create(initial);
    editor.pick(&colorcorrectorValues::high, 0, 0, 255, Pick::Towards);
    editor.slide(&colorcorrectorValues::offset, kOffsetControl, 15);
    EXPECT_TRUE(editor.type(&colorcorrectorValues::gain, kGainControl, "1.25"));
    EXPECT_FALSE(editor.type(&colorcorrectorValues::gain, kGainControl, "2.25"));
    EXPECT_EQ(editor.values().high, picked(0, 0, 255, Pick::Towards));
    EXPECT_EQ(editor.values().mid, initial.mid);
    EXPECT_EQ(editor.values().offset, 1.5);
    EXPECT_EQ(editor.values().gain, 1.25);
}

} // namespace
