#pragma once

#include "tools/parse/parsing_thread.h"
#include "tools/parse/request_record.h"

#include <cstdint>
#include <functional>
#include <queue>
#include <string_view>
#include <unordered_map>
#include <vector>

constexpr int max_unaccounted_requests = 250000;

// The requests of one worker thread that carry the secondary cookie but no session yet, in the
// slots of an array. A request waits in the lowest free slot below the end index, or at the end
// index when there is none; the end index gives back a slot only when the slot just below it
// becomes free. When the end index reaches the array's end, the thread is full, even while slots
// below it are free.
//
// The slots of each cookie value and the free slots are kept in order beside the array, so that
// neither adding nor back-filling has to search it.
class UnaccountedRequests {
  public:
    // `al_info_array_t`: the thread's records, to which the slots refer; they must not move.
    explicit UnaccountedRequests(const alInfo* al_info_array_t);

    bool is_full() const { return ua_end_index_t_ == max_unaccounted_requests; }
    int end_index() const { return ua_end_index_t_; }

    // Puts the record with the given index into a slot. Not to be called when full.
    void add(int64_t record_index);

    // Frees the slots of all requests whose secondary cookie has this value and gives the indices
    // of their records in the order of the slots.
    std::vector<int64_t> take(std::string_view akaau_id);

  private:
    int take_slot();
    void free_slot(int slot);

    const alInfo* al_info_array_t_;
    std::vector<int64_t> unaccounted_url_t_; // record indices; -1: free
    int ua_end_index_t_ = 0;                 // one past the highest slot used and not given back
    std::unordered_map<std::string_view, std::vector<int>> slots_of_value_;
    std::priority_queue<int, std::vector<int>, std::greater<int>>
        free_slots_; // below the end index
};

// Gives the requests that wait with the secondary-cookie value `akaau_id` the session
// `jsession_id`, unless they have one, and takes them out of the waiting. Does nothing for an empty
// `akaau_id`.
void update_unaccounted_array(ParsingThread& thread, alInfo* al_info_array_t, const char* akaau_id,
                              const char* jsession_id, UnaccountedRequests& unaccounted_url_t);
