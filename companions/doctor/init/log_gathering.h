#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/log_sample.h"
#include "companions/doctor/init/packed_logs.h"

#include <string>
#include <vector>

// The logs of a new scenario, and lines of each.
struct GatheredLogs {
    std::vector<LogSample> samples; // in byte order of their paths
    Findings findings;              // what was left out, and why
};

// Finds the logs that the arguments name (see log_paths.h), unpacks what is packed where `unpack`
// has a directory, and reads lines of each. Plain logs are copied along where packed ones stand
// beside them, so that they stay one instance, and where the scenario cannot name them. Fails when
// an argument names nothing, or there are more logs than a scenario can name.
GatheredLogs gather_logs(const std::vector<std::string>& arguments, const UnpackOptions& unpack);
