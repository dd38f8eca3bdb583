// The command render: runs a chain of effects over frames, from files to a file.
#pragma once
#include "host/cli/arguments.h"

namespace cli {

void render(const Arguments&);

} // namespace cli
