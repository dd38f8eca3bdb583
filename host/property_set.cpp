// Properties and the property suite.
#include "host/property_set.h"

#include <algorithm>

namespace host {

namespace {

[[noreturn]] void unknown(const std::string& name) {
    throw Error("there is no property \"" + name + "\"", kOfxStatErrUnknown);
}

[[noreturn]] void badIndex(const std::string& name, int index) {
    throw Error("property \"" + name + "\" has no index " + std::to_string(index), kOfxStatErrBadIndex);
}

int sizeOf(const PropertyValues& values) {
    return std::visit([](const auto& list) { return static_cast<int>(list.size()); }, values);
}

} // namespace

PropertySet::PropertySet(const PropertySet& other) : Handle(other), open_(other.open_) {
    const std::shared_lock lock(other.mutex_);
    properties_ = other.properties_;
}

void PropertySet::define(PropertyDefinition definition) {
    const std::unique_lock lock(mutex_);
    properties_.try_emplace(std::move(definition.name),
                            Property{definition.initial, definition.initial, definition.list});
}

void PropertySet::define(std::span<const PropertyDefinition> definitions) {
    for (const PropertyDefinition& definition : definitions) define(definition);
}

void PropertySet::inherit(const PropertySet& other) {
    const std::scoped_lock lock(mutex_, other.mutex_);
    properties_.insert(other.properties_.begin(), other.properties_.end());
}

void PropertySet::set(const std::string& name, PropertyValues values) {
    const std::unique_lock lock(mutex_);
    const auto [found, isNew] = properties_.try_emplace(name, Property{values, values, true});
    if (!isNew) found->second.values = std::move(values);
}

bool PropertySet::has(const std::string& name) const {
    const std::shared_lock lock(mutex_);
    return properties_.contains(name);
}

int PropertySet::dimension(const std::string& name) const {
    const std::shared_lock lock(mutex_);
    return sizeOf(at(name).values);
}

void PropertySet::reset(const std::string& name) {
    const std::unique_lock lock(mutex_);
    const auto found = properties_.find(name);
    if (found == properties_.end()) unknown(name);
    found->second.values = found->second.initial;
}

std::vector<std::string> PropertySet::names() const {
    const std::shared_lock lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [name, property] : properties_) names.push_back(name);
    return names;
}

PropertyValues PropertySet::values(const std::string& name) const {
    const std::shared_lock lock(mutex_);
    return at(name).values;
}

const PropertySet::Property& PropertySet::at(const std::string& name) const {
    const auto found = properties_.find(name);
    if (found == properties_.end()) unknown(name);
    return found->second;
}

template <PropertyType T>
const std::vector<T>& PropertySet::list(const std::string& name) const {
    if (const auto* values = std::get_if<std::vector<T>>(&at(name).values)) return *values;
    throw Error("property \"" + name + "\" is of another type", kOfxStatErrValue);
}

template <PropertyType T>
PropertySet::Property& PropertySet::writable(const std::string& name) {
    if (open_) properties_.try_emplace(name, Property{std::vector<T>(), std::vector<T>(), true});
    list<T>(name);
    return properties_.find(name)->second;
}

template <PropertyType T>
void PropertySet::setAt(const std::string& name, int index, T value) {
    const std::unique_lock lock(mutex_);
    if (index < 0 || (index > 0 && !properties_.contains(name) && open_)) badIndex(name, index);
    Property& property = writable<T>(name);
    auto& values = std::get<std::vector<T>>(property.values);
    if (index == static_cast<int>(values.size()) && property.list) values.emplace_back();
    if (index >= static_cast<int>(values.size())) badIndex(name, index);
    values[static_cast<std::size_t>(index)] = std::move(value);
}

template <PropertyType T>
T PropertySet::get(const std::string& name, int index) const {
    const std::shared_lock lock(mutex_);
    const auto& values = list<T>(name);
    if (index < 0 || index >= static_cast<int>(values.size())) badIndex(name, index);
    return values[static_cast<std::size_t>(index)];
}

template <PropertyType T>
T PropertySet::getOr(const std::string& name, T fallback, int index) const {
    const std::vector<T> values = all<T>(name);
    return index >= 0 && index < static_cast<int>(values.size()) ? values[static_cast<std::size_t>(index)] : fallback;
}

template <PropertyType T>
std::vector<T> PropertySet::all(const std::string& name) const {
    const std::shared_lock lock(mutex_);
    const auto found = properties_.find(name);
    if (found == properties_.end()) return {};
    const auto* values = std::get_if<std::vector<T>>(&found->second.values);
    return values ? *values : std::vector<T>();
}

#define INSTANTIATE(T)                                                  \
    template void PropertySet::setAt<T>(const std::string&, int, T);    \
    template T PropertySet::get<T>(const std::string&, int) const;      \
    template T PropertySet::getOr<T>(const std::string&, T, int) const; \
    template std::vector<T> PropertySet::all<T>(const std::string&) const;
INSTANTIATE(int)
INSTANTIATE(double)
INSTANTIATE(std::string)
INSTANTIATE(void*)
#undef INSTANTIATE

// The suite: one template per function over the four types. In is what a plug-in passes, Out what it gets.
struct PropertySuite {
    static std::string stored(const char* value) { return given(value); }
    static int stored(int value) { return value; }
    static double stored(double value) { return value; }
    static void* stored(void* value) { return value; }
    static char* handed(const std::string& value) { return const_cast<char*>(value.c_str()); }
    static int handed(int value) { return value; }
    static double handed(double value) { return value; }
    static void* handed(void* value) { return value; }

    template <class T, class In>
    static OfxStatus set(OfxPropertySetHandle properties, const char* name, int index, In value) {
        return guarded([&] { require<PropertySet>(properties).setAt<T>(given(name), index, stored(value)); });
    }

    template <class T, class In>
    static OfxStatus setN(OfxPropertySetHandle properties, const char* name, int count, const In* values) {
        return guarded([&] {
            PropertySet& set = require<PropertySet>(properties);
            if (count < 0) badIndex(given(name), count);
            std::vector<T> list;
            list.reserve(static_cast<std::size_t>(count));
            for (int i = 0; i < count; ++i) list.push_back(stored(given(values)[i]));
            const std::unique_lock lock(set.mutex_);
            PropertySet::Property& property = set.writable<T>(given(name));
            auto& old = std::get<std::vector<T>>(property.values);
            if (!property.list && list.size() > old.size()) badIndex(name, count - 1);
            if (property.list) old.resize(list.size());
            std::move(list.begin(), list.end(), old.begin());
        });
    }

    template <class T, class Out>
    static OfxStatus getN(OfxPropertySetHandle properties, const char* name, int count, Out* values) {
        return guarded([&] {
            const PropertySet& set = require<PropertySet>(properties);
            const std::shared_lock lock(set.mutex_);
            const auto& list = set.list<T>(given(name));
            if (count < 0 || count > static_cast<int>(list.size())) badIndex(name, count - 1);
            for (int i = 0; i < count; ++i) given(values)[i] = handed(list[static_cast<std::size_t>(i)]);
        });
    }

    template <class T, class Out>
    static OfxStatus get(OfxPropertySetHandle properties, const char* name, int index, Out* value) {
        return guarded([&] {
            const PropertySet& set = require<PropertySet>(properties);
            const std::shared_lock lock(set.mutex_);
            const auto& list = set.list<T>(given(name));
            if (index < 0 || index >= static_cast<int>(list.size())) badIndex(name, index);
            *given(value) = handed(list[static_cast<std::size_t>(index)]);
        });
    }

    static OfxStatus reset(OfxPropertySetHandle properties, const char* name) {
        return guarded([&] { require<PropertySet>(properties).reset(given(name)); });
    }

    static OfxStatus dimension(OfxPropertySetHandle properties, const char* name, int* count) {
        return guarded([&] { *given(count) = require<PropertySet>(properties).dimension(given(name)); });
    }
};

const OfxPropertySuiteV1 kPropertySuite = {
    .propSetPointer = PropertySuite::set<void*, void*>,
    .propSetString = PropertySuite::set<std::string, const char*>,
    .propSetDouble = PropertySuite::set<double, double>,
    .propSetInt = PropertySuite::set<int, int>,
    .propSetPointerN = PropertySuite::setN<void*, void*>,
    .propSetStringN = PropertySuite::setN<std::string, const char*>,
    .propSetDoubleN = PropertySuite::setN<double, double>,
    .propSetIntN = PropertySuite::setN<int, int>,
    .propGetPointer = PropertySuite::get<void*, void*>,
    .propGetString = PropertySuite::get<std::string, char*>,
    .propGetDouble = PropertySuite::get<double, double>,
    .propGetInt = PropertySuite::get<int, int>,
    .propGetPointerN = PropertySuite::getN<void*, void*>,
    .propGetStringN = PropertySuite::getN<std::string, char*>,
    .propGetDoubleN = PropertySuite::getN<double, double>,
    .propGetIntN = PropertySuite::getN<int, int>,
    .propReset = PropertySuite::reset,
    .propGetDimension = PropertySuite::dimension,
};

} // namespace host
