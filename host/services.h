// The small suites: memory, messages, progress, time line, interacts.
#pragma once
#include "openfx/openfx.h"

namespace host {

extern const OfxMemorySuiteV1 kMemorySuite;
extern const OfxMessageSuiteV1 kMessageSuiteV1;
extern const OfxMessageSuiteV2 kMessageSuiteV2;
extern const OfxProgressSuiteV1 kProgressSuiteV1;
extern const OfxProgressSuiteV2 kProgressSuiteV2;
extern const OfxTimeLineSuiteV1 kTimeLineSuite;
extern const OfxInteractSuiteV1 kInteractSuite;

} // namespace host
