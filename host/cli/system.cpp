// One answer per operating system.
#include "host/cli/system.h"

#include <cstdio>
#include <string>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif
#if defined(__APPLE__)
#include <mach-o/dyld.h>
#endif

namespace cli {
namespace fs = std::filesystem;

fs::path programFolder() {
    std::error_code ignored;
#if defined(_WIN32)
    std::wstring name(32768, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return fs::path(name).parent_path();
#elif defined(__APPLE__)
    char name[4096];
    std::uint32_t size = sizeof name;
    return _NSGetExecutablePath(name, &size) == 0 ? fs::canonical(name, ignored).parent_path() : fs::path();
#else
    return fs::read_symlink("/proc/self/exe", ignored).parent_path();
#endif
}

bool standardErrorIsTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(fileno(stderr)) != 0;
#endif
}

} // namespace cli
