#pragma once

#include "tools/load/row_table.h"
#include "tools/load/session_settlement.h"
#include "tools/parse/request_batch.h"
#include "tools/parse/request_interner.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// The request table of the run and the totals of loading. Written by process_url_files after its
// threads have ended; the totals also by fill_url_pattern_from_cache when a run does not load.

struct RequestTable {
    RowTable rows;      // in load order
    RequestTexts texts; // that their ids stand for; sessions may be there that no row has
};

extern RequestTable request_table;
extern uint64_t g_valid_request;     // requests accepted: rows of the table
extern uint64_t g_total_req;         // lines that were neither empty nor comments
extern uint64_t g_time_filtered_req; // of these, outside the replay period
extern uint64_t g_total_bad_req;     // of these, not to be parsed

// A batch and the number of the worker whose interner gave its ids.
struct WorkerBatch {
    RequestBatch* batch; // its rows are taken away
    uint32_t worker;
};

// Joins batches in their order into one table, on so many threads. `texts`: by worker. `grants`: in
// the order in which they were made, by numbers of these batches.
RequestTable join_batches(const std::vector<WorkerBatch>& batches, std::vector<RequestTexts> texts,
                          const std::vector<SessionGrant>& grants, int thread_count);
