// The host and its suites.
#pragma once

#include "openfx/openfx.h"

namespace OFX {

// The first three are always there; any other may be null, and whoever uses it must do without.
struct Suites {
    const OfxImageEffectSuiteV1* imageEffect = nullptr;
    const OfxPropertySuiteV1* property = nullptr;
    const OfxParameterSuiteV1* parameter = nullptr;
    const OfxMemorySuiteV1* memory = nullptr;
    const OfxMultiThreadSuiteV1* multiThread = nullptr;
    const OfxMessageSuiteV1* message = nullptr;
    const OfxProgressSuiteV1* progress = nullptr;
    const OfxTimeLineSuiteV1* timeLine = nullptr;
    const OfxInteractSuiteV1* interact = nullptr;
    const OfxOpenCLProgramSuiteV1* openCLProgram = nullptr;
    const void* orvixProgress = nullptr;
    const void* orvixStereoscopicImageEffect = nullptr;
    const void* orvixKeyframe = nullptr;
    const void* orvixEffect = nullptr;
    const void* hWndInteract = nullptr;
    const void* hWndOverlayInteract = nullptr;

    bool operator==(const Suites&) const = default;
};

// Stores the host. Hosts call this once per plug-in and again before uses; it costs nothing and fetches nothing.
void setHost(const OfxHost* host) noexcept;

// Fetches the suites of the host. Called at every load, from any thread, also while others render: a table once handed
// out stays valid, and an unchanged one stays in place. Throws HostInadequate without a host or a mandatory suite.
void loadSuites();

// The suites fetched last. Throws HostInadequate before the first load.
const Suites& suites();

} // namespace OFX
