// Finds effects. Bundles are opened one after the other and only as far as needed: a machine may have many.
#include "host/cli/catalogue.h"

#include <algorithm>
#include <iostream>

#include "host/cli/error.h"
#include "host/cli/system.h"
#include "host/text.h"

namespace cli {
namespace fs = std::filesystem;
namespace {

constexpr const char* kOurBundle = "OrvixEffects.ofx.bundle";

// Ours lies beside the program where it was built, and in the prefix where it was installed.
std::vector<fs::path> ourBundle() {
    const fs::path folder = programFolder(), name = kOurBundle;
    for (const fs::path& bundle : {folder / name, folder.parent_path() / "OFX" / "Plugins" / name})
        if (fs::is_directory(bundle)) return {bundle};
    return {};
}

bool newer(const host::Plugin& a, const host::Plugin& b) {
    return std::pair(a.majorVersion(), a.minorVersion()) > std::pair(b.majorVersion(), b.minorVersion());
}

// The effects of a binary, each in its newest version.
std::vector<host::Plugin*> effectsOf(const host::Binary& binary) {
    std::vector<host::Plugin*> effects;
    for (const auto& plugin : binary.plugins()) {
        if (!plugin->isImageEffect()) continue;
        const auto same = std::find_if(effects.begin(), effects.end(), [&](const host::Plugin* known) {
            return known->identifier() == plugin->identifier();
        });
        if (same == effects.end())
            effects.push_back(plugin.get());
        else if (newer(*plugin, **same))
            *same = plugin.get();
    }
    return effects;
}

host::Plugin* findIn(const host::Binary& binary, const std::string& effect) {
    const std::vector<host::Plugin*> effects = effectsOf(binary);
    for (host::Plugin* plugin : effects)
        if (plugin->identifier() == effect) return plugin;
    for (host::Plugin* plugin : effects)
        if (host::lower(shortName(plugin->identifier())) == host::lower(effect)) return plugin;
    return nullptr;
}

} // namespace

std::string shortName(const std::string& identifier) {
    const std::size_t colon = identifier.rfind(':');
    const std::size_t cut = colon != std::string::npos ? colon : identifier.rfind('.');
    return cut == std::string::npos ? identifier : identifier.substr(cut + 1);
}

Catalogue::Catalogue(host::Host& host, const std::vector<std::string>& bundles)
    : host_(host), chosen_(!bundles.empty()), paths_(bundles.begin(), bundles.end()) {
    if (chosen_) return;
    paths_ = ourBundle();
    const std::vector<fs::path> found = host::Binary::search();
    paths_.insert(paths_.end(), found.begin(), found.end());
}

host::Binary* Catalogue::openNext() {
    while (next_ < paths_.size()) {
        const fs::path& path = paths_[next_++];
        try {
            binaries_.push_back(std::make_unique<host::Binary>(host_, path));
            return binaries_.back().get();
        } catch (const host::Error& error) {
            if (chosen_) throw Failure("cannot use the bundle ", path.string(), ": ", error.what());
            std::cerr << "orvix: leaving out " << path.string() << ": " << error.what() << '\n';
        }
    }
    return nullptr;
}

host::Plugin& Catalogue::find(const std::string& effect) {
    for (std::size_t i = 0; i < binaries_.size() || openNext(); ++i)
        if (host::Plugin* plugin = findIn(*binaries_[i], effect)) {
            const std::string reason = obstacle(*plugin);
            if (!reason.empty()) throw Failure(effect, " cannot be used: ", reason);
            return *plugin;
        }
    std::vector<std::string> names;
    for (const host::Plugin* plugin : all()) names.push_back(shortName(plugin->identifier()));
    if (names.empty())
        throw Failure(
            "no effects found: no bundle lies beside the program, in OFX_PLUGIN_PATH or in the system's folders; "
            "--bundle names one");
    throw UsageError("unknown effect '", effect, "'", host::suggestion(effect, names), " ('orvix list' shows all)");
}

std::vector<host::Plugin*> Catalogue::all() {
    while (openNext()) {
    }
    std::vector<host::Plugin*> effects;
    for (const auto& binary : binaries_)
        for (host::Plugin* plugin : effectsOf(*binary)) {
            const bool known = std::any_of(effects.begin(), effects.end(), [&](const host::Plugin* other) {
                return other->identifier() == plugin->identifier();
            });
            if (!known) effects.push_back(plugin);
        }
    return effects;
}

const host::Binary& Catalogue::binaryOf(const host::Plugin& plugin) const {
    for (const auto& binary : binaries_)
        for (const auto& own : binary->plugins())
            if (own.get() == &plugin) return *binary;
    throw Failure(plugin.identifier(), " belongs to no open bundle");
}

std::string Catalogue::obstacle(host::Plugin& plugin) const {
    try {
        plugin.describe();
        return "";
    } catch (const host::Error& error) {
        if (error.status() != kOfxStatErrMissingHostFeature) return error.what();
        // Our bundle announces all of its effects and answers so for those to come.
        const bool ours = binaryOf(plugin).path().filename() == kOurBundle;
        return ours ? "not built yet" : "needs a feature that this host lacks";
    }
}

} // namespace cli
