// The parameters of an effect, in the order of their definition, with their edit blocks.
#include <algorithm>

#include "host/definitions.h"
#include "host/effect.h"
#include "host/host.h"
#include "host/text.h"

namespace host {

ParameterSet::ParameterSet(Effect& effect) : effect_(effect), properties_(effect.host().options().extensions) {
    defineParameterSet(properties_);
}

ParameterSet::ParameterSet(const ParameterSet& described, Effect& effect)
    : effect_(effect), properties_(described.properties_) {
    for (const auto& parameter : described.parameters_) {
        parameters_.push_back(std::make_unique<Parameter>(*parameter, *this));
        byName_[parameter->name()] = parameters_.back().get();
    }
}

Parameter& ParameterSet::define(const std::string& type, const std::string& name) {
    const Kind* kind = findKind(type);
    if (!kind) throw Error("there is no parameter type \"" + type + "\"", kOfxStatErrUnknown);
    if (find(name)) throw Error("there is a parameter \"" + name + "\" already", kOfxStatErrExists);
    parameters_.push_back(std::make_unique<Parameter>(*kind, name, *this));
    return *(byName_[name] = parameters_.back().get());
}

Parameter* ParameterSet::find(const std::string& name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
}

Parameter& ParameterSet::at(const std::string& name) const {
    if (Parameter* found = find(name)) return *found;
    std::vector<std::string> names;
    for (const auto& parameter : parameters_)
        if (parameter->hasValue()) names.push_back(parameter->name());
    const std::string near = suggestion(name, names);
    throw Error("there is no parameter \"" + name + "\"" +
                    (!near.empty()   ? near
                     : names.empty() ? "; the effect has none"
                                     : "; the parameters are " + join(names)),
                kOfxStatErrUnknown);
}

void ParameterSet::beginEdit(const std::string& label) {
    const std::lock_guard lock(editMutex_);
    openEdits_.push_back(label);
}

void ParameterSet::endEdit() {
    const std::lock_guard lock(editMutex_);
    if (openEdits_.empty()) throw Error("an edit block was ended that had not begun");
    edits_.push_back(openEdits_.back());
    openEdits_.pop_back();
}

std::vector<std::string> ParameterSet::edits() const {
    const std::lock_guard lock(editMutex_);
    return edits_;
}

int ParameterSet::openEdits() const {
    const std::lock_guard lock(editMutex_);
    return static_cast<int>(openEdits_.size());
}

} // namespace host
