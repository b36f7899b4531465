#pragma once

#include "tools/parse/request_record.h"

#include <cstdint>

// The records of one worker thread, in the order in which their lines were read. How many there
// will be can only be estimated, so the table grows when they turn out to be more.
class RecordTable {
  public:
    RecordTable() = default;

    // Begins with the room of `capacity` zeroed records. To grow, they must be whole pages that
    // reserve_pages gave; the table then owns them.
    RecordTable(alInfo* records, uint64_t capacity) : records_(records), capacity_(capacity) {}

    // The first record; elsewhere after each call of make_room that has grown the table.
    alInfo* records() const { return records_; }
    bool has_grown() const { return has_grown_; }

    // Sees to it that there are at least `count` records, new ones zeroed. Ends the run when the
    // system has no memory for them.
    void make_room(uint64_t count) {
        if (count > capacity_) {
            grow(count);
        }
    }

    // Gives back the memory of all records.
    void release();

  private:
    void grow(uint64_t count);

    alInfo* records_ = nullptr;
    uint64_t capacity_ = 0;
    bool has_grown_ = false;
};
