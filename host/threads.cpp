// The multi-thread suite: a persistent pool of real threads, and mutexes.
#include "host/threads.h"

#include <algorithm>
#include <optional>
#include <system_error>

#include "host/context.h"
#include "host/error.h"
#include "host/handle.h"
#include "host/host.h"
#include "host/instance.h"

namespace host {

namespace {

constexpr unsigned kMostWorkers = 255;

// The index of the call that runs on this thread; none outside.
thread_local std::optional<unsigned> spawnedIndex;

} // namespace

// One call of multiThread. All but the constants is guarded by the pool's mutex.
struct ThreadPool::Job {
    Job(OfxThreadFunctionV1* function, unsigned n, void* custom) : func(function), count(n), argument(custom) {}

    OfxThreadFunctionV1* const func;
    const unsigned count;
    void* const argument;
    const ThreadContext context = ThreadContext::current();
    unsigned started = 0, finished = 0;
    bool failed = false;
    std::condition_variable done;
};

ThreadPool::ThreadPool(unsigned count) : count_(count ? count : std::max(1u, std::thread::hardware_concurrency())) {}

ThreadPool::~ThreadPool() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake_.notify_all();
    for (std::thread& worker : workers_) worker.join();
}

OfxStatus ThreadPool::run(OfxThreadFunctionV1* func, unsigned n, void* argument) {
    if (!func || n == 0) return kOfxStatErrValue;
    if (spawnedIndex) return kOfxStatErrExists;
    const auto job = std::make_shared<Job>(func, n, argument);
    std::unique_lock lock(mutex_);
    if (n > 1) {
        grow(n - 1);
        jobs_.push_back(job);
        wake_.notify_all();
    }
    help(*job, lock);
    job->done.wait(lock, [&] { return job->finished == job->count; });
    return job->failed ? kOfxStatFailed : kOfxStatOK;
}

// More threads, as far as the system gives them: with fewer, some run several indices.
void ThreadPool::grow(unsigned workers) {
    try {
        while (workers_.size() < std::min(workers, kMostWorkers)) workers_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
    }
}

void ThreadPool::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [&] { return ending_ || !jobs_.empty(); });
        if (jobs_.empty()) return;
        const std::shared_ptr<Job> job = jobs_.front();
        help(*job, lock);
    }
}

// Runs indices of a job until all are started. The lock is open while the function runs.
void ThreadPool::help(Job& job, std::unique_lock<std::mutex>& lock) {
    while (job.started < job.count) {
        const unsigned index = job.started++;
        if (job.started == job.count) std::erase_if(jobs_, [&](const auto& waiting) { return waiting.get() == &job; });
        lock.unlock();
        spawnedIndex = index;
        const OfxStatus status = guarded([&] {
            const ContextScope context(job.context);
            job.func(index, job.count, job.argument);
        });
        spawnedIndex.reset();
        lock.lock();
        job.failed = job.failed || status != kOfxStatOK;
        if (++job.finished == job.count) job.done.notify_all();
    }
}

namespace {

// A recursive mutex that can be created locked and notices being unlocked by a thread that does not hold it.
class Mutex : public Handle<Mutex, OfxMutexHandle> {
public:
    explicit Mutex(int locks) : locks_(std::max(0, locks)), owner_(std::this_thread::get_id()) {}

    void lock() {
        std::unique_lock guard(guard_);
        free_.wait(guard, [&] { return isMine(); });
        take();
    }
    bool tryLock() {
        const std::lock_guard guard(guard_);
        if (!isMine()) return false;
        take();
        return true;
    }
    bool unlock() {
        const std::lock_guard guard(guard_);
        if (locks_ == 0 || owner_ != std::this_thread::get_id()) return false;
        if (--locks_ == 0) free_.notify_one();
        return true;
    }

private:
    bool isMine() const { return locks_ == 0 || owner_ == std::this_thread::get_id(); }
    void take() {
        ++locks_;
        owner_ = std::this_thread::get_id();
    }

    std::mutex guard_;
    std::condition_variable free_;
    int locks_;
    std::thread::id owner_;
};

Host& currentHost() {
    if (Host* host = Host::current()) return *host;
    throw Error("there is no host");
}

OfxStatus multiThread(OfxThreadFunctionV1 func, unsigned n, void* argument) {
    return guarded([&] {
        const OfxStatus status = currentHost().threads().run(func, n, argument);
        if (status == kOfxStatFailed) currentHost().report("a function threw an exception out of its thread");
        return status;
    });
}

// A render may be allowed fewer threads than the host has.
unsigned promisedThreads() {
    const unsigned all = currentHost().threads().count();
    const RenderInProgress* render = ThreadContext::current().render;
    return render && render->request.threads > 0 ? std::min(all, render->request.threads) : all;
}

OfxStatus multiThreadNumCPUs(unsigned* count) {
    return guarded([&] { *given(count) = promisedThreads(); });
}

OfxStatus multiThreadIndex(unsigned* index) {
    return guarded([&] { *given(index) = spawnedIndex.value_or(0); });
}

int multiThreadIsSpawnedThread() { return spawnedIndex ? 1 : 0; }

OfxStatus mutexCreate(OfxMutexHandle* mutex, int locks) {
    return guarded([&] {
        *given(mutex) = nullptr;
        *mutex = (new Mutex(locks))->handle();
    });
}

OfxStatus mutexDestroy(const OfxMutexHandle mutex) {
    return guarded([&] { delete &require<Mutex>(mutex); });
}

OfxStatus mutexLock(const OfxMutexHandle mutex) {
    return guarded([&] { require<Mutex>(mutex).lock(); });
}

OfxStatus mutexUnLock(const OfxMutexHandle mutex) {
    return guarded([&] {
        if (require<Mutex>(mutex).unlock()) return kOfxStatOK;
        currentHost().report("a mutex was unlocked by a thread that does not hold it");
        return kOfxStatFailed;
    });
}

OfxStatus mutexTryLock(const OfxMutexHandle mutex) {
    return guarded([&] { return require<Mutex>(mutex).tryLock() ? kOfxStatOK : kOfxStatFailed; });
}

} // namespace

const OfxMultiThreadSuiteV1 kMultiThreadSuite = {
    .multiThread = multiThread,
    .multiThreadNumCPUs = multiThreadNumCPUs,
    .multiThreadIndex = multiThreadIndex,
    .multiThreadIsSpawnedThread = multiThreadIsSpawnedThread,
    .mutexCreate = mutexCreate,
    .mutexDestroy = mutexDestroy,
    .mutexLock = mutexLock,
    .mutexUnLock = mutexUnLock,
    .mutexTryLock = mutexTryLock,
};

} // namespace host
