#pragma once

#include "companions/shard/plan/plan.h"
#include "tools/load/log_pieces.h"

#include <cstdint>
#include <vector>

// The logs of a plan, as they stand on this host, cut into log pieces: those of a run with a
// loading thread for each instance, whose number is the thread's. Needs the list of logs in
// seq_file_path (apply_plan).
std::vector<LogPiece> cut_planned_logs(const std::vector<PlannedLog>& logs);

// Bytes of a log piece: as in a run, or fewer where so many pieces of work are wanted that there
// would be too few of them.
uint64_t choose_log_piece_size(const std::vector<PlannedLog>& logs, uint64_t piece_count);

// Runs of log pieces with about as many bytes each. `count`: how many are wanted; 0: of some 256 MB
// each.
std::vector<PieceOfWork> plan_pieces(const std::vector<PlannedLog>& logs, uint64_t count);
