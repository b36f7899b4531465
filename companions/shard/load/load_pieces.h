#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/plan/plan.h"

#include <cstdint>
#include <vector>

// Reads pieces of work by the loader of a run and writes their requests: those with a session of
// their own, or none at all, as sorted runs of rows frames; what happened to those that wait for a
// session, and these themselves, as events frames. `pieces`: numbers of the plan's pieces. Needs
// the plan applied. Fails when a log is not the plan's, before or after it was read.
void load_pieces(const Plan& plan, const std::vector<uint32_t>& pieces, FrameWriter& frames);

// Bytes of rows and their texts that a run holds at most, about; then it is sorted and written.
// Tests set it.
extern size_t loaded_run_size;
