// Binaries: finding bundles, opening them, and the plug-ins inside.
#pragma once
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/platform.h"
#include "host/plugin.h"

namespace host {

// An open binary. Closing it (at its end) unloads its plug-ins, whose instances must have ended before.
class Binary {
public:
    // A bundle folder (NAME.ofx.bundle) or a .ofx file. Throws Error when there is none or it cannot be loaded.
    Binary(Host& host, const std::filesystem::path& path);

    const std::filesystem::path& path() const { return path_; } // the bundle folder, or the file that lies in none
    const std::filesystem::path& file() const { return file_; } // the shared library
    const std::vector<std::unique_ptr<Plugin>>& plugins() const { return plugins_; }

    Plugin* find(const std::string& identifier) const; // null when there is none; the newest version
    // By identifier, or by its part after the last colon or dot. Throws Error with the nearest names.
    Plugin& plugin(const std::string& name) const;
    void* symbol(const char* name) const { return library_.symbol(name); }

    // Bundles in the folders of OFX_PLUGIN_PATH and then the system's own, folders within them included, each once.
    static std::vector<std::filesystem::path> search();
    static std::vector<std::filesystem::path> search(const std::vector<std::filesystem::path>& folders);
    // The shared library of a bundle for this system; empty when it has none.
    static std::filesystem::path fileOf(const std::filesystem::path& bundle);

private:
    std::filesystem::path path_, file_;
    Library library_;
    std::vector<std::unique_ptr<Plugin>> plugins_; // end before the library
};

} // namespace host
