// The parameter suite and the suite of parametric parameters.
#include <algorithm>
#include <cstdarg>

#include "host/effect.h"

namespace host {

namespace {

// Values cross as variadic arguments: a pointer for each component to read, a value for each to write.
void write(const Parameter& parameter, const Value& value, va_list arguments) {
    const Kind& kind = parameter.kind();
    for (std::size_t i = 0; i < static_cast<std::size_t>(kind.components); ++i) switch (kind.value) {
            case ValueType::Integer:
                *given(va_arg(arguments, int*)) = static_cast<int>(value.numbers[i]);
                break;
            case ValueType::Double:
                *given(va_arg(arguments, double*)) = value.numbers[i];
                break;
            case ValueType::String:
                *given(va_arg(arguments, char**)) = const_cast<char*>(parameter.keep(value.text).c_str());
                break;
            case ValueType::Bytes: {
                const std::string& bytes = parameter.keep(value.text);
                *given(va_arg(arguments, OfxBytes*)) = {reinterpret_cast<const unsigned char*>(bytes.data()),
                                                        bytes.size()};
                break;
            }
            case ValueType::None:
                break;
        }
}

Value read(const Parameter& parameter, va_list arguments) {
    const Kind& kind = parameter.kind();
    Value value;
    for (std::size_t i = 0; i < static_cast<std::size_t>(kind.components); ++i) switch (kind.value) {
            case ValueType::Integer:
                value.numbers[i] = va_arg(arguments, int);
                break;
            case ValueType::Double:
                value.numbers[i] = va_arg(arguments, double);
                break;
            case ValueType::String:
                value.text = given(va_arg(arguments, const char*));
                break;
            case ValueType::Bytes: {
                const OfxBytes& bytes = *given(va_arg(arguments, const OfxBytes*));
                if (bytes.length > 0) value.text.assign(reinterpret_cast<const char*>(given(bytes.data)), bytes.length);
                break;
            }
            case ValueType::None:
                break;
        }
    return value;
}

Parameter& requireValue(OfxParamHandle handle) {
    Parameter& parameter = require<Parameter>(handle);
    if (!parameter.hasValue()) throw Error("a parameter without value", kOfxStatErrUnsupported);
    return parameter;
}

// Runs an edit by the plug-in, then tells the effect.
template <class Edit>
OfxStatus edit(Parameter& parameter, Edit&& change) {
    change();
    parameter.owner().effect().parameterEdited(parameter);
    return kOfxStatOK;
}

OfxStatus paramDefine(OfxParamSetHandle set, const char* type, const char* name, OfxPropertySetHandle* properties) {
    return guarded([&] {
        ParameterSet& parameters = require<ParameterSet>(set);
        if (parameters.effect().isInstance())
            throw Error("parameters are defined while a plug-in describes", kOfxStatErrBadHandle);
        Parameter& parameter = parameters.define(given(type), given(name));
        if (properties) *properties = parameter.properties().handle();
    });
}

OfxStatus paramGetHandle(OfxParamSetHandle set, const char* name, OfxParamHandle* handle,
                         OfxPropertySetHandle* properties) {
    return guarded([&] {
        Parameter* parameter = require<ParameterSet>(set).find(given(name));
        if (!parameter) return kOfxStatErrUnknown;
        if (handle) *handle = parameter->handle();
        if (properties) *properties = parameter->properties().handle();
        return kOfxStatOK;
    });
}

OfxStatus paramSetGetPropertySet(OfxParamSetHandle set, OfxPropertySetHandle* properties) {
    return guarded([&] { *given(properties) = require<ParameterSet>(set).properties().handle(); });
}

OfxStatus paramGetPropertySet(OfxParamHandle handle, OfxPropertySetHandle* properties) {
    return guarded([&] { *given(properties) = require<Parameter>(handle).properties().handle(); });
}

OfxStatus paramGetValue(OfxParamHandle handle, ...) {
    va_list arguments;
    va_start(arguments, handle);
    const OfxStatus status = guarded([&] {
        const Parameter& parameter = requireValue(handle);
        write(parameter, parameter.value(parameter.owner().effect().time()), arguments);
    });
    va_end(arguments);
    return status;
}

OfxStatus paramGetValueAtTime(OfxParamHandle handle, OfxTime time, ...) {
    va_list arguments;
    va_start(arguments, time);
    const OfxStatus status = guarded([&] {
        const Parameter& parameter = requireValue(handle);
        write(parameter, parameter.value(time), arguments);
    });
    va_end(arguments);
    return status;
}

OfxStatus paramGetDerivative(OfxParamHandle handle, OfxTime time, ...) {
    va_list arguments;
    va_start(arguments, time);
    const OfxStatus status = guarded([&] {
        const Parameter& parameter = requireValue(handle);
        write(parameter, parameter.derivative(time), arguments);
    });
    va_end(arguments);
    return status;
}

OfxStatus paramGetIntegral(OfxParamHandle handle, OfxTime from, OfxTime to, ...) {
    va_list arguments;
    va_start(arguments, to);
    const OfxStatus status = guarded([&] {
        const Parameter& parameter = requireValue(handle);
        write(parameter, parameter.integral(from, to), arguments);
    });
    va_end(arguments);
    return status;
}

OfxStatus paramSetValue(OfxParamHandle handle, ...) {
    va_list arguments;
    va_start(arguments, handle);
    const OfxStatus status = guarded([&] {
        Parameter& parameter = requireValue(handle);
        return edit(parameter, [&] { parameter.set(read(parameter, arguments)); });
    });
    va_end(arguments);
    return status;
}

OfxStatus paramSetValueAtTime(OfxParamHandle handle, OfxTime time, ...) {
    va_list arguments;
    va_start(arguments, time);
    const OfxStatus status = guarded([&] {
        Parameter& parameter = requireValue(handle);
        return edit(parameter, [&] { parameter.setKey(time, read(parameter, arguments)); });
    });
    va_end(arguments);
    return status;
}

OfxStatus paramGetNumKeys(OfxParamHandle handle, unsigned int* count) {
    return guarded([&] { *given(count) = static_cast<unsigned>(requireValue(handle).keys().size()); });
}

OfxStatus paramGetKeyTime(OfxParamHandle handle, unsigned int nth, OfxTime* time) {
    return guarded([&] {
        const std::vector<double> keys = requireValue(handle).keys();
        if (nth >= keys.size()) return kOfxStatErrBadIndex;
        *given(time) = keys[nth];
        return kOfxStatOK;
    });
}

// The key at the time, or the nearest one before (direction < 0) or after it.
OfxStatus paramGetKeyIndex(OfxParamHandle handle, OfxTime time, int direction, int* index) {
    return guarded([&] {
        const std::vector<double> keys = requireValue(handle).keys();
        auto found = std::lower_bound(keys.begin(), keys.end(), time); // at or after
        const bool exact = found != keys.end() && *found == time;
        if (direction > 0 && exact) ++found;
        if (direction < 0 ? found == keys.begin() : found == keys.end() || (direction == 0 && !exact))
            return kOfxStatFailed;
        if (direction < 0) --found;
        *given(index) = static_cast<int>(found - keys.begin());
        return kOfxStatOK;
    });
}

OfxStatus paramDeleteKey(OfxParamHandle handle, OfxTime time) {
    return guarded([&] {
        Parameter& parameter = requireValue(handle);
        return edit(parameter, [&] {
            if (!parameter.deleteKey(time)) throw Error("there is no key at this time", kOfxStatErrBadIndex);
        });
    });
}

OfxStatus paramDeleteAllKeys(OfxParamHandle handle) {
    return guarded([&] {
        Parameter& parameter = requireValue(handle);
        return edit(parameter, [&] { parameter.deleteKeys(); });
    });
}

OfxStatus paramCopy(OfxParamHandle to, OfxParamHandle from, OfxTime offset, const OfxRangeD* range) {
    return guarded([&] {
        Parameter& parameter = require<Parameter>(to);
        return edit(parameter, [&] { parameter.copy(require<Parameter>(from), offset, range); });
    });
}

OfxStatus paramEditBegin(OfxParamSetHandle set, const char* name) {
    return guarded([&] { require<ParameterSet>(set).beginEdit(given(name)); });
}

OfxStatus paramEditEnd(OfxParamSetHandle set) {
    return guarded([&] { require<ParameterSet>(set).endEdit(); });
}

// ---- curves; the host does not animate them, so times and animation keys say nothing

OfxStatus curveValue(OfxParamHandle handle, int curve, OfxTime, double position, double* value) {
    return guarded([&] { *given(value) = require<Parameter>(handle).curveValue(curve, position); });
}

OfxStatus countPoints(OfxParamHandle handle, int curve, double, int* count) {
    return guarded([&] { *given(count) = static_cast<int>(require<Parameter>(handle).controlPoints(curve).size()); });
}

OfxStatus getPoint(OfxParamHandle handle, int curve, double, int nth, double* position, double* value) {
    return guarded([&] {
        const std::vector<ControlPoint> points = require<Parameter>(handle).controlPoints(curve);
        if (nth < 0 || nth >= static_cast<int>(points.size())) return kOfxStatErrBadIndex;
        *given(position) = points[static_cast<std::size_t>(nth)].position;
        *given(value) = points[static_cast<std::size_t>(nth)].value;
        return kOfxStatOK;
    });
}

OfxStatus setPoint(OfxParamHandle handle, int curve, double, int nth, double position, double value, bool) {
    return guarded([&] {
        Parameter& parameter = require<Parameter>(handle);
        return edit(parameter, [&] { parameter.setControlPoint(curve, nth, {position, value}); });
    });
}

OfxStatus addPoint(OfxParamHandle handle, int curve, double, double position, double value, bool) {
    return guarded([&] {
        Parameter& parameter = require<Parameter>(handle);
        return edit(parameter, [&] { parameter.addControlPoint(curve, {position, value}); });
    });
}

OfxStatus deletePoint(OfxParamHandle handle, int curve, int nth) {
    return guarded([&] {
        Parameter& parameter = require<Parameter>(handle);
        return edit(parameter, [&] { parameter.deleteControlPoint(curve, nth); });
    });
}

OfxStatus deletePoints(OfxParamHandle handle, int curve) {
    return guarded([&] {
        Parameter& parameter = require<Parameter>(handle);
        return edit(parameter, [&] { parameter.deleteControlPoints(curve); });
    });
}

} // namespace

const OfxParameterSuiteV1 kParameterSuite = {
    .paramDefine = paramDefine,
    .paramGetHandle = paramGetHandle,
    .paramSetGetPropertySet = paramSetGetPropertySet,
    .paramGetPropertySet = paramGetPropertySet,
    .paramGetValue = paramGetValue,
    .paramGetValueAtTime = paramGetValueAtTime,
    .paramGetDerivative = paramGetDerivative,
    .paramGetIntegral = paramGetIntegral,
    .paramSetValue = paramSetValue,
    .paramSetValueAtTime = paramSetValueAtTime,
    .paramGetNumKeys = paramGetNumKeys,
    .paramGetKeyTime = paramGetKeyTime,
    .paramGetKeyIndex = paramGetKeyIndex,
    .paramDeleteKey = paramDeleteKey,
    .paramDeleteAllKeys = paramDeleteAllKeys,
    .paramCopy = paramCopy,
    .paramEditBegin = paramEditBegin,
    .paramEditEnd = paramEditEnd,
};

const OfxParametricParameterSuiteV1 kParametricSuite = {
    .parametricParamGetValue = curveValue,
    .parametricParamGetNControlPoints = countPoints,
    .parametricParamGetNthControlPoint = getPoint,
    .parametricParamSetNthControlPoint = setPoint,
    .parametricParamAddControlPoint = addPoint,
    .parametricParamDeleteControlPoint = deletePoint,
    .parametricParamDeleteAllControlPoints = deletePoints,
};

} // namespace host
