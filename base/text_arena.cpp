#include "base/text_arena.h"

#include "base/allocation.h"

#include <algorithm>
#include <new>

void TextArena::release() {
    while (last_block_ != nullptr) {
        BlockHead* const block = last_block_;
        last_block_ = block->before;
        release_pages(block, block->size);
    }
    *this = TextArena();
}

void TextArena::start_block(const char* name, size_t size) {
    constexpr size_t max_block_size = 4 * huge_page_size;
    const size_t needed = std::max(sizeof(BlockHead) + size, next_block_size_);
    void* const block = reserve_pages(needed);
    if (block == nullptr) {
        out_of_memory(name, size);
    }
    last_block_ = new (block) BlockHead{last_block_, needed};
    held_size_ += needed;
    next_ = static_cast<char*>(block) + sizeof(BlockHead);
    end_ = static_cast<char*>(block) + needed;
    next_block_size_ = std::clamp(2 * needed, huge_page_size, max_block_size);
}
