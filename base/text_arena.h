#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

// Hands out pieces of large blocks, of exactly the size asked for, for texts that one thread makes
// and that live to the end of the run, or until all are given back at once: none is ever freed by
// itself, and no bookkeeping is kept for it.
class TextArena {
  public:
    TextArena() = default;
    TextArena(TextArena&& other) noexcept { *this = std::move(other); }
    TextArena& operator=(TextArena&& other) noexcept { // what it had handed out stays
        next_ = std::exchange(other.next_, nullptr);
        end_ = std::exchange(other.end_, nullptr);
        last_block_ = std::exchange(other.last_block_, nullptr);
        held_size_ = std::exchange(other.held_size_, 0);
        next_block_size_ = other.next_block_size_;
        return *this;
    }

    // Gives all blocks back to the system: nothing that was handed out may be used any more. The
    // arena is as new.
    void release();

    // Bytes of all blocks, used or not.
    size_t held_size() const { return held_size_; }

    // Room for `size` characters, aligned as what was allocated before leaves it, of an item called
    // `name`, owned by the arena's blocks, which outlive the arena itself. Ends the run when memory
    // is out; the error line names the item.
    char* allocate(const char* name, size_t size) {
        if (static_cast<size_t>(end_ - next_) < size) {
            start_block(name, size);
        }
        char* piece = next_;
        next_ += size;
        return piece;
    }

    // A terminated copy of `text` with `spare` more characters of room after the terminator.
    char* copy(const char* name, std::string_view text, size_t spare = 0) {
        char* piece = allocate(name, text.size() + 1 + spare);
        std::memcpy(piece, text.data(), text.size());
        piece[text.size()] = '\0';
        return piece;
    }

  private:
    static constexpr size_t first_block_size = size_t{64} << 10;

    // What a block begins with.
    struct BlockHead {
        BlockHead* before;
        size_t size; // of the block
    };

    void start_block(const char* name, size_t size);

    char* next_ = nullptr;
    char* end_ = nullptr;
    BlockHead* last_block_ = nullptr;
    size_t held_size_ = 0;
    size_t next_block_size_ = first_block_size; // then huge pages
};
