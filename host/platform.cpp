// Everything that differs between operating systems.
#include "host/platform.h"

#include <cstdlib>

#include "host/error.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace host {

#if defined(_WIN32)

Library::Library(const std::filesystem::path& file) : library_(LoadLibraryW(file.c_str())) {
    if (!library_)
        throw Error("\"" + file.string() + "\" cannot be loaded: system error " + std::to_string(GetLastError()));
}
Library::~Library() { FreeLibrary(static_cast<HMODULE>(library_)); }
void* Library::symbol(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library_), name));
}

#else

Library::Library(const std::filesystem::path& file) : library_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!library_) throw Error("\"" + file.string() + "\" cannot be loaded: " + dlerror());
}
Library::~Library() { dlclose(library_); }
void* Library::symbol(const char* name) const { return dlsym(library_, name); }

#endif

#if defined(_WIN64)
const char* const kArchitectureFolder = "Win64";
#elif defined(_WIN32)
const char* const kArchitectureFolder = "Win32";
#elif defined(__APPLE__)
const char* const kArchitectureFolder = "MacOS";
#elif defined(__x86_64__)
const char* const kArchitectureFolder = "Linux-x86-64";
#elif defined(__i386__)
const char* const kArchitectureFolder = "Linux-x86";
#elif defined(__aarch64__)
const char* const kArchitectureFolder = "Linux-aarch64";
#else
#error "name the architecture folder of this system"
#endif

std::vector<std::filesystem::path> defaultPluginFolders() {
#if defined(_WIN32)
    const wchar_t* common = _wgetenv(L"CommonProgramFiles");
    return {std::filesystem::path(common ? common : L"C:\\Program Files\\Common Files") / "OFX" / "Plugins"};
#elif defined(__APPLE__)
    return {"/Library/OFX/Plugins"};
#else
    return {"/usr/OFX/Plugins"};
#endif
}

std::vector<std::filesystem::path> splitPath(const std::string& list) {
#if defined(_WIN32)
    constexpr const char* kSeparators = ";";
#else
    constexpr const char* kSeparators = ":;";
#endif
    std::vector<std::filesystem::path> folders;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = list.find_first_of(kSeparators, begin);
        if (const std::string folder = list.substr(begin, end - begin); !folder.empty()) folders.emplace_back(folder);
    }
    return folders;
}

} // namespace host
