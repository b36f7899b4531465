#include "base/text_arena.h"

#include "base/allocation.h"

#include <algorithm>

void TextArena::start_block(const char* name, size_t size) {
    constexpr size_t max_block_size = size_t{8} << 20; // holds several huge pages
    const size_t needed = std::max(size, next_block_size_);
    next_ = static_cast<char*>(reserve_pages(needed));
    if (next_ == nullptr) {
        out_of_memory(name, size);
    }
    end_ = next_ + needed;
    next_block_size_ = std::min(2 * needed, max_block_size);
}
