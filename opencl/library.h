// Shared libraries at run time, on every system.
#pragma once

#include <span>

namespace OpenCL {

// Opens the first library of that name that the system has; null when there is none.
void* openLibrary(std::span<const char* const> names);
void closeLibrary(void* library);
// An exported function; null when the library lacks it.
void* findSymbol(void* library, const char* name);

// The names of the system's OpenCL library, in the order to try.
std::span<const char* const> libraryNames();

} // namespace OpenCL
