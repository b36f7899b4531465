#pragma once

#include <cstdint>

// The list of the access logs of a run.

struct InputFileInfo {
    char* input_file; // path as the scenario gives it, owned; absolute or relative to the working
                      // directory
    char body_flag;   // 1: a file of request bodies, which is listed but not loaded
    char ssl_flag;    // 1: a log of HTTPS requests; nothing depends on it
    uint64_t num_req; // lines to take; 0: all that end with a line feed. Counted by
                      // process_url_files where the debug log tells of it
    int32_t instance_idx; // number of its instance, from 0
};

constexpr int max_al_files = 1000;

// Filled in scenario order by read_scenario_file, sorted and grouped by process_input_file_list2;
// only read once the worker threads run.
extern InputFileInfo seq_file_path[max_al_files];
extern int num_al_files; // entries in use
