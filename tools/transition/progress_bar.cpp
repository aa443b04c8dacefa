#include "progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zepbmp::transition {

namespace {

constexpr int kDefaultColumns = 80;
constexpr int kShortestBar = 5;
constexpr int kLongestBar = 40;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

int terminal_columns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kDefaultColumns;
}

std::string figures(int64_t done, int64_t total, double seconds) {
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    char text[128];
    int length = std::snprintf(text, sizeof text, "%3d%%  %lld/%lld frames",
                               static_cast<int>(done * 100 / std::max<int64_t>(total, 1)), static_cast<long long>(done),
                               static_cast<long long>(total));
    if (rate > 0) {
        const long long left = std::llround(std::ceil(static_cast<double>(total - done) / rate));
        std::snprintf(text + length, sizeof text - length, "  %.1f frames/s  %lld:%02lld left", rate, left / 60,
                      left % 60);
    }
    return text;
}

}  // namespace

std::string progress_text(int64_t done, int64_t total, double seconds, int columns) {
    std::string text = figures(done, total, seconds);
    const int bar = std::min(kLongestBar, columns - static_cast<int>(text.size()) - 3);
    if (bar >= kShortestBar) {
        const auto filled = static_cast<size_t>(done * bar / std::max<int64_t>(total, 1));
        text = "[" + std::string(filled, '#') + std::string(bar - filled, '-') + "] " + text;
    }
    if (static_cast<int>(text.size()) > columns)
        text.resize(std::max(columns, 0));
    return text;
}

ProgressBar::ProgressBar(int64_t total)
    : total_(total), terminal_(isatty(STDERR_FILENO) == 1), start_(Clock::now()), drawn_(start_) {}

ProgressBar::~ProgressBar() {
    if (line_open_)
        std::fputc('\n', stderr);
}

void ProgressBar::update(int64_t done) {
    const Clock::time_point now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - start_).count();
    if (terminal_) {
        if (done < total_ && line_open_ && now - drawn_ < kRedrawInterval)
            return;
        drawn_ = now;
        line_open_ = done < total_;
        std::fprintf(stderr, "\r%s\033[K%s", progress_text(done, total_, seconds, terminal_columns() - 1).c_str(),
                     line_open_ ? "" : "\n");
    } else if (done * 10 >= next_tenth_ * total_) {
        next_tenth_ = done * 10 / total_ + 1;
        std::fprintf(stderr, "%s\n", figures(done, total_, seconds).c_str());
    }
}

}  // namespace zepbmp::transition
