// A property set of the host. Hosts differ in what they know, so reading is optional unless asked otherwise and writing
// what a host does not know is no error.
#pragma once

#include <optional>

#include "openfx/core.h"

namespace OFX {

class PropertySet {
public:
    PropertySet() = default;
    explicit PropertySet(OfxPropertySetHandle handle) : handle_(handle) {}

    explicit operator bool() const { return handle_ != nullptr; }
    OfxPropertySetHandle handle() const { return handle_; }

    // The value, or nothing when the host answers anything but OK (hosts use half a dozen statuses for "no such
    // property"). T is int, double, const char* or void*. A null string reads as absent.
    template <class T>
    std::optional<T> find(const char* name, int index = 0) const;

    // The value; throws PropertyUnknownToHost when there is none.
    template <class T>
    T get(const char* name, int index = 0) const;

    // Writes a value; false, and a line in the log, when the host refuses.
    bool set(const char* name, int value, int index = 0) const;
    bool set(const char* name, double value, int index = 0) const;
    bool set(const char* name, const char* value, int index = 0) const;
    bool set(const char* name, void* value, int index = 0) const;
    bool set(const char* name, bool value, int index = 0) const { return set(name, value ? 1 : 0, index); }

private:
    OfxPropertySetHandle handle_ = nullptr;
};

} // namespace OFX
