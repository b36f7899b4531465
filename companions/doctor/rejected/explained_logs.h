#pragma once

#include "companions/doctor/rejected/rejection.h"
#include "tools/load/log_pieces.h"

#include <cstdint>
#include <vector>

// The lines of the logs that do not count, with why, and how many lines there are of each.

struct RejectedPlace {
    uint32_t line;   // in the piece, from 0
    uint32_t offset; // as in LineNote
    Rejection why;
};

struct ExplainedPiece {
    LogPiece piece;
    int64_t lines_before = 0;                 // in the file
    uint32_t line_count = 0;                  // of the piece; of a stream, those that were read
    std::vector<RejectedPlace> rejected = {}; // by line
};

struct ExplainedLogs {
    std::vector<ExplainedPiece> pieces;  // in load order
    std::vector<RejectionCounts> counts; // by index into seq_file_path

    uint64_t rejected_lines() const; // in all logs
};

// Loads the logs that the scenario names as a run does, up to the choice of the requests that
// count. Sets the run's totals (request_table.h, request_selection.h) and run_thread_count. Fails
// as a run does. To be called once.
ExplainedLogs explain_logs();
