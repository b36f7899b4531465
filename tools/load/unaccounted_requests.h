#pragma once

#include "tools/parse/request_record.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <queue>
#include <string_view>
#include <vector>

constexpr int max_unaccounted_requests = 250000;

// A request by the place of its row.
struct RowPlace {
    uint32_t batch; // number of the batch
    uint32_t row;   // in that batch
};

// A request that waits for its session.
struct WaitingRequest {
    RowPlace place;
    const char* file_name; // of its log
    int64_t line_num;      // in the log
    const char* url;       // as logged, with debug lines that tell it; else null
};

// The requests of one loading thread that carry the secondary cookie but no session yet, in the
// slots of an array. A request waits in the lowest free slot below the end index, or at the end
// index when there is none; the end index gives back a slot only when the slot just below it
// becomes free. When the end index reaches the array's end, the thread is full, even while slots
// below it are free.
//
// The slots of each cookie value are chained and the free slots kept in order beside the array, so
// that neither adding nor back-filling has to search it. Only values that a request waits with take
// memory, so that it is bounded by the array.
class UnaccountedRequests {
  public:
    UnaccountedRequests();

    bool is_full() const { return end_index() == max_unaccounted_requests; }
    int end_index() const { return ua_end_index_t_; }

    // Puts a request into a slot. Its secondary cookie has fewer than max_cookie_length characters,
    // and at least one. Not to be called when full.
    void add(const WaitingRequest& request, std::string_view akaau_id);

    // Frees the slots of all requests whose secondary cookie has this value and gives the requests
    // in the order of the slots, until the next call.
    const std::vector<WaitingRequest>& take(std::string_view akaau_id);

    // The requests that are waiting, in the order of the slots.
    std::vector<WaitingRequest> all() const;

  private:
    static constexpr int no_slot = -1;

    struct Slot {
        WaitingRequest request;
        int before;       // the slot that the same value used before it; -1: none
        uint32_t id_size; // 0: the slot is free
        char akaau_id[max_cookie_length];

        std::string_view id() const { return {akaau_id, id_size}; }
    };

    // A value of the secondary cookie, by its place in the table.
    struct Value {
        uint32_t hash = 0;       // lower half of the value's hash
        int last_slot = no_slot; // the slot used last, which holds the value; -1: the place is free
    };

    Slot& slot_at(int slot) { return unaccounted_url_t_[static_cast<size_t>(slot)]; }
    int take_slot();
    void free_slot(int slot);
    size_t find(std::string_view akaau_id, uint32_t hash);
    void grow();
    void forget(size_t place);

    std::deque<Slot> unaccounted_url_t_; // up to the highest end index so far
    int ua_end_index_t_ = 0;             // one past the highest slot used and not given back
    std::vector<Value> values_; // a power of two of places, at most half of them used; each value
                                // as near behind the place that its hash tells as there was room
    size_t value_count_ = 0;
    std::priority_queue<int, std::vector<int>, std::greater<int>>
        free_slots_; // below the end index
    std::vector<int> slots_of_taken_;
    std::vector<WaitingRequest> taken_;
};
