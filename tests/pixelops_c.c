/* The pixel library's header as C code sees it, for comparison with what C++ code sees. */
#include "pixelops/kr_pixelops.h"

const int32_t kFailedInC = KR_FAILED;
const size_t kPixelSizesInC[] = {
    sizeof(KRRGBA), sizeof(KRDIBPIXEL), sizeof(KRRGBAFLOAT), sizeof(KRHSL), sizeof(KRLAB), sizeof(KRRECTF),
};
int32_t (*const kOperationInC)(cl_mem, cl_mem, uint32_t, cl_command_queue) = 0;
