#pragma once

#include "companions/report/scenario_figures.h"
#include "tools/parse/line_tally.h"

#include <cstddef>
#include <cstdint>
#include <optional>

// First and last second, on the scale of tools/parse/timestamps.h.
struct TimeBounds {
    uint64_t first = 0;
    uint64_t last = UINT64_MAX;

    bool contain(uint64_t time) const { return first <= time && time <= last; }
};

// The steps of time that the load is shown in.
class TimeSteps {
  public:
    static constexpr size_t most_steps = 3000;

    // Steps of a second, a minute, an hour, or of days, the shortest of which few enough cover the
    // lines: nearly all in the replay period, and what lies before and behind these without a long
    // silence. None when there are no lines.
    TimeSteps(const StatusCountsOverTime& lines, const TimeBounds& period);

    size_t count() const { return count_; }
    uint64_t seconds() const { return seconds_; }
    uint64_t start() const { return start_; } // on the scale of tools/parse/timestamps.h

    // Of a time on that scale; nothing when it is beside the steps.
    std::optional<size_t> find(uint64_t time) const {
        const uint64_t step = (time - start_) / seconds_; // very large before the start
        return step < count_ ? std::optional(static_cast<size_t>(step)) : std::nullopt;
    }

  private:
    uint64_t start_ = 0;
    uint64_t seconds_ = 1;
    size_t count_ = 0;
};

// All that depends on lines alone: steps and responses; the rest is zero.
LoadOverTime responses_over_time(const TimeSteps& steps, const StatusCountsOverTime& lines);
