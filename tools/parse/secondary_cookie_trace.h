#pragma once

#include "base/own_directory.h"

#include <cstdint>
#include <cstdio>

// The file akaau.trace, in which option `akaau_trace` lets a run tell how it matched requests that
// carry only the secondary cookie to sessions.

extern char akaau_trace;     // 1 after option `akaau_trace`; set while the command line is read
extern FILE* akaau_trace_fp; // the open file, or null; opened before and closed after loading,
                             // written by all worker threads, each line in one piece

// Removes the trace of an earlier run from the configuration directory, or empties one that cannot
// be removed, and with the option given opens a new one. Fails when that fails.
void open_akaau_trace(const OwnDirectory& config_dir);

// Closes the trace if it is open. Fails when it could not be written whole.
void close_akaau_trace();

// Where a request was found.
struct TracePlace {
    int thread_idx;
    const char* file_name;
    int64_t line_num;
};

// One line each; nothing without the option. `akaau_id` is a value of the secondary cookie.
void trace_matched(const char* akaau_id, const char* jsession_id, const TracePlace& place);
void trace_updated(const char* akaau_id, const TracePlace& place);
void trace_added(const char* akaau_id, const TracePlace& place);
void trace_limit_reached(int limit);
