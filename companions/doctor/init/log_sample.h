#pragma once

#include "tools/parse/log_loader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Lines of a log from its beginning, its middle and its end.
struct LogSample {
    std::string path;
    uint64_t size = 0;                   // of the log, bytes
    std::vector<std::string> lines = {}; // without comments, empty lines, and line ends
    bool ends_with_line_feed = true;
    bool names_its_fields = false; // by a "#Fields:" line
};

// At most about `max_lines` lines of a regular file. Fails when the log cannot be read.
LogSample read_log_sample(const std::string& path, size_t max_lines);
