// The end of a run of rows.
#include "pixelops/rows.h"

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace pixelops {

void finishRows() {
#if defined(__x86_64__)
    _mm_sfence();
#endif
}

} // namespace pixelops
