#include "base/text_arena.h"

#include "base/allocation.h"

#include <algorithm>

void TextArena::start_block(const char* name, size_t size) {
    constexpr size_t max_block_size = 4 * huge_page_size;
    const size_t needed = std::max(size, next_block_size_);
    next_ = static_cast<char*>(reserve_pages(needed));
    if (next_ == nullptr) {
        out_of_memory(name, size);
    }
    end_ = next_ + needed;
    next_block_size_ = std::clamp(2 * needed, huge_page_size, max_block_size);
}
