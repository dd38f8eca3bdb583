// What a described effect and a living instance have in common: properties, parameters and clips.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "host/clip.h"
#include "host/parameter.h"

namespace host {

class Host;

// The object behind an OfxImageEffectHandle.
class Effect : public Handle<Effect, OfxImageEffectHandle> {
public:
    virtual ~Effect();

    Host& host() const { return host_; }
    double time() const; // where the host's time line stands
    PropertySet& properties() { return properties_; }
    const PropertySet& properties() const { return properties_; }
    ParameterSet& parameters() { return parameters_; }
    const ParameterSet& parameters() const { return parameters_; }
    const std::vector<std::unique_ptr<Clip>>& clips() const { return clips_; }
    Clip* findClip(const std::string& name) const; // null when there is none
    Clip& clip(const std::string& name) const;     // throws Error that names the clips

    // What a plug-in may do only while it describes, or only with an instance.
    virtual bool isInstance() const = 0;
    // A plug-in has written to a parameter.
    virtual void parameterEdited(Parameter&) {}

protected:
    explicit Effect(Host& host);
    explicit Effect(const Effect& described); // properties and parameters, not the clips

    Host& host_;
    PropertySet properties_;
    ParameterSet parameters_;
    std::vector<std::unique_ptr<Clip>> clips_;
};

// What a plug-in says of itself, at first in general and then for one context.
class Descriptor : public Effect {
public:
    Descriptor(Host& host, const std::string& binaryPath);
    Descriptor(const Descriptor& general, const std::string& context); // starts with the general properties

    const std::string& context() const { return context_; } // empty for the general one
    Clip& defineClip(const std::string& name);              // throws Error for a name in use
    bool isInstance() const override { return false; }

    std::string label() const;
    std::string grouping() const;
    std::vector<std::string> contexts() const;
    std::vector<std::string> depths() const;
    bool supports(Depth depth) const;

private:
    std::string context_;
};

} // namespace host
