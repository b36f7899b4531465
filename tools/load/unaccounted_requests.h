#pragma once

#include "base/interned_texts.h"

#include <cstdint>
#include <functional>
#include <queue>
#include <string_view>
#include <vector>

constexpr int max_unaccounted_requests = 250000;

// The requests of one loading thread that carry the secondary cookie but no session yet, in the
// slots of an array. A request waits in the lowest free slot below the end index, or at the end
// index when there is none; the end index gives back a slot only when the slot just below it
// becomes free. When the end index reaches the array's end, the thread is full, even while slots
// below it are free.
//
// The slots of each cookie value are chained and the free slots kept in order beside the array, so
// that neither adding nor back-filling has to search it.
class UnaccountedRequests {
  public:
    // Ends the run when memory is out.
    UnaccountedRequests();
    ~UnaccountedRequests();
    UnaccountedRequests(const UnaccountedRequests&) = delete;
    UnaccountedRequests& operator=(const UnaccountedRequests&) = delete;

    bool is_full() const { return end_index() == max_unaccounted_requests; }
    int end_index() const { return ua_end_index_t_; }

    // Puts a request, known by its number, into a slot. Not to be called when full.
    void add(int64_t request, std::string_view akaau_id);

    // Frees the slots of all requests whose secondary cookie has this value and gives their numbers
    // in the order of the slots, until the next call.
    const std::vector<int64_t>& take(std::string_view akaau_id);

  private:
    int take_slot();
    void free_slot(int slot);

    int64_t* unaccounted_url_t_;          // the slots: request numbers
    int ua_end_index_t_ = 0;              // one past the highest slot used and not given back
    InternedTexts values_;                // cookie values that requests have waited with
    std::vector<int> last_slot_of_value_; // the slot used last, by id of the value; -1: none
    std::vector<int> slot_before_; // by slot: the one that the same value used before it; -1: none
    std::priority_queue<int, std::vector<int>, std::greater<int>>
        free_slots_; // below the end index
    std::vector<int> slots_of_taken_;
    std::vector<int64_t> taken_;
};
