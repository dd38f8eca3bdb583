// The multi-thread suite: a persistent pool of real threads, and mutexes.
#pragma once
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "openfx/openfx.h"

namespace host {

// Threads that run a function once for each index. Several callers may do so at once; calls do not nest.
class ThreadPool {
public:
    explicit ThreadPool(unsigned count); // 0: as many as the hardware runs at once
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    unsigned count() const { return count_; }
    // Runs func(i, n, argument) for each i < n, the calling thread helping, and waits. Answers what the suite answers.
    OfxStatus run(OfxThreadFunctionV1* func, unsigned n, void* argument);

private:
    struct Job;
    void work();
    void help(Job& job, std::unique_lock<std::mutex>& lock);
    void grow(unsigned workers);

    const unsigned count_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::shared_ptr<Job>> jobs_; // with indices left to start
    std::vector<std::thread> workers_;
    bool ending_ = false;
};

extern const OfxMultiThreadSuiteV1 kMultiThreadSuite;

} // namespace host
