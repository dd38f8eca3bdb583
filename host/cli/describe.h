// The commands that tell about effects: list and describe, as text or as JSON.
#pragma once
#include "host/cli/arguments.h"
#include "host/cli/catalogue.h"

namespace cli {

// Without the prefix that all names of a kind share: "filter" for "OfxImageEffectContextFilter", "byte" for
// "OfxBitDepthByte".
std::string plainContext(const std::string& context);
std::string plainDepth(const std::string& depth);

// One line per effect: identifier, contexts, label. Effects that are described by their bundle but not built yet are
// left out unless `all` is set; JSON has them always, marked.
void listEffects(Catalogue&, const ListArguments&);

// One line per OpenCL device: its number, name, platform and version.
void listDevices();

void describeEffect(Catalogue&, const DescribeArguments&);

} // namespace cli
