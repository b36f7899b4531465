#include "tools/load/request_table.h"

#include "tools/driver/allocation.h"

#include <cstring>

alInfo* al_info_array = nullptr;
uint64_t g_valid_request = 0;
RequestNumbers request_numbers;
uint64_t g_total_req = 0;
uint64_t g_time_filtered_req = 0;
uint64_t g_total_bad_req = 0;

RequestTableSpace::RequestTableSpace(uint64_t capacity) {
    size_t size;
    const bool too_large = __builtin_mul_overflow(capacity, sizeof(alInfo), &size);
    space_ = too_large || size == 0 ? nullptr : static_cast<alInfo*>(reserve_pages(size));
    if (space_ == nullptr && capacity != 0) {
        out_of_memory("process_url_files", "al_info_array", size);
    }
}

alInfo* RequestTableSpace::take(uint64_t capacity) {
    if (capacity == 0) {
        return nullptr;
    }
    alInfo* table = space_ + taken_;
    taken_ += capacity;
    return table;
}

void RequestTableSpace::append(alInfo* table, uint64_t count) {
    alInfo* const target = space_ + appended_;
    if (table != target && count != 0) {
        std::memmove(target, table, count * sizeof(alInfo));
    }
    if (appended_ != 0) { // the records of the first table have their numbers already
        for (uint64_t i = 0; i < count; ++i) {
            target[i].seq = appended_ + i;
        }
    }
    appended_ += count;
}
