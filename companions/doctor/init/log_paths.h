#pragma once

#include "companions/doctor/finding.h"

#include <string>
#include <vector>

// The logs that a command line names.
struct FoundLogs {
    std::vector<std::string> paths; // absolute, in byte order, each file once
    Findings findings;              // what was left out
};

// Each argument is a file, a folder, which is looked through with the folders in it, or a pattern
// of names as the shell has them. Fails when an argument names nothing.
FoundLogs find_logs(const std::vector<std::string>& arguments);

// Whether a scenario can name the path: it is split at blanks, and ends at its line's end.
bool can_be_named(const std::string& path);
