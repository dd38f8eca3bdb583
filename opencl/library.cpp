// Loading libraries: the one place where systems differ.
#include "opencl/library.h"

#ifdef _WIN32
#include <windows.h>

#include <string>
#else
#include <dlfcn.h>
#endif

namespace OpenCL {

#ifdef _WIN32

void* openLibrary(std::span<const char* const> names) {
    for (const char* name : names) {
        const std::string narrow(name);
        if (HMODULE library = LoadLibraryW(std::wstring(narrow.begin(), narrow.end()).c_str())) return library;
    }
    return nullptr;
}

void closeLibrary(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }

void* findSymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

std::span<const char* const> libraryNames() {
    static constexpr const char* kNames[] = {"OpenCL.dll"};
    return kNames;
}

#else

void* openLibrary(std::span<const char* const> names) {
    for (const char* name : names) {
        if (void* library = dlopen(name, RTLD_NOW | RTLD_LOCAL)) return library;
    }
    return nullptr;
}

void closeLibrary(void* library) { dlclose(library); }

void* findSymbol(void* library, const char* name) { return dlsym(library, name); }

std::span<const char* const> libraryNames() {
#ifdef __APPLE__
    static constexpr const char* kNames[] = {"/System/Library/Frameworks/OpenCL.framework/OpenCL"};
#else
    static constexpr const char* kNames[] = {"libOpenCL.so.1", "libOpenCL.so"};
#endif
    return kNames;
}

#endif

} // namespace OpenCL
