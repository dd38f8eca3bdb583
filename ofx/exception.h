// The exceptions of the OFX layer. The dispatcher is the one place that catches them and answers the host.
#pragma once

#include <stdexcept>
#include <string>

#include "openfx/core.h"

namespace OFX::Exception {

// A suite call failed, or the bundle itself has to answer a status; the host receives it.
class Suite : public std::runtime_error {
public:
    Suite(OfxStatus status, const std::string& what) : std::runtime_error(what), status_(status) {}
    OfxStatus status() const { return status_; }

private:
    OfxStatus status_;
};

// The host lacks something without which the bundle cannot go on.
class HostInadequate : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A property that must be there is unknown to the host.
class PropertyUnknownToHost : public std::runtime_error {
public:
    explicit PropertyUnknownToHost(const char* property) : std::runtime_error(property) {}
};

// Throws when a suite call did not answer OK.
inline void throwUnlessOK(OfxStatus status, const char* call) {
    if (status != kOfxStatOK) throw Suite(status, std::string(call) + " answered " + std::to_string(status));
}

} // namespace OFX::Exception
