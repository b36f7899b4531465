#pragma once

#include "tools/parse/parsing_thread.h"

// Loading: the lines of the files are counted, then worker threads parse the files into request
// tables of their own, which are joined into the request table of the run. The only phase of a run
// with more than one thread; the workers share nothing that they write to.

// One row for each worker thread, in their order; written when all have ended.
extern threadCounter* tc;

// Loads all files of the input file list and sets the request table and its totals
// (request_table.h). Fails when a file cannot be counted or read, or a thread cannot be run; a
// failure in a worker thread is first told to tell_worker_failed (worker.h).
void process_url_files();
