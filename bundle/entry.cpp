// The functions that a host finds in the library.
#include <vector>

#include "bundle/registry.h"
#include "ofx/log.h"
#include "ofx/suites.h"

namespace {

void setHostOfPlugin(OfxHost* host) { OFX::setHost(host); }

// A copy of the factory list, and a record per plug-in. Built on the first call and kept to the very end: hosts call in
// after the library's static destructors have run.
struct Registry {
    std::vector<OFX::PluginFactory*> factories;
    std::vector<OfxPlugin> records;
};

const Registry& registry() {
    static const Registry& built = *[] {
        const auto factories = bundle::factories();
        auto* r = new Registry{{factories.begin(), factories.end()}, {}};
        for (OFX::PluginFactory* factory : r->factories) {
            r->records.push_back({kOfxImageEffectPluginApi, kOfxImageEffectPluginApiVersion, factory->identifier(),
                                  factory->versionMajor(), factory->versionMinor(), setHostOfPlugin,
                                  factory->mainEntry()});
        }
        return r;
    }();
    return built;
}

} // namespace

OfxExport int OfxGetNumberOfPlugins(void) {
    try {
        return static_cast<int>(registry().records.size());
    } catch (...) {
        return 0; // out of memory; the next call tries again
    }
}

OfxExport OfxPlugin* OfxGetPlugin(int nth) {
    try {
        const auto& records = registry().records;
        const int count = static_cast<int>(records.size());
        if (nth < 0 || nth >= count) {
            OFX::log(OFX::LogLevel::Error,
                     "Host attempted to get plugin %d, when there is only %d plugin(s), so it should have asked for 0.",
                     nth, count);
            return nullptr;
        }
        return const_cast<OfxPlugin*>(&records[static_cast<std::size_t>(nth)]);
    } catch (...) {
        return nullptr;
    }
}

OfxExport OfxStatus OfxSetHost(const OfxHost* host) {
    if (host == nullptr) return kOfxStatFailed;
    OFX::setHost(host);
    return kOfxStatOK;
}
