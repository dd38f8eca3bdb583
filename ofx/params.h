// Parameters, declared once: a constexpr table of rows says what an effect's controls are, and the same rows define
// them at the host, fetch their handles, read their values into an effect's values, and document them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "ofx/enumerations.h"
#include "ofx/property.h"
#include "openfx/openfx.h"

namespace OFX {

enum class Kind {
    Group,
    Page,
    Double,
    Double2D,
    Double3D,
    Integer,
    Boolean,
    Choice,
    RGB,
    RGBA,
    String,
    Custom,
    PushButton
};

// Types of members that a row can fill.
using Boolean = std::uint8_t;
using Choice = std::int32_t;
struct Integer {
    std::int32_t value;
};
using Double2D = std::array<double, 2>;
struct Double3D : std::array<double, 3> {};
struct RGB : std::array<double, 3> {};
using RGBA = std::array<double, 4>;

// A value as it passes between the host and a row: up to four numbers, or a text.
struct ParamValue {
    std::array<double, 4> numbers{};
    std::string text;
};

namespace detail {
template <class>
struct MemberTraits;
template <class V, class T>
struct MemberTraits<T V::*> {
    using Values = V;
    using Type = T;
};

template <class T>
constexpr Kind kindOf() {
    if constexpr (std::is_same_v<T, double> || std::is_same_v<T, float>) return Kind::Double;
    if constexpr (std::is_same_v<T, Double2D>) return Kind::Double2D;
    if constexpr (std::is_same_v<T, Double3D>) return Kind::Double3D;
    if constexpr (std::is_same_v<T, RGB>) return Kind::RGB;
    if constexpr (std::is_same_v<T, RGBA>) return Kind::RGBA;
    if constexpr (std::is_same_v<T, Boolean>) return Kind::Boolean;
    if constexpr (std::is_same_v<T, Choice>) return Kind::Choice;
    if constexpr (std::is_same_v<T, Integer>) return Kind::Integer;
    if constexpr (std::is_same_v<T, std::string>) return Kind::String;
}

template <auto Member>
void store(void* values, const ParamValue& value) {
    using Traits = MemberTraits<decltype(Member)>;
    auto& to = static_cast<typename Traits::Values*>(values)->*Member;
    if constexpr (std::is_arithmetic_v<typename Traits::Type>) {
        to = static_cast<typename Traits::Type>(value.numbers[0]);
    } else if constexpr (std::is_same_v<typename Traits::Type, Integer>) {
        to.value = static_cast<std::int32_t>(value.numbers[0]);
    } else if constexpr (std::is_same_v<typename Traits::Type, std::string>) {
        to = value.text;
    } else {
        for (std::size_t i = 0; i < to.size(); ++i) to[i] = value.numbers[i];
    }
}
} // namespace detail

// Where a row's value goes; made with at<&Values::member>, and the member's type gives the row's kind.
struct Field {
    Kind kind = Kind::Group;
    void (*store)(void* values, const ParamValue& value) = nullptr;
    explicit constexpr operator bool() const { return store != nullptr; }
};

template <auto Member>
inline constexpr Field at = {detail::kindOf<typename detail::MemberTraits<decltype(Member)>::Type>(),
                             detail::store<Member>};

struct Range {
    double min = 0, max = 1;
};

// One control. A row says only what differs from the bundle's conventions, which are the defaults here.
struct Param {
    const char* name;
    const char* label = name; // label, short label and long label
    Field field{};            // empty: a control that no render reads
    Kind kind = field.kind;   // given only where there is no field
    const char* parent = nullptr;
    std::array<double, 4> initial{};
    bool hasDefault = true; // false: the host's own default stands
    Range range{};
    Range display = range;
    std::optional<Range> others{}; // of the components after the first, display range too, where theirs differs
    double increment = 0.1;
    int digits = 3;
    DoubleType doubleType = DoubleType::Scale;
    double wheelLevel = 0; // the luma at which hosts draw a colour wheel, for pairs of angle and magnitude
    bool animates = true;
    bool enabled = true;
    std::span<const char* const> options{};
    bool unlimited = false; // a choice that may be none of the options: the effect sees what the host holds
    const char* text = "";  // default of a text
    const char* hint = "";

    constexpr bool holdsValue() const { return kind != Kind::Group && kind != Kind::Page && kind != Kind::PushButton; }
};

// Defines every row at the host, in order, then the page "Controls" with the rows as its children if asked for.
void defineParams(OfxParamSetHandle set, std::span<const Param> params, bool childrenOnPage);

// A parameter of an instance. Values are read and written as up to four numbers or a text, by kind; reading throws when
// the host fails, and keeps what it gives inside the row's range (scripts and old projects may hold anything).
class ParamHandle {
public:
    ParamHandle(OfxParamHandle handle, PropertySet properties, const Param& row)
        : handle_(handle), properties_(properties), row_(&row) {}

    const Param& row() const { return *row_; }
    ParamValue value() const { return read(nullptr); }
    ParamValue valueAt(double time) const { return read(&time); }
    double number() const { return value().numbers[0]; }
    bool on() const { return number() != 0; }

    // Writes only what changes, so that a host's undo list stays clean. Throws when the host fails.
    void setNumbers(const std::array<double, 4>& numbers) const;
    // A linking rule: while locked, the parameter shows its leader's value and cannot be edited. A host that refuses is
    // left alone; rendering looks at locks itself.
    void follow(const ParamHandle& leader, bool locked) const;
    void setNumber(double number) const { setNumbers({number}); }
    void setNumberAt(double time, double number) const;
    void setEnabled(bool enabled) const { properties_.set(kOfxParamPropEnabled, enabled); }

private:
    ParamValue read(const double* time) const;
    OfxStatus write(const std::array<double, 4>& numbers) const;

    OfxParamHandle handle_;
    PropertySet properties_;
    const Param* row_;
};

// The parameters of an instance, looked up by member or by name.
class ParamSet {
public:
    explicit ParamSet(OfxParamSetHandle set) : set_(set) {}
    // Fetches every row that holds a value or is a button. Throws when the host lacks one.
    void fetch(std::span<const Param> params);

    template <auto Member>
    const ParamHandle& param() const {
        return find([](const Param& row) { return row.field.store == at<Member>.store; });
    }
    const ParamHandle& param(const char* name) const;

    // Every row that has a field, read at a time in frames.
    void readAt(double time, void* values) const;

    OfxParamSetHandle handle() const { return set_; }

private:
    const ParamHandle& find(bool (*wanted)(const Param&)) const;

    OfxParamSetHandle set_;
    std::vector<ParamHandle> params_;
};

// Groups the changes made while it lives into one step of the host's undo list.
class EditBlock {
public:
    EditBlock(const ParamSet& set, const char* label);
    ~EditBlock();
    EditBlock(const EditBlock&) = delete;
    EditBlock& operator=(const EditBlock&) = delete;

private:
    OfxParamSetHandle set_;
};

} // namespace OFX
