// The bundle's log. Off unless the environment variable ORVIX_LOG asks for it: "LEVEL" or "LEVEL:FILE", with LEVEL one
// of error, warning, info and debug. Lines go to the file (appended), or to the standard error stream without one.
#pragma once

namespace OFX {

enum class LogLevel { Off, Error, Warning, Info, Debug };

// Writes one line. Threads may log at once; lines do not mix. A failing destination is ignored: logging never fails a
// render. Printf formats.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void log(LogLevel level, const char* format, ...) noexcept;

} // namespace OFX
