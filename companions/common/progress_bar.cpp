#include "companions/common/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>
#include <unistd.h>
#include <utility>

ProgressBar::ProgressBar(std::string label, uint64_t total)
    : label_(std::move(label)), total_(total), is_on_terminal_(isatty(STDERR_FILENO) == 1),
      next_drawing_(Clock::now() + std::chrono::seconds(1)) {}

ProgressBar::~ProgressBar() {
    if (is_drawn_) {
        std::fputs("\r\x1b[K", stderr);
    }
}

void ProgressBar::update(uint64_t done) {
    if (is_on_terminal_ && Clock::now() >= next_drawing_) {
        draw(done);
        next_drawing_ = Clock::now() + std::chrono::milliseconds(100);
    }
}

void ProgressBar::draw(uint64_t done) {
    constexpr size_t width = 30;
    is_drawn_ = true;
    if (total_ == 0) {
        fmt::print(stderr, "\r{} {}\x1b[K", label_, done);
        return;
    }
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    const std::string filled(static_cast<size_t>(share * width), '#');
    fmt::print(stderr, "\r{} [{:<{}}] {:3.0f} %\x1b[K", label_, filled, width, share * 100);
}
