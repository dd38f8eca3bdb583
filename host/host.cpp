// The host itself: what it tells plug-ins of itself, and the suites it offers.
#include "host/host.h"

#include <algorithm>
#include <string_view>

#include "host/context.h"
#include "host/definitions.h"
#include "host/instance.h"
#include "host/opencl.h"
#include "host/services.h"

namespace host {

namespace {

struct OfferedSuite {
    std::string_view name;
    int version;
    const void* suite;
};

const OfferedSuite kSuites[] = {
    {kOfxPropertySuite, 1, &kPropertySuite},
    {kOfxParameterSuite, 1, &kParameterSuite},
    {kOfxParametricParameterSuite, 1, &kParametricSuite},
    {kOfxImageEffectSuite, 1, &kImageEffectSuite},
    {kOfxMemorySuite, 1, &kMemorySuite},
    {kOfxMultiThreadSuite, 1, &kMultiThreadSuite},
    {kOfxMessageSuite, 1, &kMessageSuiteV1},
    {kOfxMessageSuite, 2, &kMessageSuiteV2},
    {kOfxProgressSuite, 1, &kProgressSuiteV1},
    {kOfxProgressSuite, 2, &kProgressSuiteV2},
    {kOfxTimeLineSuite, 1, &kTimeLineSuite},
    {kOfxInteractSuite, 1, &kInteractSuite},
    {kOfxOpenCLProgramSuite, 1, &kOpenCLProgramSuite}, // only with a device
};

// The hosts of this process, oldest first.
struct Hosts {
    std::mutex mutex;
    std::vector<Host*> all;

    static Hosts& instance() {
        static Hosts hosts;
        return hosts;
    }
};

const void* fetchSuite(OfxPropertySetHandle handle, const char* name, int version) {
    const void* suite = nullptr;
    guarded([&] {
        const Host* host = LiveTable<Host>::instance().find(handle);
        if (host && name) suite = host->suite(name, version);
    });
    return suite;
}

} // namespace

Host::Host(Options options)
    : options_(std::move(options)),
      properties_(options_.extensions),
      record_{properties_.handle(), fetchSuite},
      time_(options_.time),
      threads_(options_.threads) {
    defineHost(properties_, options_);
    LiveTable<Host>::instance().insert(properties_.handle(), this);
    Hosts& hosts = Hosts::instance();
    const std::lock_guard lock(hosts.mutex);
    hosts.all.push_back(this);
}

Host::~Host() {
    LiveTable<Host>::instance().erase(properties_.handle());
    Hosts& hosts = Hosts::instance();
    const std::lock_guard lock(hosts.mutex);
    std::erase(hosts.all, this);
}

Host* Host::current() {
    if (Host* host = ThreadContext::current().host) return host;
    Hosts& hosts = Hosts::instance();
    const std::lock_guard lock(hosts.mutex);
    return hosts.all.empty() ? nullptr : hosts.all.back();
}

const void* Host::suite(const char* name, int version) const {
    const auto found = std::find_if(std::begin(kSuites), std::end(kSuites), [&](const OfferedSuite& offered) {
        return offered.name == name && offered.version == version;
    });
    const void* ours = found == std::end(kSuites) ? nullptr : found->suite;
    if (ours == &kOpenCLProgramSuite && !options_.openCL) ours = nullptr;
    return options_.suiteFilter ? options_.suiteFilter(name, version, ours) : ours;
}

OfxStatus Host::message(const char* type, const char* id, const char* text) const {
    if (options_.onMessage) return options_.onMessage(type, id, text);
    return type == std::string_view(kOfxMessageQuestion) ? kOfxStatReplyNo : kOfxStatOK;
}

void Host::report(const std::string& misuse) {
    const std::lock_guard lock(mutex_);
    misuse_.push_back(misuse);
}

std::vector<std::string> Host::misuse() const {
    const std::lock_guard lock(mutex_);
    return misuse_;
}

void Host::clearMisuse() {
    const std::lock_guard lock(mutex_);
    misuse_.clear();
}

} // namespace host
