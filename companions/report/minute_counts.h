#pragma once

#include "companions/report/wall_clock.h"

#include <cstdint>
#include <unordered_map>

// How much of something there is in each minute; only minutes that have any are kept.
class MinuteCounts {
  public:
    // `time`: on the scale of tools/parse/timestamps.h.
    void add(uint64_t time) {
        const uint64_t minute = time / 60;
        if (last_ == nullptr || minute != last_minute_) {
            last_ = &counts_[minute];
            last_minute_ = minute;
        }
        ++*last_;
    }

    // The first of the minutes with the most.
    PeakStep peak() const {
        PeakStep peak;
        uint64_t peak_minute = 0;
        for (const auto& [minute, count] : counts_) {
            if (count > peak.count || (count == peak.count && minute < peak_minute)) {
                peak.count = count;
                peak_minute = minute;
            }
        }
        peak.start = peak.count == 0 ? 0 : wall_seconds(peak_minute * 60);
        return peak;
    }

  private:
    std::unordered_map<uint64_t, uint64_t> counts_;
    uint64_t last_minute_ = 0;
    uint64_t* last_ = nullptr; // of last_minute_: what follows each other is mostly of one minute
};
