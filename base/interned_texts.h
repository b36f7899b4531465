#pragma once

#include "base/allocation.h"
#include "base/text_arena.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// Gives distinct texts their ids in the order in which they first come, 0, 1, ... It keeps a copy
// of each, all of them close together, so that a text that is known already costs few looks at
// memory. Not to be used any more once it is moved from.
class InternedTexts {
  public:
    // The id of the text, whose hash_text is given; a new one gets the next id.
    uint32_t intern(std::string_view text, uint64_t hash);

    static constexpr uint32_t unknown = UINT32_MAX;

    // The id of the text, whose hash_text is given, or `unknown`.
    uint32_t find(std::string_view text, uint64_t hash);

    // Prefetch what intern will look at for a text with this hash: the place in the table first,
    // the known text when that has arrived.
    void prefetch_slot(uint64_t hash) const { __builtin_prefetch(first_slot_ + (hash & mask_)); }
    void prefetch_text(uint64_t hash) const {
        const Text* text = first_slot_[hash & mask_].text;
        if (text != nullptr) {
            __builtin_prefetch(text);
            __builtin_prefetch(reinterpret_cast<const char*>(text) + cache_line);
        }
    }

    uint32_t count() const { return static_cast<uint32_t>(texts_.size()); }

    // The text with this id, which must be below count(). Lives to the end of the run, or until
    // release.
    std::string_view text(uint32_t id) const { return texts_[id]->view(); }

    // Forgets all texts and gives all memory back. The next text gets the id 0 again.
    void release();

    // Bytes that are taken, those of the table included.
    size_t held_size() const {
        constexpr size_t pointer_size = sizeof(void*); // all have one size
        return slots_.capacity() * sizeof(Slot) + texts_.capacity() * pointer_size +
               arena_.held_size();
    }

  private:
    static constexpr size_t cache_line = 64;

    struct Text {
        uint32_t id;
        uint32_t size;

        // The characters follow in memory.
        char* characters() { return reinterpret_cast<char*>(this + 1); }
        std::string_view view() const { return {reinterpret_cast<const char*>(this + 1), size}; }
    };

    struct Slot {
        uint64_t hash;
        Text* text; // null: free
    };

    Slot& find_slot(uint64_t hash, std::string_view text);
    void grow();
    uint32_t add(std::string_view text, uint64_t hash);

    using Slots = std::vector<Slot, PageAllocator<Slot>>;

    static Slot free_slot; // looked at while there are no slots, never written

    Slots slots_;                   // a power of two of them, at most half of them used
    Slot* first_slot_ = &free_slot; // of slots_, if there is one
    size_t mask_ = 0;               // of a hash: the place of its slot
    std::vector<Text*> texts_;
    TextArena arena_;
};
