#pragma once

#include "tools/parse/parsing_thread.h"

// Loading: the files are cut into pieces, which worker threads read and settle in the order of the
// files; what they found is joined into the request table of the run.

// Threads that the run may use, from process_url_files on: as many as are asked for, or by the
// number of processors.
extern int run_thread_count;

// One row for each loading thread, in their order; written when all have ended.
extern threadCounter* tc;

// Loads all files of the input file list and sets the request table and its totals
// (request_table.h). Fails when a file cannot be counted or read, or a thread cannot be run; a
// failure in a worker thread is first told to tell_worker_failed (worker.h).
void process_url_files();
