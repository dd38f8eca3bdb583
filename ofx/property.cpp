// Property access through the host's property suite.
#include "ofx/property.h"

#include "ofx/exception.h"
#include "ofx/log.h"
#include "ofx/suites.h"

namespace OFX {
namespace {

OfxStatus read(OfxPropertySetHandle set, const char* name, int index, int* value) {
    return suites().property->propGetInt(set, name, index, value);
}
OfxStatus read(OfxPropertySetHandle set, const char* name, int index, double* value) {
    return suites().property->propGetDouble(set, name, index, value);
}
OfxStatus read(OfxPropertySetHandle set, const char* name, int index, const char** value) {
    char* text = nullptr;
    const OfxStatus status = suites().property->propGetString(set, name, index, &text);
    *value = text;
    return status == kOfxStatOK && text == nullptr ? kOfxStatErrUnknown : status;
}
OfxStatus read(OfxPropertySetHandle set, const char* name, int index, void** value) {
    return suites().property->propGetPointer(set, name, index, value);
}

bool accepted(OfxStatus status, const char* name) {
    if (status != kOfxStatOK) log(LogLevel::Debug, "The host refuses property '%s' (status %d).", name, status);
    return status == kOfxStatOK;
}

} // namespace

template <class T>
std::optional<T> PropertySet::find(const char* name, int index) const {
    T value{};
    if (handle_ == nullptr || read(handle_, name, index, &value) != kOfxStatOK) return std::nullopt;
    return value;
}

template <class T>
T PropertySet::get(const char* name, int index) const {
    const auto value = find<T>(name, index);
    if (!value) throw Exception::PropertyUnknownToHost(name);
    return *value;
}

template std::optional<int> PropertySet::find(const char*, int) const;
template std::optional<double> PropertySet::find(const char*, int) const;
template std::optional<const char*> PropertySet::find(const char*, int) const;
template std::optional<void*> PropertySet::find(const char*, int) const;
template int PropertySet::get(const char*, int) const;
template double PropertySet::get(const char*, int) const;
template const char* PropertySet::get(const char*, int) const;
template void* PropertySet::get(const char*, int) const;

bool PropertySet::set(const char* name, int value, int index) const {
    return accepted(suites().property->propSetInt(handle_, name, index, value), name);
}
bool PropertySet::set(const char* name, double value, int index) const {
    return accepted(suites().property->propSetDouble(handle_, name, index, value), name);
}
bool PropertySet::set(const char* name, const char* value, int index) const {
    return accepted(suites().property->propSetString(handle_, name, index, value), name);
}
bool PropertySet::set(const char* name, void* value, int index) const {
    return accepted(suites().property->propSetPointer(handle_, name, index, value), name);
}

} // namespace OFX
