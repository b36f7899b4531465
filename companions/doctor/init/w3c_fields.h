#pragma once

#include "companions/doctor/init/log_layout.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// W3C extended logs (IIS, WebLogic, others), which say themselves what their fields are.

// The field names of a "#Fields:" line; empty for any other line.
std::string_view w3c_field_names(std::string_view line);

// The layout that the names say. `counts_milliseconds`: whether the field time-taken does, as with
// IIS, or seconds.
LogLayout w3c_layout(std::string_view names, bool counts_milliseconds);

// One "#Fields:" line of a log and the requests up to the next one that says something else.
struct W3cPart {
    int64_t line_num; // of the line, from 1
    std::string names;
    int64_t request_count;
};

struct W3cLog {
    std::vector<W3cPart> parts;   // in their order, at most 1000; what follows belongs to the last
    bool is_of_microsoft = false; // by its "#Software:" line
};

// Reads a whole log, from a descriptor at its start. Fails when it cannot be read to its end.
W3cLog read_w3c_log(int descriptor, const std::string& path);

// The fields that all layouts have in one place.
LogLayout shared_layout(const std::vector<LogLayout>& layouts);
