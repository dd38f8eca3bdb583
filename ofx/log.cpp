// Where log lines go.
#include "ofx/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace OFX {
namespace {

struct Destination {
    LogLevel level = LogLevel::Off;
    std::FILE* file = nullptr;
};

LogLevel levelFrom(std::string_view text) {
    if (text == "error") return LogLevel::Error;
    if (text == "warning") return LogLevel::Warning;
    if (text == "info") return LogLevel::Info;
    if (text == "debug") return LogLevel::Debug;
    return LogLevel::Off;
}

Destination destinationFrom(const char* setting) {
    if (setting == nullptr) return {};
    const std::string_view text(setting);
    const auto colon = text.find(':');
    Destination destination{levelFrom(text.substr(0, colon)), stderr};
    if (destination.level != LogLevel::Off && colon != std::string_view::npos) {
        // The file stays open for the life of the process: hosts unload bundles at unpredictable moments.
        if (std::FILE* file = std::fopen(setting + colon + 1, "a")) destination.file = file;
    }
    return destination;
}

} // namespace

void log(LogLevel level, const char* format, ...) noexcept {
    static const Destination destination = destinationFrom(std::getenv("ORVIX_LOG"));
    if (destination.level < level) return;
    char line[1024];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (length < 0) return;
    std::fprintf(destination.file, "%s\n", line);
    std::fflush(destination.file);
}

} // namespace OFX
