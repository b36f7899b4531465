#pragma once

#include "companions/doctor/finding.h"

#include <cstdint>
#include <string>
#include <vector>

// A log as the scenario names it.
struct NamedLog {
    std::string path;
    int line;            // of the scenario
    bool is_body;        // a file of request bodies, which is not read
    uint64_t line_limit; // lines to take; 0: all
};

// Looks at the files that the scenario names, without reading them: whether they are there, can be
// read, hold lines, and are named once. `findings`: those of the scenario.
void check_log_files(FileFindings& findings, const std::vector<NamedLog>& logs);

// Groups the logs as a run does, and says how many threads that can use, unless there is one log
// alone. From here on the list of logs is in the order in which they are read.
void check_instances(FileFindings& findings);
