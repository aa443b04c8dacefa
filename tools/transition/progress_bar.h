#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zepbmp::transition {

/// The bar's text, at most `columns` wide: share done, frames, frames a second, time left.
std::string progress_text(int64_t done, int64_t total, double seconds, int columns);

/// Reports progress on standard error: a bar that redraws itself on a terminal, a line every tenth of the way
/// otherwise.
class ProgressBar {
public:
    explicit ProgressBar(int64_t total);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Ends an unfinished bar's line, so that what is printed next starts on a line of its own.
    ~ProgressBar();

    void update(int64_t done);

private:
    using Clock = std::chrono::steady_clock;

    int64_t total_;
    bool terminal_;
    bool line_open_ = false;
    int64_t next_tenth_ = 1;
    Clock::time_point start_;
    Clock::time_point drawn_;
};

}  // namespace zepbmp::transition
