// Loops over the rows of a picture on the processors that the host's threads leave idle.
#pragma once

#include <functional>

namespace pixelops {

// Calls row(0) to row(count - 1), each worker for one run of neighbouring rows. `callers` threads of the host are in
// such loops at the same time: each gets max(1, processors / callers) workers, so that one thread still has the whole
// machine and several are never multiplied. The variable OMP_NUM_THREADS stands for the number of processors where it
// is set; builds without OpenMP work on the calling thread alone.
// Only the calling thread asks stopped(), before each of its rows; the others stop with it. The first exception of any
// worker is thrown again here.
void forRows(int count, unsigned callers, const std::function<bool()>& stopped, const std::function<void(int)>& row);

} // namespace pixelops
