// The bar is redrawn ten times a second at most; lines come every five seconds, which suits the log of a job.
#include "host/cli/progress.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "host/cli/system.h"

namespace cli {
namespace {

std::string clockTime(double seconds) {
    const long total = std::lround(seconds);
    std::ostringstream text;
    text << std::setfill('0');
    if (total >= 3600) text << total / 3600 << ':' << std::setw(2);
    text << total / 60 % 60 << ':' << std::setw(2) << total % 60;
    return text.str();
}

std::string rounded(double number) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(number < 10 ? 2 : 1) << number;
    return text.str();
}

std::string bar(double fraction) {
    constexpr int kWidth = 30;
    const int filled = std::clamp(static_cast<int>(fraction * kWidth), 0, kWidth);
    std::string text(kWidth + 2, '.');
    text.front() = '[';
    text.back() = ']';
    std::fill_n(text.begin() + 1, filled, '#');
    return text;
}

} // namespace

Progress::Progress(int frames, bool quiet) : frames_(frames), quiet_(quiet), terminal_(standardErrorIsTerminal()) {}

Progress::~Progress() { clear(); }

void Progress::update(int done) {
    const std::lock_guard lock(mutex_);
    done_ = done;
    if (done == 0 || done == frames_ || !due()) return;
    const double rate = done / seconds();
    std::ostringstream line;
    line << done << '/' << frames_ << " frames  " << rounded(rate) << " frames/s  "
         << clockTime((frames_ - done) / rate) << " left";
    show(terminal_ ? bar(static_cast<double>(done) / frames_) + " " + line.str() : line.str());
}

void Progress::effect(const std::string& label, double fraction) {
    const std::lock_guard lock(mutex_);
    if (!due()) return;
    const std::string percent = std::to_string(std::lround(100 * fraction)) + " % " + label;
    show(terminal_ ? bar(fraction) + " " + percent : percent);
}

void Progress::note(const std::string& text) {
    const std::lock_guard lock(mutex_);
    clear();
    std::cerr << "orvix: " << text << std::endl;
}

void Progress::finish(const std::string& output) {
    if (quiet_) return;
    const double time = seconds();
    std::ostringstream line;
    line << output << ": " << frames_ << (frames_ == 1 ? " frame" : " frames") << " in " << rounded(time) << " s";
    if (frames_ > 1) line << ", " << rounded(frames_ / time) << " frames/s";
    note(line.str());
}

bool Progress::due() {
    const double now = seconds();
    if (quiet_ || now - shown_ < (terminal_ ? 0.1 : 5)) return false;
    shown_ = now;
    return true;
}

void Progress::show(const std::string& line) {
    if (!terminal_) {
        note(line);
        return;
    }
    std::cerr << "\r\x1b[K" << line << std::flush;
    barVisible_ = true;
}

void Progress::clear() {
    const std::lock_guard lock(mutex_);
    if (barVisible_) std::cerr << "\r\x1b[K" << std::flush;
    barVisible_ = false;
}

} // namespace cli
