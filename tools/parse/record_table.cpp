#include "tools/parse/record_table.h"

#include "base/allocation.h"

#include <algorithm>
#include <cstddef>

void RecordTable::grow(uint64_t count) {
    constexpr uint64_t first_capacity = 16384; // 4 MB, of which untouched pages take no memory
    const uint64_t capacity = std::max({count, 2 * capacity_, first_capacity});
    const size_t size = capacity * sizeof(alInfo);
    void* grown = capacity_ == 0 ? reserve_pages(size)
                                 : grow_pages(records_, capacity_ * sizeof(alInfo), size);
    if (grown == nullptr) {
        out_of_memory("al_info_array", size);
    }
    records_ = static_cast<alInfo*>(grown);
    capacity_ = capacity;
    has_grown_ = true;
}

void RecordTable::release() {
    if (capacity_ != 0) {
        release_pages(records_, capacity_ * sizeof(alInfo));
    }
    *this = {};
}
