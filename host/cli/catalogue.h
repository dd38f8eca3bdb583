// The effects that the program knows, and the bundles where they are found.
#pragma once
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/binary.h"
#include "host/host.h"

namespace cli {

// What a user may call an effect: the part of its identifier after the last colon, else after the last dot.
std::string shortName(const std::string& identifier);

class Catalogue {
public:
    // These bundles only; with none: ours, then those of OFX_PLUGIN_PATH and of the system's folders.
    Catalogue(host::Host&, const std::vector<std::string>& bundles);

    // By identifier or short name. Opens bundles until it is found; throws when it is unknown, with the nearest
    // names, or cannot be used.
    host::Plugin& find(const std::string& effect);
    // Every image effect, in the order of the bundles; of several versions the newest.
    std::vector<host::Plugin*> all();
    const host::Binary& binaryOf(const host::Plugin&) const;
    // Why the effect cannot be used; empty when it can, and then it is described.
    std::string obstacle(host::Plugin&) const;

private:
    host::Binary* openNext(); // null when all are open; one that cannot be loaded is reported and left out

    host::Host& host_;
    bool chosen_; // the user named the bundles
    std::vector<std::filesystem::path> paths_;
    std::size_t next_ = 0;
    std::vector<std::unique_ptr<host::Binary>> binaries_;
};

} // namespace cli
