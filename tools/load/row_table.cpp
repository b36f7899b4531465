#include "tools/load/row_table.h"

void RowTable::add(RequestRows rows) {
    if (rows.empty()) {
        return;
    }
    const uint32_t begin = size_;
    size_ += static_cast<uint32_t>(rows.size());
    while (uint64_t{first_part_.size()} * rows_a_step < size_) {
        first_part_.push_back(static_cast<uint32_t>(parts_.size()));
    }
    parts_.push_back({begin, size_, std::move(rows)});
}
