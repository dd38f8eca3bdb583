/* The OpenFX C API, version 1.5, and the extensions of the editors that this bundle serves, in one include. */
#ifndef OPENFX_OPENFX_H
#define OPENFX_OPENFX_H

#include "openfx/core.h"
#include "openfx/extensions.h"
#include "openfx/gpu.h"
#include "openfx/image_effect.h"
#include "openfx/params.h"
#include "openfx/suites.h"

#endif
