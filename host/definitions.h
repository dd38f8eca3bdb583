// The properties that the standard gives each object, with their defaults.
#pragma once
#include "host/property_set.h"

namespace host {

struct Kind;
struct Options;

// Each fills a new set. Names that belong to one object (its own name, its label) follow.
void defineHost(PropertySet& properties, const Options& options);
void defineDescriptor(PropertySet& properties, const std::string& binaryPath);
void defineInstance(PropertySet& properties, const std::string& context, const Options& options);
void defineClip(PropertySet& properties, const std::string& name);
void defineClipInstance(PropertySet& properties, const Options& options);
void defineParameterSet(PropertySet& properties);
void defineParameter(PropertySet& properties, const Kind& kind, const std::string& name);

} // namespace host
