// Names of the standard's status codes.
#include "host/error.h"

#include <utility>

#include "openfx/openfx.h"

namespace host {

std::string statusName(OfxStatus status) {
#define NAME(code) \
    { code, #code }
    static constexpr std::pair<OfxStatus, const char*> kNames[] = {
        NAME(kOfxStatOK),
        NAME(kOfxStatFailed),
        NAME(kOfxStatErrFatal),
        NAME(kOfxStatErrUnknown),
        NAME(kOfxStatErrMissingHostFeature),
        NAME(kOfxStatErrUnsupported),
        NAME(kOfxStatErrExists),
        NAME(kOfxStatErrFormat),
        NAME(kOfxStatErrMemory),
        NAME(kOfxStatErrBadHandle),
        NAME(kOfxStatErrBadIndex),
        NAME(kOfxStatErrValue),
        NAME(kOfxStatReplyYes),
        NAME(kOfxStatReplyNo),
        NAME(kOfxStatReplyDefault),
        NAME(kOfxStatUnlicensed),
        NAME(kOfxStatErrImageFormat),
        NAME(kOfxStatGPUOutOfMemory),
        NAME(kOfxStatGPURenderFailed),
    };
#undef NAME
    for (const auto& [code, name] : kNames)
        if (code == status) return name;
    return "status " + std::to_string(status);
}

} // namespace host
