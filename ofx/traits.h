// What an effect is, as data: one constexpr record per effect from which the framework describes it at the host.
#pragma once

#include <span>

#include "ofx/enumerations.h"
#include "ofx/params.h"
#include "opencl/program.h"

namespace OFX {

inline constexpr Context kGenerator[] = {Context::Generator};
inline constexpr Context kFilter[] = {Context::Filter};
inline constexpr Context kTransition[] = {Context::Transition};

// The defaults are the bundle's conventions.
struct EffectTraits {
    const char* label; // label, short label and long label
    std::span<const Context> contexts;
    std::span<const Param> params;
    OpenCL::Program* program = nullptr; // the kernels; null renders on the CPU only
    int helpContext = 0;                // page of the help file
    const char* upliftGuid = "";        // the legacy effect whose saved keyframes the plug-in takes over
    bool childrenOnPage = true;         // whether the page "Controls" lists the parameters
};

// Input clips of a context, in the order in which effects number them.
std::span<const char* const> sourceClips(Context context);

// The declared context that serves a request: itself, or the first one, since some hosts ask for contexts that were
// never declared.
Context servedContext(const EffectTraits& traits, Context requested);

// The two descriptions. Nothing that a describe has written is ever read back.
void describe(const EffectTraits& traits, OfxImageEffectHandle descriptor);
void describeInContext(const EffectTraits& traits, OfxImageEffectHandle descriptor, Context context);

// The host's compile function; null where the host compiles nothing.
OpenCL::Compile hostCompile();

} // namespace OFX
