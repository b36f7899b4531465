#pragma once

#include "tools/parse/parsing_thread.h"
#include "tools/parse/record_table.h"

#include <cstdint>

// Loading: the lines of the files are counted, then worker threads parse the files into request
// tables of their own, which are joined into the request table of the run. The only phase of a run
// with more than one thread; the workers share nothing that they write to.

// What one worker thread gets and what it gives back.
struct parsingThreadArgs {
    RecordTable* al_info_array_t; // its records, filled by the thread
    int32_t num_seq_file;         // input files to load
    int32_t seq_file_start_idx;   // the first of them in seq_file_path
    uint64_t num_req;             // lines that its files are to give
    uint64_t total_valid_req_t;   // records filled, written when the thread ends
    int32_t thread_idx;           // its number, from 0
    int32_t num_instance;         // instances that its files make up
};
static_assert(sizeof(parsingThreadArgs) == 40);

// One row for each worker thread, zeroed before the threads start; a thread writes its row when it
// ends.
extern threadCounter* tc;

// Loads all files of the input file list and sets the request table and its totals
// (request_table.h). Ends the run when a file cannot be counted or read, or a thread cannot be run.
void process_url_files();
