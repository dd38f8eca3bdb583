// Everything that differs between operating systems: shared libraries, the bundle's architecture folder, the folders
// where plug-ins live.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace host {

// An open shared library, closed at its end.
class Library {
public:
    explicit Library(const std::filesystem::path& file); // throws Error with the loader's own words
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    void* symbol(const char* name) const; // null when it is not exported

private:
    void* library_;
};

extern const char* const kArchitectureFolder;                          // "Linux-x86-64" and so on
std::vector<std::filesystem::path> defaultPluginFolders();             // of the standard, for this system
std::vector<std::filesystem::path> splitPath(const std::string& list); // an environment variable with folders

} // namespace host
