#pragma once

#include "tools/parse/line_outcome.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

// What the parser of a run makes of a sample of a log: of a part at its beginning, one in its
// middle, and one at its end.

struct SampledLine {
    int64_t line_num; // in the log, from 1; 0: not known, as it is not of the first part
    std::string text;
};

// Lines that are rejected for one reason.
struct RejectedSample {
    uint64_t count = 0;
    std::vector<SampledLine> examples = {}; // the first ones
};

// Numbers of requests.
struct ParsedSample {
    int file;                // index into seq_file_path
    bool is_whole;           // the sample is all of the log
    uint64_t lines = 0;      // with empty ones and comments
    uint64_t requests = 0;   // without
    uint64_t accepted = 0;   // of these
    uint64_t before = 0;     // the replay period
    uint64_t after = 0;      // the replay period
    uint64_t first_time = 0; // of those above, as time_stamp of LineOutcome
    uint64_t last_time = 0;
    std::map<LineKind, RejectedSample> rejected = {};   // the others
    uint64_t without_session = 0;                       // accepted, without a session when read
    std::map<std::string, uint64_t> other_cookies = {}; // of these: how many carry or set a cookie
    std::set<std::string> hosts = {};                   // of the accepted
    bool has_further_hosts = false;                     // more than are kept
};

// Samples the logs of seq_file_path that are regular files of text. The settings and the layout
// have to hold. Takes about as long for any size and number of logs.
std::vector<ParsedSample> sample_logs();
