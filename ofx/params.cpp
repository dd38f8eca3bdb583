// Parameter tables at the host: defining, fetching, reading and writing.
#include "ofx/params.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "ofx/exception.h"
#include "ofx/log.h"
#include "ofx/suites.h"

namespace OFX {
namespace {

// What the host calls a kind, and how its values pass: so many doubles or ints, or a text.
struct KindTraits {
    const char* type;
    int doubles = 0;
    int ints = 0;
    bool text = false;
};

constexpr KindTraits traitsOf(Kind kind) {
    switch (kind) {
        case Kind::Group:
            return {kOfxParamTypeGroup};
        case Kind::Page:
            return {kOfxParamTypePage};
        case Kind::Double:
            return {kOfxParamTypeDouble, 1};
        case Kind::Double2D:
            return {kOfxParamTypeDouble2D, 2};
        case Kind::Double3D:
            return {kOfxParamTypeDouble3D, 3};
        case Kind::Integer:
            return {kOfxParamTypeInteger, 0, 1};
        case Kind::Boolean:
            return {kOfxParamTypeBoolean, 0, 1};
        case Kind::Choice:
            return {kOfxParamTypeChoice, 0, 1};
        case Kind::RGB:
            return {kOfxParamTypeRGB, 3};
        case Kind::RGBA:
            return {kOfxParamTypeRGBA, 4};
        case Kind::String:
            return {kOfxParamTypeString, 0, 0, true};
        case Kind::Custom:
            return {kOfxParamTypeCustom, 0, 0, true};
        case Kind::PushButton:
            return {kOfxParamTypePushButton};
    }
    return {""};
}

// Kinds that have a range of their own; colours may leave 0..1, booleans need none.
bool ranged(Kind kind) {
    return kind == Kind::Double || kind == Kind::Double2D || kind == Kind::Double3D || kind == Kind::Integer;
}

template <class T>
void setComponents(const PropertySet& p, const char* name, const std::array<double, 4>& values, int count) {
    for (int i = 0; i < count; ++i) p.set(name, static_cast<T>(values[static_cast<std::size_t>(i)]), i);
}

template <class T>
void setNumberProperties(const PropertySet& p, const Param& row, int count) {
    if (row.hasDefault) setComponents<T>(p, kOfxParamPropDefault, row.initial, count);
    if (!ranged(row.kind)) return;
    const auto every = [&row](Range first, double Range::*end) {
        const double x = first.*end, other = row.others.value_or(first).*end;
        return std::array{x, other, other, other};
    };
    setComponents<T>(p, kOfxParamPropMin, every(row.range, &Range::min), count);
    setComponents<T>(p, kOfxParamPropMax, every(row.range, &Range::max), count);
    setComponents<T>(p, kOfxParamPropDisplayMin, every(row.display, &Range::min), count);
    setComponents<T>(p, kOfxParamPropDisplayMax, every(row.display, &Range::max), count);
}

void setLabels(const PropertySet& p, const char* label) {
    p.set(kOfxPropLabel, label);
    p.set(kOfxPropShortLabel, label);
    p.set(kOfxPropLongLabel, label);
}

std::string lowerCase(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

PropertySet define(OfxParamSetHandle set, Kind kind, const char* name) {
    OfxPropertySetHandle properties = nullptr;
    const OfxStatus status = suites().parameter->paramDefine(set, traitsOf(kind).type, name, &properties);
    Exception::throwUnlessOK(status, "paramDefine");
    return PropertySet(properties);
}

void defineParam(OfxParamSetHandle set, const Param& row) {
    const PropertySet p = define(set, row.kind, row.name);
    const KindTraits traits = traitsOf(row.kind);
    setLabels(p, row.label);
    if (row.hint[0] != '\0') p.set(kOfxParamPropHint, row.hint);
    if (row.parent != nullptr) p.set(kOfxParamPropParent, row.parent);
    if (row.kind == Kind::Group) return;
    p.set(kOfxParamPropScriptName, lowerCase(row.name).c_str());
    p.set(kOfxParamPropEnabled, row.enabled);
    if (!row.holdsValue()) return;

    p.set(kOfxParamPropAnimates, row.animates);
    for (std::size_t i = 0; i < row.options.size(); ++i) {
        p.set(kOfxParamPropChoiceOption, row.options[i], static_cast<int>(i));
    }
    if (traits.text) p.set(kOfxParamPropDefault, row.text);
    if (traits.ints > 0) setNumberProperties<int>(p, row, traits.ints);
    if (traits.doubles > 0) setNumberProperties<double>(p, row, traits.doubles);
    if (traits.doubles > 0 && ranged(row.kind)) {
        p.set(kOfxParamPropIncrement, row.increment);
        p.set(kOfxParamPropDigits, row.digits);
        p.set(kOfxParamPropDoubleType, toString(row.doubleType));
        if (row.wheelLevel != 0) p.set(kOfxParamPropColorWheelLevel, row.wheelLevel);
    }
}

double withinRange(const Param& row, double x, std::size_t component) {
    if (std::isnan(x)) return row.initial[component];
    if (row.kind == Kind::Choice && !row.unlimited)
        return std::clamp(x, 0.0, std::max(0.0, static_cast<double>(row.options.size()) - 1));
    const Range range = component == 0 ? row.range : row.others.value_or(row.range);
    return ranged(row.kind) ? std::clamp(x, range.min, range.max) : x;
}

} // namespace

void defineParams(OfxParamSetHandle set, std::span<const Param> params, bool childrenOnPage) {
    for (const Param& row : params) defineParam(set, row);
    const PropertySet page = define(set, Kind::Page, "Controls");
    setLabels(page, "Controls");
    if (!childrenOnPage) return;
    int index = 0;
    for (const Param& row : params) page.set(kOfxParamPropPageChild, row.name, index++);
}

ParamValue ParamHandle::read(const double* time) const {
    const KindTraits traits = traitsOf(row_->kind);
    const auto& suite = *suites().parameter;
    ParamValue value;
    auto& d = value.numbers;
    int whole = 0;
    char* text = nullptr;
    // The suite takes as many pointers as the kind has components; more are never read.
    const auto call = [&](auto... to) {
        return time != nullptr ? suite.paramGetValueAtTime(handle_, *time, to...) : suite.paramGetValue(handle_, to...);
    };
    OfxStatus status = kOfxStatErrUnsupported;
    if (traits.doubles > 0) {
        status = call(&d[0], &d[1], &d[2], &d[3]);
    } else if (traits.ints > 0) {
        status = call(&whole);
        d[0] = whole;
    } else if (traits.text) {
        status = call(&text);
        if (text != nullptr) value.text = text;
    }
    if (status != kOfxStatOK) throw Exception::Suite(status, std::string("cannot read parameter ") + row_->name);
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = withinRange(*row_, d[i], i);
    return value;
}

OfxStatus ParamHandle::write(const std::array<double, 4>& numbers) const {
    if (value().numbers == numbers) return kOfxStatOK;
    const auto& set = suites().parameter->paramSetValue;
    const auto& d = numbers;
    // Variadic arguments beyond the kind's components are ignored.
    if (traitsOf(row_->kind).doubles > 0) return set(handle_, d[0], d[1], d[2], d[3]);
    return set(handle_, static_cast<int>(std::lround(d[0])));
}

void ParamHandle::setNumbers(const std::array<double, 4>& numbers) const {
    Exception::throwUnlessOK(write(numbers), "paramSetValue");
}

void ParamHandle::follow(const ParamHandle& leader, bool locked) const {
    if (locked && write(leader.value().numbers) != kOfxStatOK) {
        log(LogLevel::Warning, "The host does not let %s follow %s.", row_->name, leader.row().name);
    }
    setEnabled(!locked);
}

void ParamHandle::setNumberAt(double time, double number) const {
    Exception::throwUnlessOK(suites().parameter->paramSetValueAtTime(handle_, time, number), "paramSetValueAtTime");
}

void ParamSet::fetch(std::span<const Param> params) {
    params_.reserve(params.size());
    for (const Param& row : params) {
        if (row.kind == Kind::Group || row.kind == Kind::Page) continue;
        OfxParamHandle handle = nullptr;
        OfxPropertySetHandle properties = nullptr;
        const OfxStatus status = suites().parameter->paramGetHandle(set_, row.name, &handle, &properties);
        if (status != kOfxStatOK || handle == nullptr) {
            throw Exception::Suite(status == kOfxStatOK ? kOfxStatErrUnknown : status,
                                   std::string("no parameter ") + row.name);
        }
        params_.emplace_back(handle, PropertySet(properties), row);
    }
}

const ParamHandle& ParamSet::find(bool (*wanted)(const Param&)) const {
    for (const ParamHandle& param : params_) {
        if (wanted(param.row())) return param;
    }
    throw Exception::Suite(kOfxStatErrUnknown, "a parameter has no row in the effect's table");
}

const ParamHandle& ParamSet::param(const char* name) const {
    for (const ParamHandle& param : params_) {
        if (std::strcmp(param.row().name, name) == 0) return param;
    }
    throw Exception::Suite(kOfxStatErrUnknown, std::string("no parameter ") + name);
}

void ParamSet::readAt(double time, void* values) const {
    for (const ParamHandle& param : params_) {
        if (const Field& field = param.row().field) field.store(values, param.valueAt(time));
    }
}

EditBlock::EditBlock(const ParamSet& set, const char* label) : set_(set.handle()) {
    if (suites().parameter->paramEditBegin(set_, label) != kOfxStatOK) set_ = nullptr;
}

EditBlock::~EditBlock() {
    if (set_ != nullptr) suites().parameter->paramEditEnd(set_);
}

} // namespace OFX
