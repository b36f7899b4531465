#pragma once

#include "base/file_descriptor.h"
#include "tools/results/complete_url_lines.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>

// What complete_url.list holds, as far as it tells whether it and its companions are whole.
struct CompleteList {
    uint64_t counters[complete_url_counter_count] = {};
    uint64_t counted = 0;          // requests behind the rows
    uint64_t query_line_count = 0; // requests behind the rows that have lines in query_url.list
    std::set<std::string> hosts;

    // Whether every request is a row's or has a reason not to be. Without its last rows a list is
    // not, nor is that of a run that gave up loading because too many requests waited for their
    // session.
    bool accounted(bool non_session_counts) const;
};

// Nothing when the file cannot be read, a row is malformed or a counter missing.
std::optional<CompleteList> read_complete_list(const FileDescriptor& file);
