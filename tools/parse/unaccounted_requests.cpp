#include "tools/parse/unaccounted_requests.h"

#include "tools/driver/allocation.h"
#include "tools/driver/logs.h"
#include "tools/load/input_files.h"
#include "tools/parse/secondary_cookie_trace.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int64_t free_entry = -1;

} // namespace

UnaccountedRequests::UnaccountedRequests(const alInfo* al_info_array_t)
    : al_info_array_t_(al_info_array_t) {
    log_allocation("process_url_files_t", "unaccounted array",
                   max_unaccounted_requests * sizeof(int64_t));
    unaccounted_url_t_.assign(max_unaccounted_requests, free_entry);
}

void UnaccountedRequests::add(int64_t record_index) {
    const int slot = take_slot();
    unaccounted_url_t_[static_cast<size_t>(slot)] = record_index;
    slots_of_value_[al_info_array_t_[record_index].akaau_id].push_back(slot);
}

std::vector<int64_t> UnaccountedRequests::take(std::string_view akaau_id) {
    const auto found = slots_of_value_.find(akaau_id);
    if (found == slots_of_value_.end()) {
        return {};
    }
    std::vector<int> slots = std::move(found->second);
    slots_of_value_.erase(found);
    std::sort(slots.begin(), slots.end());
    std::vector<int64_t> records;
    records.reserve(slots.size());
    for (const int slot : slots) {
        records.push_back(unaccounted_url_t_[static_cast<size_t>(slot)]);
        free_slot(slot);
    }
    return records;
}

int UnaccountedRequests::take_slot() {
    if (free_slots_.empty()) {
        return ua_end_index_t_++;
    }
    const int slot = free_slots_.top();
    free_slots_.pop();
    return slot;
}

void UnaccountedRequests::free_slot(int slot) {
    unaccounted_url_t_[static_cast<size_t>(slot)] = free_entry;
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
        std::strcpy(record.jsession_id, jsession_id);
        thread.numbers.change_session(static_cast<uint32_t>(index), record);
        DEBUG_LOG(3, fname, "Settign jsessionid for url %s", record.url);
        trace_updated(
            record.akaau_id,
            {thread.thread_idx, seq_file_path[record.seq_file_idx].input_file, record.line_num});
    }
}
