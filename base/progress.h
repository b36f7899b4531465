#pragma once

#include <ctime>

// Progress lines of option `commentry` on standard error: one at the start of a phase and one at
// its end.

extern int commentry_flag; // 1 after option `commentry`; set while the command line is read

// Writes a progress line when the option asks for it. Any thread may call; each line reaches the
// stream in one piece.
[[gnu::format(printf, 1, 2)]] void write_progress(const char* format, ...);

// One phase of the run. Starts the clock and writes the start line when made; finish writes the end
// line.
class PhaseProgress {
  public:
    // `start_format` takes the date and time (%s), `end_format` the date and time and the whole
    // seconds that the phase took (%s, %ld).
    PhaseProgress(const char* start_format, const char* end_format);

    void finish() const;

  private:
    const char* end_format_;
    time_t start_;
};
