#pragma once

#include "tools/parse/parsing_thread.h"
#include "tools/parse/record_table.h"
#include "tools/parse/unaccounted_requests.h"

#include <cstdint>
#include <cstdio>

// Loads one access log on a worker thread: parses its lines, up to the line budget of the file, and
// appends the accepted requests with their sessions to the thread's records, which grow as they
// must.
//
// A request's record is complete but for what later phases decide: the part of its URL that counts
// is known, and the cookie headers are gone. `thread` counts the lines and numbers the requests.
//
// `seq_file_idx`: the file's index in seq_file_path. `al_file_fp`: the file, open, read to its end
// or budget; stays the caller's. `*seq_no`: number of the thread's records so far, advanced for
// each accepted request. `unaccounted_url_t`: the thread's requests that wait for a session.
// Returns 0; or 1 when too many requests wait for a session and the thread must load no more. Ends
// the run when the file cannot be read.
int load_url_info(ParsingThread& thread, RecordTable& al_info_array_t, int seq_file_idx,
                  FILE* al_file_fp, uint64_t* seq_no, UnaccountedRequests& unaccounted_url_t);
