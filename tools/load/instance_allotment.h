#pragma once

#include "tools/parse/request_record.h"

#include <cstdint>

// How the instances of the input file list are shared out among loading threads.

// What one loading thread gets and what it gives back. The size shows in the debug log.
struct parsingThreadArgs {
    alInfo* al_info_array_t;    // not used: its requests are kept by piece
    int32_t num_seq_file;       // input files to load
    int32_t seq_file_start_idx; // the first of them in seq_file_path
    uint64_t num_req;           // lines that its files are to give
    uint64_t total_valid_req_t; // requests accepted so far
    int32_t thread_idx;         // its number, from 0
    int32_t num_instance;       // instances that its files make up
};
static_assert(sizeof(parsingThreadArgs) == 40);

// Gives each of `thread_count` threads (zeroed on entry) a contiguous run of instances of equal
// number, the last one what is left. Returns how many threads there is work for; the others stay
// zeroed. Needs the files' line budgets.
int allot_instances(parsingThreadArgs* threads, int thread_count);
