// Parameters: their kinds, values and keys, as text for people and through the parameter suites for plug-ins.
#pragma once
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/property_set.h"
#include "openfx/openfx.h"

namespace host {

class Effect;
class ParameterSet;

// What a parameter's value is made of.
enum class ValueType { None, Integer, Double, String, Bytes };

// A kind of parameter: one row of the table that everything else derives from.
struct Kind {
    const char* type; // kOfxParamType...
    const char* word; // for messages and lists: "double", "choice"
    ValueType value;
    int components;
    bool interpolates; // linearly between keys; the others step
    bool animates;     // unless the plug-in says otherwise
};
const Kind* findKind(const std::string& type);

// A value: numbers (integers, booleans and choice indices are exact in a double) or text (strings, bytes, and the enum
// of a string choice).
struct Value {
    std::array<double, 4> numbers{};
    std::string text;
    bool operator==(const Value&) const = default;
};

// A point of a parametric curve.
struct ControlPoint {
    double position, value;
};

// One parameter of a descriptor or an instance. Values and keys are safe from any thread.
class Parameter : public Handle<Parameter, OfxParamHandle> {
public:
    Parameter(const Kind& kind, const std::string& name, ParameterSet& owner);
    Parameter(const Parameter& described, ParameterSet& owner); // with the described default as value

    const std::string& name() const { return name_; }
    const Kind& kind() const { return kind_; }
    ParameterSet& owner() const { return owner_; }
    PropertySet& properties() { return properties_; }
    const PropertySet& properties() const { return properties_; }
    bool hasValue() const { return kind_.value != ValueType::None; }
    bool canAnimate() const;

    // Values as the suite takes them: no range checks. set() makes a key at the host's time when there are keys;
    // setKey() sets the static value of a parameter that cannot animate.
    Value value(double time) const;
    double number(double time, int component = 0) const { return value(time).numbers.at(std::size_t(component)); }
    Value defaultValue() const;
    void set(const Value& value);
    void setKey(double time, const Value& value);
    void reset(); // the default, no keys

    std::vector<double> keys() const; // times, increasing
    bool deleteKey(double time);
    void deleteKeys();
    // Numbers that interpolate only; others throw Error with kOfxStatErrUnsupported.
    Value derivative(double time) const;
    Value integral(double from, double to) const;
    // Value and keys of another parameter of the same kind, keys in the range only, moved by the offset.
    void copy(const Parameter& from, double offset, const OfxRangeD* range);

    // Text: "0.5"; "1,0,0,1"; "true"; the text or the index of an option; a string as it stands; bytes as hexadecimal.
    // Throws Error that names what is wrong and what is allowed; the parameter is then unchanged.
    void setText(const std::string& text);
    void setKeys(const std::string& text); // "0:0.1,24:1"; replaces all keys
    std::string text(double time) const;
    std::string text(const Value& value) const;
    Value parse(const std::string& text) const;
    std::string allowed() const;              // "a number from 0 to 1", "one of Red, Green, Blue"
    std::vector<std::string> options() const; // of choices

    // Curves of a parametric parameter, linear between points, constant outside.
    double curveValue(int curve, double position) const;
    std::vector<ControlPoint> controlPoints(int curve) const;
    void addControlPoint(int curve, ControlPoint point); // replaces one at the same position
    void setControlPoint(int curve, int index, ControlPoint point);
    void deleteControlPoint(int curve, int index);
    void deleteControlPoints(int curve);

    // A string that stays at its address as long as the parameter lives.
    const std::string& keep(const std::string& text) const;

private:
    using Key = std::pair<const double, Value>;
    Value interpolate(const Key& before, const Key& after, double time) const;
    Value interpolateCustom(const Key& before, const Key& after, double time) const;
    void replaceKeys(std::map<double, Value> keys);
    void keysChanged();
    Value parseNumbers(const std::string& text, const std::function<void(const std::string&)>& refuse) const;
    std::vector<ControlPoint>& curve(int index) const;

    const Kind& kind_;
    const std::string name_;
    ParameterSet& owner_;
    PropertySet properties_;
    mutable std::shared_mutex mutex_;
    Value static_;
    std::map<double, Value> keys_;
    mutable std::map<int, std::vector<ControlPoint>> curves_; // as the plug-in or the user made them
    mutable std::set<std::string> kept_;
};

// The parameters of an effect, in the order of their definition, with their edit blocks.
class ParameterSet : public Handle<ParameterSet, OfxParamSetHandle> {
public:
    explicit ParameterSet(Effect& effect);
    ParameterSet(const ParameterSet& described, Effect& effect);

    Effect& effect() const { return effect_; }
    PropertySet& properties() { return properties_; }

    Parameter& define(const std::string& type, const std::string& name); // throws Error
    Parameter* find(const std::string& name) const;                      // null when there is none
    Parameter& at(const std::string& name) const;                        // throws Error with the nearest names
    const std::vector<std::unique_ptr<Parameter>>& all() const { return parameters_; }

    // Edit blocks: their labels in the order they were closed; the nesting of those still open.
    void beginEdit(const std::string& label);
    void endEdit(); // throws Error when none is open
    std::vector<std::string> edits() const;
    int openEdits() const;

private:
    Effect& effect_;
    PropertySet properties_;
    std::vector<std::unique_ptr<Parameter>> parameters_;
    std::map<std::string, Parameter*> byName_;
    mutable std::mutex editMutex_;
    std::vector<std::string> openEdits_, edits_;
};

extern const OfxParameterSuiteV1 kParameterSuite;
extern const OfxParametricParameterSuiteV1 kParametricSuite;

} // namespace host
