#include "tools/parse/number_table.h"

#include <algorithm>
#include <utility>

void NumberTable::grow() {
    constexpr size_t first_size = 1024;
    std::vector<Slot> old = std::move(slots_);
    slots_ = std::vector<Slot>(std::max(first_size, old.size() * 2));
    for (const Slot& slot : old) {
        if (slot.number == unknown) {
            continue;
        }
        size_t at = slot.low & (slots_.size() - 1);
        while (slots_[at].number != unknown) {
            at = (at + 1) & (slots_.size() - 1);
        }
        slots_[at] = slot;
    }
}
