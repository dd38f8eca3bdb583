// Parameters: their kinds, values, keys and curves.
#include "host/parameter.h"

#include <algorithm>
#include <cmath>

#include "host/context.h"
#include "host/definitions.h"
#include "host/effect.h"
#include "host/host.h"
#include "host/text.h"

namespace host {

namespace {

constexpr Kind kKinds[] = {
    // type                word            value               components  interpolates  animates
    {kOfxParamTypeInteger, "integer", ValueType::Integer, 1, true, true},
    {kOfxParamTypeInteger2D, "integer2d", ValueType::Integer, 2, true, true},
    {kOfxParamTypeInteger3D, "integer3d", ValueType::Integer, 3, true, true},
    {kOfxParamTypeDouble, "double", ValueType::Double, 1, true, true},
    {kOfxParamTypeDouble2D, "double2d", ValueType::Double, 2, true, true},
    {kOfxParamTypeDouble3D, "double3d", ValueType::Double, 3, true, true},
    {kOfxParamTypeRGB, "rgb", ValueType::Double, 3, true, true},
    {kOfxParamTypeRGBA, "rgba", ValueType::Double, 4, true, true},
    {kOfxParamTypeBoolean, "boolean", ValueType::Integer, 1, false, false},
    {kOfxParamTypeChoice, "choice", ValueType::Integer, 1, false, false},
    {kOfxParamTypeStrChoice, "string choice", ValueType::String, 1, false, false},
    {kOfxParamTypeString, "string", ValueType::String, 1, false, false},
    {kOfxParamTypeCustom, "custom", ValueType::String, 1, false, false},
    {kOfxParamTypeBytes, "bytes", ValueType::Bytes, 1, false, false},
    {kOfxParamTypeGroup, "group", ValueType::None, 0, false, false},
    {kOfxParamTypePage, "page", ValueType::None, 0, false, false},
    {kOfxParamTypePushButton, "button", ValueType::None, 0, false, false},
    {kOfxParamTypeParametric, "curves", ValueType::None, 0, false, false},
};

// A default given as a fraction of the project becomes canonical, where the double type says what it measures.
double canonicalDefault(double value, const std::string& doubleType, std::size_t component, const Options& options) {
    const bool isX = doubleType == kOfxParamDoubleTypeX || doubleType == kOfxParamDoubleTypeXAbsolute;
    const bool isY = doubleType == kOfxParamDoubleTypeY || doubleType == kOfxParamDoubleTypeYAbsolute;
    const bool isXY = doubleType == kOfxParamDoubleTypeXY || doubleType == kOfxParamDoubleTypeXYAbsolute;
    if (!isX && !isY && !isXY) return value;
    const bool vertical = isY || (isXY && component == 1);
    const double offset = vertical ? options.projectOffset.y : options.projectOffset.x;
    return value * (vertical ? options.projectSize.y : options.projectSize.x) +
           (doubleType.ends_with("Absolute") ? offset : 0);
}

} // namespace

const Kind* findKind(const std::string& type) {
    const auto found =
        std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& k) { return type == k.type; });
    return found == std::end(kKinds) ? nullptr : found;
}

Parameter::Parameter(const Kind& kind, const std::string& name, ParameterSet& owner)
    : kind_(kind), name_(name), owner_(owner), properties_(owner.effect().host().options().extensions) {
    defineParameter(properties_, kind, name);
}

Parameter::Parameter(const Parameter& described, ParameterSet& owner)
    : kind_(described.kind_),
      name_(described.name_),
      owner_(owner),
      properties_(described.properties_),
      curves_(described.curves_) {
    properties_.set(kOfxPropType, kOfxTypeParameterInstance);
    static_ = defaultValue();
}

bool Parameter::canAnimate() const { return properties_.getOr(kOfxParamPropAnimates, 0) != 0; }

Value Parameter::defaultValue() const {
    Value value;
    const auto copyNumbers = [&](const auto& numbers) {
        std::copy_n(numbers.begin(), std::min(numbers.size(), value.numbers.size()), value.numbers.begin());
    };
    if (kind_.value == ValueType::Integer) copyNumbers(properties_.all<int>(kOfxParamPropDefault));
    if (kind_.value == ValueType::Double) copyNumbers(properties_.all<double>(kOfxParamPropDefault));
    if (properties_.getOr<std::string>(kOfxParamPropDefaultCoordinateSystem, "") == kOfxParamCoordinatesNormalised)
        for (std::size_t i = 0; i < static_cast<std::size_t>(kind_.components); ++i)
            value.numbers[i] =
                canonicalDefault(value.numbers[i], properties_.getOr<std::string>(kOfxParamPropDoubleType, ""), i,
                                 owner_.effect().host().options());
    if (kind_.value == ValueType::String) value.text = properties_.getOr<std::string>(kOfxParamPropDefault, "");
    if (kind_.value == ValueType::Bytes)
        if (const auto* bytes = static_cast<OfxBytes*>(properties_.getOr<void*>(kOfxParamPropDefault, nullptr)))
            value.text.assign(reinterpret_cast<const char*>(bytes->data), bytes->length);
    return value;
}

Value Parameter::value(double time) const {
    std::shared_lock lock(mutex_);
    const auto next = keys_.lower_bound(time);
    if (keys_.empty()) return static_;
    if (next == keys_.end()) return keys_.rbegin()->second;
    if (next == keys_.begin() || next->first == time) return next->second;
    const std::pair<Key, Key> around(*std::prev(next), *next);
    lock.unlock(); // a custom parameter asks the plug-in, which may come back here
    return interpolate(around.first, around.second, time);
}

Value Parameter::interpolate(const Key& before, const Key& after, double time) const {
    if (kind_.type == std::string(kOfxParamTypeCustom)) return interpolateCustom(before, after, time);
    Value value = before.second;
    if (!kind_.interpolates) return value;
    const double amount = (time - before.first) / (after.first - before.first);
    for (std::size_t i = 0; i < value.numbers.size(); ++i) {
        value.numbers[i] = std::lerp(before.second.numbers[i], after.second.numbers[i], amount);
        if (kind_.value == ValueType::Integer) value.numbers[i] = std::round(value.numbers[i]);
    }
    return value;
}

Value Parameter::interpolateCustom(const Key& before, const Key& after, double time) const {
    void* callback = properties_.getOr<void*>(kOfxParamPropCustomInterpCallbackV1, nullptr);
    if (!callback) return before.second;
    PropertySet in, out;
    in.set(kOfxPropName, name_);
    in.set(kOfxPropTime, time);
    in.set(kOfxParamPropCustomValue, std::vector{before.second.text, after.second.text});
    in.set(kOfxParamPropInterpolationTime, std::vector{before.first, after.first});
    in.set(kOfxParamPropInterpolationAmount, (time - before.first) / (after.first - before.first));
    out.set(kOfxParamPropCustomValue, before.second.text);
    const ContextScope context({&owner_.effect().host(), ThreadContext::current().render});
    const OfxStatus status = guarded([&] {
        return reinterpret_cast<OfxCustomParamInterpFuncV1*>(callback)(owner_.handle(), in.handle(), out.handle());
    });
    if (status != kOfxStatOK && status != kOfxStatReplyDefault) return before.second;
    return {.numbers = {}, .text = out.getOr<std::string>(kOfxParamPropCustomValue, before.second.text)};
}

void Parameter::set(const Value& value) {
    const std::unique_lock lock(mutex_);
    if (keys_.empty())
        static_ = value;
    else
        keys_[owner_.effect().time()] = value;
}

void Parameter::setKey(double time, const Value& value) {
    if (std::isnan(time)) throw Error("a key needs a time that is a number", kOfxStatErrValue);
    const bool animates = canAnimate();
    const std::unique_lock lock(mutex_);
    if (animates)
        keys_[time] = value;
    else
        static_ = value;
    keysChanged();
}

void Parameter::replaceKeys(std::map<double, Value> keys) {
    const std::unique_lock lock(mutex_);
    keys_ = std::move(keys);
    keysChanged();
}

void Parameter::reset() {
    Value value = defaultValue();
    const std::unique_lock lock(mutex_);
    static_ = std::move(value);
    keys_.clear();
    keysChanged();
}

std::vector<double> Parameter::keys() const {
    const std::shared_lock lock(mutex_);
    std::vector<double> times;
    for (const auto& [time, value] : keys_) times.push_back(time);
    return times;
}

bool Parameter::deleteKey(double time) {
    const std::unique_lock lock(mutex_);
    const auto found = keys_.find(time);
    if (found == keys_.end()) return false;
    if (keys_.size() == 1) static_ = found->second; // the last key's value stays
    keys_.erase(found);
    keysChanged();
    return true;
}

void Parameter::deleteKeys() {
    const std::unique_lock lock(mutex_);
    if (!keys_.empty()) static_ = keys_.begin()->second;
    keys_.clear();
    keysChanged();
}

void Parameter::keysChanged() { properties_.set(kOfxParamPropIsAnimating, keys_.empty() ? 0 : 1); }

Value Parameter::derivative(double time) const {
    if (!kind_.interpolates) throw Error("only numbers have a derivative", kOfxStatErrUnsupported);
    const std::shared_lock lock(mutex_);
    Value slope;
    const auto next = keys_.upper_bound(time);
    if (next == keys_.begin() || next == keys_.end()) return slope; // constant outside the keys
    const auto before = std::prev(next);
    for (std::size_t i = 0; i < slope.numbers.size(); ++i)
        slope.numbers[i] = (next->second.numbers[i] - before->second.numbers[i]) / (next->first - before->first);
    return slope;
}

Value Parameter::integral(double from, double to) const {
    if (!kind_.interpolates) throw Error("only numbers have an integral", kOfxStatErrUnsupported);
    std::vector<double> times{std::min(from, to)};
    for (const double key : keys())
        if (key > std::min(from, to) && key < std::max(from, to)) times.push_back(key);
    times.push_back(std::max(from, to));
    Value sum;
    for (std::size_t k = 1; k < times.size(); ++k) { // exact, since the value is linear between these times
        const Value start = value(times[k - 1]), end = value(times[k]);
        for (std::size_t i = 0; i < sum.numbers.size(); ++i)
            sum.numbers[i] +=
                (start.numbers[i] + end.numbers[i]) / 2 * (times[k] - times[k - 1]) * (from <= to ? 1 : -1);
    }
    return sum;
}

void Parameter::copy(const Parameter& from, double offset, const OfxRangeD* range) {
    if (&from.kind_ != &kind_)
        throw Error("a " + std::string(from.kind_.word) + " cannot be copied to a " + kind_.word, kOfxStatErrValue);
    std::shared_lock reading(from.mutex_);
    const Value value = from.static_;
    const auto curves = from.curves_;
    std::map<double, Value> keys;
    for (const auto& [time, key] : from.keys_)
        if (!range || (time >= range->min && time <= range->max)) keys[time + offset] = key;
    reading.unlock(); // so that a parameter can be copied to itself
    const std::unique_lock lock(mutex_);
    static_ = value;
    keys_ = std::move(keys);
    curves_ = curves;
    keysChanged();
}

const std::string& Parameter::keep(const std::string& text) const {
    const std::unique_lock lock(mutex_);
    return *kept_.insert(text).first;
}

// ---- curves

// A curve that nobody has touched is the identity over its range.
std::vector<ControlPoint>& Parameter::curve(int index) const {
    if (kind_.type != std::string(kOfxParamTypeParametric))
        throw Error("not a parametric parameter", kOfxStatErrUnknown);
    if (index < 0 || index >= properties_.getOr(kOfxParamPropParametricDimension, 1))
        throw Error("there is no curve " + std::to_string(index), kOfxStatErrBadIndex);
    const auto [found, isNew] = curves_.try_emplace(index);
    if (isNew)
        for (int end : {0, 1}) {
            const double position = properties_.getOr<double>(kOfxParamPropParametricRange, end, end);
            found->second.push_back({position, position});
        }
    return found->second;
}

double Parameter::curveValue(int index, double position) const {
    const std::vector<ControlPoint> points = controlPoints(index);
    if (points.empty()) return position; // the identity again
    const auto next =
        std::find_if(points.begin(), points.end(), [&](auto& point) { return point.position >= position; });
    if (next == points.begin()) return next->value;
    if (next == points.end()) return points.back().value;
    const ControlPoint before = *std::prev(next);
    return std::lerp(before.value, next->value, (position - before.position) / (next->position - before.position));
}

std::vector<ControlPoint> Parameter::controlPoints(int index) const {
    const std::unique_lock lock(mutex_);
    return curve(index);
}

void Parameter::addControlPoint(int index, ControlPoint point) {
    const std::unique_lock lock(mutex_);
    std::vector<ControlPoint>& points = curve(index);
    const auto next = std::find_if(points.begin(), points.end(), [&](auto& p) { return p.position >= point.position; });
    if (next != points.end() && next->position == point.position)
        *next = point;
    else
        points.insert(next, point);
}

void Parameter::setControlPoint(int index, int nth, ControlPoint point) {
    deleteControlPoint(index, nth);
    addControlPoint(index, point);
}

void Parameter::deleteControlPoint(int index, int nth) {
    const std::unique_lock lock(mutex_);
    std::vector<ControlPoint>& points = curve(index);
    if (nth < 0 || nth >= static_cast<int>(points.size()))
        throw Error("there is no control point " + std::to_string(nth), kOfxStatErrBadIndex);
    points.erase(points.begin() + nth);
}

void Parameter::deleteControlPoints(int index) {
    const std::unique_lock lock(mutex_);
    curve(index).clear();
}

} // namespace host
