// The bundle's plug-ins in the order that hosts see.
#pragma once

#include <span>

#include "ofx/factory.h"

namespace bundle {

// One factory per plug-in, built while the library loads; they live as long as it does.
std::span<OFX::PluginFactory* const> factories();

} // namespace bundle
