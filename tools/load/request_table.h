#pragma once

#include "tools/parse/request_numbers.h"
#include "tools/parse/request_record.h"

#include <cstdint>

// The request table of the run and the totals of loading. Written by process_url_files after its
// threads have ended; the totals also by fill_url_pattern_from_cache when a run does not load.

extern alInfo* al_info_array;    // g_valid_request records in load order; null when there are none
extern uint64_t g_valid_request; // requests accepted
extern uint64_t g_total_req;     // lines that were neither empty nor comments
extern uint64_t g_time_filtered_req; // of these, outside the replay period
extern uint64_t g_total_bad_req;     // of these, not to be parsed

extern RequestNumbers request_numbers; // the numbers of al_info_array's records

// One address range for the records of all threads, so that joining their tables only closes the
// gaps of lines that gave no record. Memory is taken as records are written.
class RequestTableSpace {
  public:
    // Room for `capacity` records; ends the run when the system refuses.
    explicit RequestTableSpace(uint64_t capacity);

    // The next `capacity` records of the range, zeroed, for one thread; null for 0.
    alInfo* take(uint64_t capacity);

    // Moves `count` records, which stand in a table that take gave, to the end of those appended
    // before, and sees to it that each has its number. Tables are to be appended in the order in
    // which they were taken.
    void append(alInfo* table, uint64_t count);

    // The appended records; null when there are none.
    alInfo* records() const { return appended_ == 0 ? nullptr : space_; }

  private:
    alInfo* space_;
    uint64_t taken_ = 0;
    uint64_t appended_ = 0;
};
