#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// How far a long piece of work has come, on standard error: only on a terminal, only once it has
// taken a second, and gone when it ends. For the thread that made it.
class ProgressBar {
  public:
    // `label`: what is done, one of this program's texts. `total`: of the units that update counts;
    // 0 when it is not known.
    ProgressBar(std::string label, uint64_t total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // `done`: units until now. Cheap enough to be called a thousand times a second.
    void update(uint64_t done);

  private:
    using Clock = std::chrono::steady_clock;

    void draw(uint64_t done);

    std::string label_;
    uint64_t total_;
    bool is_on_terminal_;
    bool is_drawn_ = false;
    Clock::time_point next_drawing_;
};
