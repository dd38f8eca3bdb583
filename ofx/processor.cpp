// Row bands and the host's threads.
#include "ofx/processor.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <new>

#include "ofx/image_effect.h"
#include "ofx/log.h"
#include "ofx/suites.h"
#include "pixelops/parallel.h"
#include "pixelops/rows.h"

namespace OFX {
namespace MultiThread {
namespace {

struct Job {
    const std::function<void(unsigned, unsigned)>& function;
    std::atomic<unsigned> started = 0;
    std::atomic<unsigned> count = 0;
    std::exception_ptr failure{};
    std::mutex lock{};
};

// The host's threads are C code: exceptions wait here for the caller.
void trampoline(unsigned index, unsigned count, void* argument) noexcept {
    Job& job = *static_cast<Job*>(argument);
    job.started.fetch_add(1, std::memory_order_relaxed);
    job.count.store(count, std::memory_order_relaxed);
    try {
        job.function(index, count);
        pixelops::finishRows();
    } catch (...) {
        const std::lock_guard guard(job.lock);
        if (!job.failure) job.failure = std::current_exception();
    }
}

unsigned processorCount() {
    unsigned count = 0;
    const auto* suite = suites().multiThread;
    return suite != nullptr && suite->multiThreadNumCPUs(&count) == kOfxStatOK ? count : 1;
}

} // namespace

void run(unsigned requested, const std::function<void(unsigned, unsigned)>& function) {
    const unsigned count = requested != 0 ? requested : processorCount();
    const auto* suite = suites().multiThread;
    if (count > 1 && suite != nullptr) {
        Job job{function};
        const OfxStatus status = suite->multiThread(trampoline, count, &job);
        if (job.failure) std::rethrow_exception(job.failure);
        // Some hosts answer OK and leave indices out.
        if (status == kOfxStatOK && job.started > 0 && job.started == job.count) return;
        log(LogLevel::Warning, "The host's threads failed (status %d); one thread does the work.", status);
    }
    function(0, 1);
    pixelops::finishRows();
}

void stage(std::size_t pieces, const std::function<void(std::size_t, std::size_t)>& function) {
    run(0, [&](unsigned index, unsigned count) {
        const std::size_t first = pieces * index / count, last = pieces * (index + std::size_t{1}) / count;
        if (first < last) function(first, last);
    });
}

void Processor::multiThread(unsigned count) {
    run(count, [this](unsigned index, unsigned n) { multiThreadFunction(index, n); });
}

} // namespace MultiThread

RectI band(const RectI& window, unsigned index, unsigned count) {
    const auto rows = static_cast<unsigned>(height(window));
    const unsigned first = index * rows / count;
    const unsigned last = std::min((index + 1) * rows / count, rows);
    return {window.x1, window.y1 + static_cast<int>(first), window.x2, window.y1 + static_cast<int>(last)};
}

void stageRows(const RectI& area, const std::function<void(const RectI&)>& function) {
    if (empty(area)) return;
    MultiThread::stage(static_cast<std::size_t>(height(area)), [&](std::size_t first, std::size_t last) {
        function({area.x1, area.y1 + static_cast<int>(first), area.x2, area.y1 + static_cast<int>(last)});
    });
}

void ImageProcessor::multiThreadFunction(unsigned index, unsigned count) {
    threads_ = count;
    const RectI rows = band(window, index, count);
    if (!empty(rows)) processWindow(rows);
}

void ImageProcessor::process() {
    if (destination == nullptr || empty(window)) return;
    try {
        preProcess();
    } catch (const std::bad_alloc&) {
        return log(LogLevel::Warning, "No memory for the temporary pictures of a render: nothing is rendered.");
    }
    multiThread(0);
    postProcess();
}

void ImageProcessor::eachRow(const RectI& band, const std::function<void(const RectI&)>& function) const {
    const auto stopped = [this] { return aborted(); };
    pixelops::forRows(height(band), threads_, stopped, [&](int row) {
        const int y = band.y1 + row;
        function({band.x1, y, band.x2, y + 1});
    });
}

bool ImageProcessor::aborted() const { return effect_.aborted(); }

} // namespace OFX
