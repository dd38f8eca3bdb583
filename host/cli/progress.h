// Shows how far a render is: a bar on a terminal, now and then a line elsewhere, on the standard error stream.
#pragma once
#include <chrono>
#include <mutex>
#include <string>

namespace cli {

class Progress {
public:
    Progress(int frames, bool quiet);
    ~Progress(); // leaves the terminal on a new line

    // So many frames are done.
    void update(int done);
    // What an effect itself is at, from 0 to 1, before or within a frame.
    void effect(const std::string& label, double fraction);
    // A line of text that does not disturb the bar. Shown even when quiet. From any thread.
    void note(const std::string& text);
    // The last line: what was made, and how fast.
    void finish(const std::string& output);

private:
    using Clock = std::chrono::steady_clock;
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    bool due();
    void show(const std::string& line);
    void clear();

    const int frames_;
    const bool quiet_, terminal_;
    const Clock::time_point start_ = Clock::now();
    double shown_ = 0; // when, in seconds
    int done_ = 0;
    bool barVisible_ = false;
    std::recursive_mutex mutex_;
};

} // namespace cli
