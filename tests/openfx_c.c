/* The API headers as C code sees them, for comparison with what C++ code sees. */
#include "openfx/openfx.h"

const size_t kSizesInC[] = {
    sizeof(OfxHost),
    sizeof(OfxPlugin),
    sizeof(OfxPropertySuiteV1),
    sizeof(OfxParameterSuiteV1),
    sizeof(OfxParametricParameterSuiteV1),
    sizeof(OfxImageEffectSuiteV1),
    sizeof(OfxMultiThreadSuiteV1),
    sizeof(OfxBytes),
    sizeof(OfxRectI),
    sizeof(OfxRectD),
};
