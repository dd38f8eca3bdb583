// Properties: names with lists of integers, doubles, strings or pointers, and the property suite.
#pragma once
#include <concepts>
#include <map>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "host/error.h"
#include "host/handle.h"

namespace host {

template <class T>
concept PropertyType =
    std::same_as<T, int> || std::same_as<T, double> || std::same_as<T, std::string> || std::same_as<T, void*>;

using PropertyValues =
    std::variant<std::vector<int>, std::vector<double>, std::vector<std::string>, std::vector<void*>>;

// A property that an object has from the start. A list takes any number of values, others keep their dimension.
struct PropertyDefinition {
    std::string name;
    PropertyValues initial;
    bool list = false;
};

// A property set. Plug-ins reach it through the suite; an open set takes any name they set, a closed one knows only
// what the host defined. Every call is safe from any thread; a string handed to a plug-in lives until it is changed.
class PropertySet : public Handle<PropertySet, OfxPropertySetHandle> {
public:
    explicit PropertySet(bool open = true) : open_(open) {}
    PropertySet(const PropertySet& other);

    // Host side: defines a property unless it is there already.
    void define(PropertyDefinition definition);
    void define(std::span<const PropertyDefinition> definitions);
    // Host side: takes over every property of another set that is not here already.
    void inherit(const PropertySet& other);

    // Host side: replaces all values of a property, which is defined as a list if it is new.
    void set(const std::string& name, PropertyValues values);
    template <PropertyType T>
    void set(const std::string& name, T value) {
        set(name, PropertyValues(std::vector<T>{std::move(value)}));
    }
    void set(const std::string& name, const char* value) { set(name, std::string(value)); }

    // Plug-in side: sets one value. Throws Error: unknown name, wrong type, index out of range.
    template <PropertyType T>
    void setAt(const std::string& name, int index, T value);

    // One value. Throws Error like setAt.
    template <PropertyType T>
    T get(const std::string& name, int index = 0) const;
    // One value, or the fallback where there is none of that type.
    template <PropertyType T>
    T getOr(const std::string& name, T fallback, int index = 0) const;
    // All values; none where the property is unknown or of another type.
    template <PropertyType T>
    std::vector<T> all(const std::string& name) const;

    bool has(const std::string& name) const;
    int dimension(const std::string& name) const; // throws Error for an unknown name
    void reset(const std::string& name);          // back to what define() gave
    std::vector<std::string> names() const;       // sorted
    PropertyValues values(const std::string& name) const;

    using Handle::retire;

private:
    friend struct PropertySuite;
    struct Property {
        PropertyValues values, initial;
        bool list;
    };

    const Property& at(const std::string& name) const;
    template <PropertyType T>
    const std::vector<T>& list(const std::string& name) const;
    template <PropertyType T>
    Property& writable(const std::string& name);

    mutable std::shared_mutex mutex_;
    std::map<std::string, Property, std::less<>> properties_;
    bool open_;
};

extern const OfxPropertySuiteV1 kPropertySuite;

} // namespace host
