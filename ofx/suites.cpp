// Fetching suites. Tables are kept for the life of the library, one per distinct set of suites that hosts handed out,
// so that a load never takes a table away from a running render.
#include "ofx/suites.h"

#include <atomic>
#include <forward_list>
#include <mutex>
#include <string>

#include "ofx/exception.h"
#include "ofx/log.h"

namespace OFX {
namespace {

std::atomic<const OfxHost*> currentHost = nullptr;
std::atomic<const Suites*> currentSuites = nullptr;

template <class Suite>
void fetch(const OfxHost& host, const Suite*& suite, const char* name, bool mandatory) {
    suite = static_cast<const Suite*>(host.fetchSuite(host.host, name, 1));
    if (suite != nullptr) return;
    if (mandatory) throw Exception::HostInadequate(std::string("the host lacks ") + name);
    log(LogLevel::Info, "Could not fetch the optional suite '%s' version %d.", name, 1);
}

Suites fetchAll(const OfxHost& host) {
    Suites s;
    fetch(host, s.imageEffect, kOfxImageEffectSuite, true);
    fetch(host, s.property, kOfxPropertySuite, true);
    fetch(host, s.parameter, kOfxParameterSuite, true);
    fetch(host, s.memory, kOfxMemorySuite, false);
    fetch(host, s.multiThread, kOfxMultiThreadSuite, false);
    fetch(host, s.message, kOfxMessageSuite, false);
    fetch(host, s.progress, kOfxProgressSuite, false);
    fetch(host, s.timeLine, kOfxTimeLineSuite, false);
    fetch(host, s.interact, kOfxInteractSuite, false);
    fetch(host, s.openCLProgram, kOfxOpenCLProgramSuite, false);
    fetch(host, s.orvixProgress, kOfxOrvixProgressSuite, false);
    fetch(host, s.orvixStereoscopicImageEffect, kOfxOrvixStereoscopicImageEffectSuite, false);
    fetch(host, s.orvixKeyframe, kOfxOrvixKeyframeSuite, false);
    fetch(host, s.orvixEffect, kOfxOrvixEffectSuite, false);
    fetch(host, s.hWndInteract, kOfxHWndInteractSuite, false);
    fetch(host, s.hWndOverlayInteract, kOfxHWndOverlayInteractSuite, false);
    return s;
}

} // namespace

void setHost(const OfxHost* host) noexcept { currentHost.store(host, std::memory_order_release); }

void loadSuites() {
    static std::mutex lock;
    // Never destroyed: hosts call in after the static destructors of a library have run.
    static auto& tables = *new std::forward_list<Suites>;

    const std::lock_guard guard(lock);
    const OfxHost* host = currentHost.load(std::memory_order_acquire);
    if (host == nullptr || host->fetchSuite == nullptr) throw Exception::HostInadequate("no host was set");
    const Suites fetched = fetchAll(*host);
    for (const Suites& known : tables) {
        if (known == fetched) {
            currentSuites.store(&known, std::memory_order_release);
            return;
        }
    }
    currentSuites.store(&tables.emplace_front(fetched), std::memory_order_release);
}

const Suites& suites() {
    const Suites* loaded = currentSuites.load(std::memory_order_acquire);
    if (loaded == nullptr) throw Exception::HostInadequate("used before it was loaded");
    return *loaded;
}

} // namespace OFX
