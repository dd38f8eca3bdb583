// Binaries: finding bundles, opening them, and the plug-ins inside.
#include "host/binary.h"

#include <algorithm>
#include <cstdlib>

#include "host/host.h"
#include "host/text.h"

namespace host {

namespace fs = std::filesystem;

namespace {

const std::string kBundleEnding = ".ofx.bundle";

bool isBundle(const fs::path& path) {
    std::error_code error;
    return path.filename().string().ends_with(kBundleEnding) && fs::is_directory(path, error);
}

// "dir/" and "dir" alike, so that the last part is the name.
fs::path withoutSlash(const fs::path& path) { return path.has_filename() ? path : path.parent_path(); }

fs::path locate(const fs::path& path) {
    std::error_code error;
    if (!fs::exists(path, error)) throw Error("there is no \"" + path.string() + "\"");
    if (!fs::is_directory(path, error)) return path;
    if (!isBundle(path))
        throw Error("\"" + path.string() + "\" is no bundle: its name does not end in " + kBundleEnding);
    fs::path file = Binary::fileOf(path);
    if (file.empty()) throw Error("\"" + path.string() + "\" has no binary for " + kArchitectureFolder);
    return file;
}

// What follows the last colon or dot of an identifier.
std::string shortName(const std::string& identifier) {
    const auto end = identifier.find_last_of(":.");
    return end == std::string::npos ? identifier : identifier.substr(end + 1);
}

bool isComplete(const OfxPlugin* record) {
    return record && record->pluginApi && record->pluginIdentifier && record->setHost && record->mainEntry;
}

void findBundles(const fs::path& folder, std::vector<fs::path>& bundles) {
    std::error_code error;
    const auto options =
        fs::directory_options::follow_directory_symlink | fs::directory_options::skip_permission_denied;
    std::vector<fs::path> found;
    if (isBundle(folder)) found.push_back(folder);
    for (fs::recursive_directory_iterator entry(folder, options, error), end; !error && entry != end;
         entry.increment(error)) {
        if (!isBundle(entry->path())) continue;
        found.push_back(entry->path());
        entry.disable_recursion_pending();
    }
    std::sort(found.begin(), found.end());
    for (const fs::path& bundle : found)
        if (std::find(bundles.begin(), bundles.end(), bundle) == bundles.end()) bundles.push_back(bundle);
}

} // namespace

Binary::Binary(Host& host, const fs::path& path) : path_(withoutSlash(path)), file_(locate(path_)), library_(file_) {
    auto* const getPlugin = reinterpret_cast<decltype(&OfxGetPlugin)>(symbol("OfxGetPlugin"));
    auto* const getNumber = reinterpret_cast<decltype(&OfxGetNumberOfPlugins)>(symbol("OfxGetNumberOfPlugins"));
    if (!getPlugin || !getNumber) throw Error("\"" + file_.string() + "\" is no OpenFX binary");
    if (auto* const setHost = reinterpret_cast<decltype(&OfxSetHost)>(symbol("OfxSetHost"))) {
        const OfxStatus status = setHost(host.record());
        if (status != kOfxStatOK && status != kOfxStatReplyDefault)
            throw Error("\"" + file_.string() + "\" refuses this host: " + statusName(status), status);
    }
    for (int i = 0; i < getNumber(); ++i) {
        OfxPlugin* record = getPlugin(i);
        if (isComplete(record))
            plugins_.push_back(std::make_unique<Plugin>(host, *record, path_.string()));
        else
            host.report("plug-in " + std::to_string(i) + " of " + path_.string() + " has an incomplete record");
    }
}

Plugin* Binary::find(const std::string& identifier) const {
    const auto version = [](const Plugin& plugin) { return std::pair(plugin.majorVersion(), plugin.minorVersion()); };
    Plugin* newest = nullptr;
    for (const auto& plugin : plugins_)
        if (plugin->identifier() == identifier && (!newest || version(*plugin) > version(*newest)))
            newest = plugin.get();
    return newest;
}

Plugin& Binary::plugin(const std::string& name) const {
    if (Plugin* exact = find(name)) return *exact;
    std::vector<std::string> names;
    for (const auto& plugin : plugins_) {
        if (shortName(plugin->identifier()) == name) return *find(plugin->identifier());
        names.push_back(shortName(plugin->identifier()));
    }
    throw Error("there is no effect \"" + name + "\" in " + path_.filename().string() + suggestion(name, names),
                kOfxStatErrUnknown);
}

std::vector<fs::path> Binary::search() {
    const char* const variable = std::getenv("OFX_PLUGIN_PATH");
    std::vector<fs::path> folders = splitPath(variable ? variable : "");
    for (const fs::path& folder : defaultPluginFolders()) folders.push_back(folder);
    return search(folders);
}

std::vector<fs::path> Binary::search(const std::vector<fs::path>& folders) {
    std::vector<fs::path> bundles;
    for (const fs::path& folder : folders) findBundles(withoutSlash(folder), bundles);
    return bundles;
}

fs::path Binary::fileOf(const fs::path& bundle) {
    std::string name = withoutSlash(bundle).filename().string();
    if (!name.ends_with(kBundleEnding)) return {};
    name.resize(name.size() - std::string(".bundle").size());
    const fs::path file = bundle / "Contents" / kArchitectureFolder / name;
    std::error_code error;
    return fs::is_regular_file(file, error) ? file : fs::path();
}

} // namespace host
