// One plug-in of a binary: loading, describing and making instances.
#pragma once
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/effect.h"
#include "host/instance.h"

namespace host {

// A plug-in. Its binary must outlive it; loads on first need and unloads at its end.
class Plugin {
public:
    Plugin(Host& host, OfxPlugin& record, const std::string& bundlePath);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    std::string identifier() const { return record_.pluginIdentifier; }
    unsigned majorVersion() const { return record_.pluginVersionMajor; }
    unsigned minorVersion() const { return record_.pluginVersionMinor; }
    bool isImageEffect() const; // of an API version that this host speaks
    Host& host() const { return host_; }
    OfxPlugin& record() const { return record_; }

    // setHost and Load, once; Unload. load() throws Error with the plug-in's status.
    void load();
    OfxStatus unload();
    bool isLoaded() const { return loaded_; }

    // Described once and kept. Throw Error with the status when the plug-in refuses (kOfxStatErrMissingHostFeature:
    // it cannot work in this host), or for a context that it does not support.
    const Descriptor& describe();
    const Descriptor& describeInContext(const std::string& context);
    std::vector<std::string> contexts() { return describe().contexts(); }
    // Of the contexts that both know: the one with that many inputs (0 generator, 1 filter, 2 transition), else
    // general.
    std::string contextFor(int inputs);

    // Throws Error when the plug-in refuses.
    std::unique_ptr<Instance> createInstance(const std::string& context);

    // Any action on any handle, for this plug-in's main entry. Exceptions from it become kOfxStatFailed and a report.
    OfxStatus action(const char* name, const void* handle, PropertySet* inArgs, PropertySet* outArgs);

private:
    void expect(const char* name, const void* handle, PropertySet* inArgs);

    Host& host_;
    OfxPlugin& record_;
    std::string bundlePath_;
    bool loaded_ = false;
    std::unique_ptr<Descriptor> descriptor_;
    std::map<std::string, std::unique_ptr<Descriptor>> inContext_;
};

} // namespace host
