#include "tools/load/unaccounted_requests.h"

#include "base/allocation.h"
#include "base/text_hash.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr int no_slot = -1;

} // namespace

UnaccountedRequests::UnaccountedRequests()
    : unaccounted_url_t_(static_cast<int64_t*>(allocate_zeroed(
          "process_url_files_t", "unaccounted array", max_unaccounted_requests, sizeof(int64_t)))) {
}

UnaccountedRequests::~UnaccountedRequests() {
    std::free(unaccounted_url_t_);
}

void UnaccountedRequests::add(int64_t request, std::string_view akaau_id) {
    const int slot = take_slot();
    unaccounted_url_t_[slot] = request;
    const uint32_t id = values_.intern(akaau_id, hash_text(akaau_id));
    if (id == last_slot_of_value_.size()) {
        last_slot_of_value_.push_back(no_slot);
    }
    slot_before_[static_cast<size_t>(slot)] = std::exchange(last_slot_of_value_[id], slot);
}

const std::vector<int64_t>& UnaccountedRequests::take(std::string_view akaau_id) {
    taken_.clear();
    const uint32_t id = values_.find(akaau_id, hash_text(akaau_id));
    if (id == InternedTexts::unknown) {
        return taken_;
    }
    slots_of_taken_.clear();
    for (int slot = std::exchange(last_slot_of_value_[id], no_slot); slot != no_slot;
         slot = slot_before_[static_cast<size_t>(slot)]) {
        slots_of_taken_.push_back(slot);
    }
    std::sort(slots_of_taken_.begin(), slots_of_taken_.end());
    for (const int slot : slots_of_taken_) {
        taken_.push_back(unaccounted_url_t_[slot]);
        free_slot(slot);
    }
    return taken_;
}

int UnaccountedRequests::take_slot() {
    if (free_slots_.empty()) {
        slot_before_.resize(static_cast<size_t>(ua_end_index_t_) + 1);
        return ua_end_index_t_++;
    }
    const int slot = free_slots_.top();
    free_slots_.pop();
    return slot;
}

void UnaccountedRequests::free_slot(int slot) {
    if (slot == ua_end_index_t_ - 1) {
        --ua_end_index_t_;
    } else {
        free_slots_.push(slot);
    }
}
