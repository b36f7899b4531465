#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/merge/table_spool.h"
#include "companions/shard/plan/plan.h"

// Reads what a job has made: the settled instances, and the tables of all ranges of sessions in
// their order. Sets the counters of the run (tools/load/request_table.h,
// tools/urls/request_selection.h) and returns the tables. Fails when anything is missing, as after
// a job that was ended before its time.
TableSpool read_job(FrameReader& frames, const Plan& plan);
