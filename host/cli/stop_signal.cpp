// The handler only notes the signal and steps aside, so that the next one has its usual effect.
#include "host/cli/stop_signal.h"

#include <atomic>
#include <csignal>

#include "host/cli/error.h"

namespace cli {
namespace {

// The system may run the handler on any thread, and all of them ask.
std::atomic<int> received = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler must not lock");

extern "C" void noteSignal(int signal) {
    received = signal;
    std::signal(signal, SIG_DFL);
}

} // namespace

void watchStopSignals() {
    std::signal(SIGINT, noteSignal);
    std::signal(SIGTERM, noteSignal);
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away shows as a failed write
#endif
}

int stopSignal() { return received; }

void checkStop() {
    if (received != 0) throw Interrupted(received);
}

} // namespace cli
