// Processes on POSIX systems: posix_spawn, one pipe, and a temporary file for the messages, which cannot fill up and
// block the program as a second pipe could.
#include "host/cli/process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "host/cli/error.h"

extern "C" char** environ;

namespace cli {
namespace {

int spawn(const std::string& program, const std::vector<std::string>& arguments, const std::array<int, 3>& streams,
          pid_t& id) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int stream = 0; stream < 3; ++stream) {
        const int from = streams[static_cast<std::size_t>(stream)];
        if (from >= 0)
            posix_spawn_file_actions_adddup2(&actions, from, stream);
        else
            posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", stream == 0 ? O_RDONLY : O_WRONLY, 0);
    }
    // A group of its own, so that Ctrl-C reaches only us and we decide when the program stops; and the usual reply to
    // a broken pipe, which we ignore ourselves.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    const int error = posix_spawnp(&id, program.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

Process::Process(const std::string& program, const std::vector<std::string>& arguments, Pipe pipe)
    : errors_(std::tmpfile(), std::fclose) {
    std::array<int, 2> ends{};
    if (!errors_ || ::pipe(ends.data()) != 0) throw Failure("cannot start ", program, ": ", std::strerror(errno));
    const int messages = fileno(errors_.get());
    for (const int descriptor : {ends[0], ends[1], messages}) fcntl(descriptor, F_SETFD, FD_CLOEXEC);

    const bool input = pipe == Pipe::Input;
    const int theirs = ends[input ? 0 : 1];
    pipe_ = ends[input ? 1 : 0];
    pid_t id = -1;
    const int error = spawn(program, arguments, {input ? theirs : -1, input ? -1 : theirs, messages}, id);
    ::close(theirs);
    if (error != 0) {
        closePipe();
        throw Failure("cannot run ", program, ": ", std::strerror(error),
                      error == ENOENT ? " (video needs ffmpeg and ffprobe in PATH)" : "");
    }
    id_ = id;
}

Process::~Process() {
    if (id_ < 0) return;
    kill(static_cast<pid_t>(id_), SIGKILL);
    wait();
}

std::size_t Process::read(void* buffer, std::size_t bytes) {
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t n = ::read(pipe_, static_cast<char*>(buffer) + done, bytes - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
    }
    return done;
}

bool Process::write(const void* buffer, std::size_t bytes) {
    for (std::size_t done = 0; done < bytes;) {
        const ssize_t n = ::write(pipe_, static_cast<const char*>(buffer) + done, bytes - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

int Process::wait() {
    closePipe();
    int status = 0;
    while (waitpid(static_cast<pid_t>(id_), &status, 0) < 0 && errno == EINTR) {
    }
    id_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string Process::errors() const {
    std::string text;
    std::array<char, 4096> part{};
    ssize_t n = 0;
    while ((n = pread(fileno(errors_.get()), part.data(), part.size(), static_cast<off_t>(text.size()))) > 0)
        text.append(part.data(), static_cast<std::size_t>(n));
    text.erase(text.find_last_not_of(" \r\n\t") + 1);
    return text;
}

void Process::closePipe() {
    if (pipe_ >= 0) ::close(pipe_);
    pipe_ = -1;
}

ProgramOutput outputOf(const std::string& program, const std::vector<std::string>& arguments) {
    Process process(program, arguments, Process::Pipe::Output);
    ProgramOutput output;
    std::array<char, 4096> part{};
    while (const std::size_t n = process.read(part.data(), part.size())) output.text.append(part.data(), n);
    const int status = process.wait();
    output.messages = process.errors();
    if (status != 0) throw Failure(program, ": ", output.messages);
    return output;
}

} // namespace cli
