#include "tools/parse/unaccounted_requests.h"

#include "base/allocation.h"
#include "base/logs.h"
#include "base/text_hash.h"
#include "tools/config/log_files.h"
#include "tools/parse/secondary_cookie_trace.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
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

void UnaccountedRequests::add(int64_t record_index, std::string_view akaau_id) {
    const int slot = take_slot();
    unaccounted_url_t_[slot] = record_index;
    const uint32_t number = values_.number_of(akaau_id, hash_text(akaau_id));
    if (number == last_slot_of_value_.size()) {
        last_slot_of_value_.push_back(no_slot);
    }
    slot_before_[static_cast<size_t>(slot)] = std::exchange(last_slot_of_value_[number], slot);
}

const std::vector<int64_t>& UnaccountedRequests::take(std::string_view akaau_id) {
    taken_.clear();
    const uint32_t number = values_.find(akaau_id, hash_text(akaau_id));
    if (number == TextNumbers::unknown) {
        return taken_;
    }
    slots_of_taken_.clear();
    for (int slot = std::exchange(last_slot_of_value_[number], no_slot); slot != no_slot;
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

void update_unaccounted_array(ParsingThread& thread, alInfo* al_info_array_t, const char* akaau_id,
                              const char* jsession_id, UnaccountedRequests& unaccounted_url_t) {
    constexpr const char* fname = "update_unaccounted_array";
    DEBUG_LOG(2, fname, "Method called");
    if (akaau_id[0] == '\0') {
        return;
    }
    for (const int64_t index : unaccounted_url_t.take(akaau_id)) {
        alInfo& record = al_info_array_t[index];
        if (record.jsession_id[0] != '\0') {
            continue;
        }
        std::memcpy(record.jsession_id, jsession_id, std::strlen(jsession_id) + 1);
        thread.numbers.change_session(static_cast<uint32_t>(index), record);
        DEBUG_LOG(3, fname, "Settign jsessionid for url %s", record.url);
        trace_updated(
            record.akaau_id,
            {thread.thread_idx, seq_file_path[record.seq_file_idx].input_file, record.line_num});
    }
}
