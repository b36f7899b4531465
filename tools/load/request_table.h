#pragma once

#include "tools/parse/record_table.h"
#include "tools/parse/request_numbers.h"
#include "tools/parse/request_record.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// The request table of the run and the totals of loading. Written by process_url_files after its
// threads have ended; the totals also by fill_url_pattern_from_cache when a run does not load.

extern alInfo* al_info_array;    // g_valid_request records in load order; null when there are none
extern uint64_t g_valid_request; // requests accepted
extern uint64_t g_total_req;     // lines that were neither empty nor comments
extern uint64_t g_time_filtered_req; // of these, outside the replay period
extern uint64_t g_total_bad_req;     // of these, not to be parsed

extern RequestNumbers request_numbers; // the numbers of al_info_array's records

// The tables of all worker threads. As long as none of them has grown they are slices of one
// address range, so that joining them only closes the gaps of lines that gave no record. Memory is
// taken as records are written.
class RequestTables {
  public:
    // A table for each thread, with room for so many records, or with none when the system refuses
    // that much at once: what is needed of it may still be had.
    explicit RequestTables(const std::vector<uint64_t>& rooms);

    RecordTable& of_thread(size_t thread) { return tables_[thread]; }

    // Joins the first `counts` records of each table, in the order of the threads, and sees to it
    // that each has its number. Returns them, null when there are none; the tables are gone.
    alInfo* join(const std::vector<uint64_t>& counts);

  private:
    alInfo* space_ = nullptr; // the address range; null: none
    std::vector<RecordTable> tables_;
};
