#include "companions/report/wall_clock.h"

#include <ctime>
#include <fmt/core.h>

// That scale has the replay zone's clock as local time of this process.
WallSeconds wall_seconds(uint64_t time_stamp) {
    const auto time = static_cast<time_t>(time_stamp);
    tm clock = {};
    return localtime_r(&time, &clock) == nullptr ? time : timegm(&clock);
}

std::string wall_text(WallSeconds time) {
    tm clock = {};
    if (gmtime_r(&time, &clock) == nullptr) {
        return "";
    }
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", clock.tm_year + 1900,
                       clock.tm_mon + 1, clock.tm_mday, clock.tm_hour, clock.tm_min, clock.tm_sec);
}
