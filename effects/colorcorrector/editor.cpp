// Fields, sliders and picks of the corrector's editor.
#include "effects/colorcorrector/editor.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

namespace colorcorrector {

// Hosts may set a locale with decimal commas; text is read and written without one.
std::string Control::text(double value) const {
    char buffer[400];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), value, std::chars_format::fixed, decimals);
    return {buffer, end.ptr};
}

std::optional<double> Control::typed(std::string_view text) const {
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    const char* const last = text.data() + text.size();
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), last, value);
    if (error != std::errc() || end != last || !(value >= min && value <= max)) return std::nullopt;
    return std::round(value * stepsPerUnit) / stepsPerUnit;
}

int Control::position(double value) const { return nearestPosition(std::clamp(value, min, max)); }

int Control::nearestPosition(double value) const { return static_cast<int>(std::lround(value * scale)); }

Wheel wheelAt(double u, double v) {
    const double magnitude = std::min(std::pow(u * u + v * v, 0.25), 1.0);
    if (u == 0) return {v >= 0 ? 90.0 : 270.0, magnitude};
    const double angle = std::atan2(v, u) * 180 / std::numbers::pi;
    return {angle < 0 ? angle + 360 : angle, magnitude};
}

Wheel picked(double red, double green, double blue, Pick pick) {
    if (pick == Pick::Reset) return {0, 0};
    const double luma = 0.299 * red + 0.587 * green + 0.114 * blue;
    const double u = (blue - luma) * 0.492 / 127.5, v = (red - luma) * 0.877 / 127.5;
    return pick == Pick::Towards ? wheelAt(u, v) : wheelAt(-u, -v);
}

} // namespace colorcorrector
