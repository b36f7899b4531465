#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/log_layout.h"
#include "companions/doctor/init/log_sample.h"

#include <cstdint>
#include <string>
#include <vector>

// The time of a request, on the scale of tools/parse/timestamps.h and as the log has it.
struct LogTime {
    uint64_t seconds = 0; // 0: none is known
    std::string text = "";
};

// The first and last of the times that are seen in a log.
struct LogTimes {
    LogTime first;
    LogTime last;
};

// Of each sample, in their order.
std::vector<LogTimes> times_of(const LogLayout& layout, const std::vector<LogSample>& samples);

// The zone of the times, as GMT_OFFSET has it: that which Apache's times name, else UTC.
std::string zone_of(const std::vector<LogTimes>& times);

// Instances in which a run reads a log before one that is older.
Findings check_order(const std::vector<LogSample>& samples, const std::vector<LogTimes>& times);
