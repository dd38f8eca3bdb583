// Rows on several processors, by OpenMP where the build has it.
#include "pixelops/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>

#include "pixelops/rows.h"

#if defined(_OPENMP)
#include <omp.h>
#endif
#if defined(_OPENMP) && defined(_WIN32)
#include <windows.h>
#endif

namespace pixelops {
namespace {

// One loop's state that its workers share. Exceptions wait here for the caller: none may leave a worker.
class Loop {
public:
    Loop(const std::function<bool()>& stopped, const std::function<void(int)>& row) : stopped_(stopped), row_(row) {}

    void run(int y, bool caller) noexcept {
        if (done_.load(std::memory_order_relaxed)) return;
        try {
            if (caller && stopped_()) {
                done_ = true;
            } else {
                row_(y);
            }
        } catch (...) {
            const std::lock_guard guard(lock_);
            if (!failure_) failure_ = std::current_exception();
            done_ = true;
        }
    }
    void rethrow() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    const std::function<bool()>& stopped_;
    const std::function<void(int)>& row_;
    std::atomic<bool> done_ = false;
    std::mutex lock_;
    std::exception_ptr failure_;
};

#if defined(_OPENMP)

// The pool's threads outlive the loop: the library that holds their code must stay where it is. Elsewhere the linker
// sees to that.
void keepLibrary() {
#if defined(_WIN32)
    static const bool kept = [] {
        constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
        HMODULE module = nullptr;
        return GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(&keepLibrary), &module) != 0;
    }();
    static_cast<void>(kept);
#endif
}

void share(Loop& loop, int count, int workers) {
    keepLibrary();
#pragma omp parallel num_threads(workers)
    {
        const bool caller = omp_get_thread_num() == 0;
#pragma omp for schedule(static)
        for (int y = 0; y < count; ++y) loop.run(y, caller);
        finishRows();
    }
}

int processors() { return omp_get_max_threads(); }

#else

void share(Loop&, int, int) {}
int processors() { return 1; }

#endif

} // namespace

void forRows(int count, unsigned callers, const std::function<bool()>& stopped, const std::function<void(int)>& row) {
    Loop loop(stopped, row);
    const int workers = std::min(processors() / static_cast<int>(std::max(callers, 1u)), count);
    if (workers > 1) {
        if (stopped()) return; // before the others start
        share(loop, count, workers);
    } else {
        for (int y = 0; y < count; ++y) loop.run(y, true);
    }
    loop.rethrow();
}

} // namespace pixelops
