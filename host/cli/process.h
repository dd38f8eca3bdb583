// Another program run beside this one, with its input or its output at the end of a pipe. Never through a shell. The
// only place that starts processes.
#pragma once
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace cli {

class Process {
public:
    enum class Pipe { Input, Output }; // we write its input; we read its output

    // Starts the program, found in PATH. Throws a Failure when it cannot be started.
    Process(const std::string& program, const std::vector<std::string>& arguments, Pipe pipe);
    ~Process(); // ends the program if it still runs
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Reads until the buffer is full or the output ends; answers the bytes read.
    std::size_t read(void* buffer, std::size_t bytes);
    // Writes the whole buffer; false when the program no longer reads.
    bool write(const void* buffer, std::size_t bytes);

    // Closes our end of the pipe and waits; answers the exit status, 128 + signal for a program that a signal ended.
    int wait();
    // What the program has written to its standard error, without white space at the end.
    std::string errors() const;

private:
    void closePipe();
    long id_ = -1;
    int pipe_ = -1;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> errors_;
};

// What a program wrote to its two streams.
struct ProgramOutput {
    std::string text, messages;
};

// Runs a program to its end; throws a Failure with its messages when it fails.
ProgramOutput outputOf(const std::string& program, const std::vector<std::string>& arguments);

} // namespace cli
