// The errors of the program: what the user did wrong, what went wrong, and a stop by a signal. Each knows the exit
// status of the program; the text names the thing that was wrong and what is allowed.
#pragma once
#include <sstream>
#include <stdexcept>
#include <string>

namespace cli {

template <class... Parts>
std::string join(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

class Error : public std::runtime_error {
public:
    int status() const { return status_; }

protected:
    Error(int status, const std::string& text) : std::runtime_error(text), status_(status) {}

private:
    int status_;
};

// The arguments cannot be used as they are.
class UsageError : public Error {
public:
    template <class... Parts>
    explicit UsageError(const Parts&... parts) : Error(2, join(parts...)) {}
};

// The arguments are fine, but the work failed.
class Failure : public Error {
public:
    template <class... Parts>
    explicit Failure(const Parts&... parts) : Error(1, join(parts...)) {}
};

// A signal asked the program to stop.
class Interrupted : public Error {
public:
    explicit Interrupted(int signal) : Error(128 + signal, "stopped") {}
};

} // namespace cli
