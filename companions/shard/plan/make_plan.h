#pragma once

#include "companions/common/common_options.h"
#include "companions/shard/plan/plan.h"

#include <cstdint>

// Reads the installation as a run does and makes the plan of a job. Refuses what a run refuses,
// with its messages; besides, logs that are no regular files, as they can be read only once; a
// number of threads that would let instances wait for each other's sessions; and a scenario that is
// being worked on. `piece_count`: how many pieces of work are wanted; 0: of some 256 MB each.
Plan make_plan(const RunOptions& options, uint64_t piece_count);
