#include "tools/load/request_table.h"

#include "base/allocation.h"

#include <algorithm>
#include <cstring>
#include <numeric>

alInfo* al_info_array = nullptr;
uint64_t g_valid_request = 0;
RequestNumbers request_numbers;
uint64_t g_total_req = 0;
uint64_t g_time_filtered_req = 0;
uint64_t g_total_bad_req = 0;

namespace {

// In whole pages, however large the machine's are, so that each table can grow by itself.
uint64_t size_in_pages(uint64_t room) {
    constexpr uint64_t page_size = uint64_t{64} << 10;
    return (room * sizeof(alInfo) + page_size - 1) / page_size * page_size;
}

} // namespace

RequestTables::RequestTables(const std::vector<uint64_t>& rooms) : tables_(rooms.size()) {
    uint64_t size = 0;
    for (const uint64_t room : rooms) {
        size += size_in_pages(room);
    }
    space_ = size == 0 ? nullptr : static_cast<alInfo*>(reserve_pages(size));
    if (space_ == nullptr) {
        return;
    }
    alInfo* slice = space_;
    for (size_t i = 0; i < rooms.size(); ++i) {
        const uint64_t capacity = size_in_pages(rooms[i]) / sizeof(alInfo);
        tables_[i] = RecordTable(slice, capacity);
        slice += capacity;
    }
}

alInfo* RequestTables::join(const std::vector<uint64_t>& counts) {
    const uint64_t total = std::accumulate(counts.begin(), counts.end(), uint64_t{0});
    const bool has_grown = std::any_of(tables_.begin(), tables_.end(),
                                       [](const RecordTable& table) { return table.has_grown(); });
    if (has_grown) {
        tables_.front().make_room(total);
    }
    alInfo* const joined = has_grown ? tables_.front().records() : space_;
    alInfo* end = joined;
    for (size_t i = 0; i < tables_.size(); ++i) {
        if (counts[i] != 0 && tables_[i].records() != end) {
            std::memmove(end, tables_[i].records(), counts[i] * sizeof(alInfo));
        }
        end += counts[i];
        if (has_grown && i != 0) {
            tables_[i].release();
        }
    }
    for (uint64_t i = counts.empty() ? 0 : counts[0]; i < total; ++i) {
        joined[i].seq = i; // the records of the first table have their numbers already
    }
    return total == 0 ? nullptr : joined;
}
