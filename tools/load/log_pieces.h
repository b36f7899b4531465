#pragma once

#include "base/line_reader.h"
#include "tools/load/instance_allotment.h"
#include "tools/load/line_budgets.h"

#include <cstdint>
#include <vector>

// The logs of a run, cut into pieces that any worker thread can read by itself.

// A part of a file of the input file list; the file's lines that begin in `range`.
struct LogPiece {
    int thread;                 // number of the loading thread that the file is allotted to
    int file;                   // index into seq_file_path
    FileIdentity identity = {}; // of the file that was measured and cut
    FileRange range;            // not used for a stream
    bool is_stream;             // no regular file: all of it in one piece
    bool begins_file;
    bool ends_file;
    bool ends_thread;
};

// Bytes of a file that make up a piece, or more where logs are larger than a terabyte. Tests set
// it, before logs are loaded.
extern uint64_t log_piece_size;

// Cuts all files of the input file list, in its order; `extents`: of each. Each has at least one
// piece, also when it is missing or not to be loaded.
std::vector<LogPiece> cut_logs(const std::vector<LogExtent>& extents,
                               const parsingThreadArgs* threads, int thread_count);
