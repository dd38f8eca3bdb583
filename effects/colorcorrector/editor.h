// The arithmetic of the corrector's editor, three wheels and four sliders with text fields, for any toolkit.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "effects/colorcorrector/correction.h"

namespace colorcorrector {

// How the editor shows one number: in a text field, and some on a slider of whole positions.
struct Control {
    int decimals;     // that the field shows
    double min, max;  // what may be typed, and the slider's ends
    int stepsPerUnit; // to which a typed number is rounded
    int scale = 0;    // slider positions per unit

    std::string text(double value) const;
    // Nothing for a text that is no number between the ends.
    std::optional<double> typed(std::string_view text) const;

    int firstPosition() const { return nearestPosition(min); }
    int lastPosition() const { return nearestPosition(max); }
    int position(double value) const; // the nearest end for what lies beyond
    double valueAt(int position) const { return static_cast<double>(position) / scale; }

private:
    int nearestPosition(double value) const;
};

inline constexpr Control kAngle{1, 0, 360, 100}, kMagnitude{3, 0, 1, 10000};
inline constexpr Control kSaturationControl{3, 0, 3, 10000, 1000}, kGammaControl{3, 0, 2, 10000, 1000};
inline constexpr Control kGainControl{3, 0.1, 2, 10000, 1000}; // no black picture by accident; the parameter allows 0
inline constexpr Control kOffsetControl{1, -254, 254, 100, 10};

using Wheel = std::array<double, 2>; // angle in degrees, magnitude

// The wheel that pushes to the point (u, v), colour differences in units of 127.5 codes. A render squares the
// magnitude, so that is the root of the distance, and ends at 1.
Wheel wheelAt(double u, double v);

// What picking a colour does to a wheel: push towards it, towards its complement, or nowhere any more.
enum class Pick { Towards, Away, Reset };
Wheel picked(double red, double green, double blue, Pick pick); // 0..255

} // namespace colorcorrector

// The editor's state and what its controls do to it. It has no window yet, and no host is told of it.
class colorcorrectorInteract {
public:
    explicit colorcorrectorInteract(const colorcorrectorValues& values) : values_(values) {}

    const colorcorrectorValues& values() const { return values_; }
    void pick(colorcorrector::Wheel colorcorrectorValues::*wheel, double red, double green, double blue,
              colorcorrector::Pick pick) {
        values_.*wheel = colorcorrector::picked(red, green, blue, pick);
    }
    // False, and nothing changes, where the text is not allowed.
    bool type(double colorcorrectorValues::*number, const colorcorrector::Control& control, std::string_view text) {
        const auto value = control.typed(text);
        if (value) values_.*number = *value;
        return value.has_value();
    }
    void slide(double colorcorrectorValues::*number, const colorcorrector::Control& control, int position) {
        values_.*number = control.valueAt(position);
    }

private:
    colorcorrectorValues values_;
};

// Makes the editor.
class colorcorrectorInteractDescriptor {
public:
    colorcorrectorInteract create(const colorcorrectorValues& values) const { return colorcorrectorInteract(values); }
};
