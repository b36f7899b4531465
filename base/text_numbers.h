#pragma once

#include "base/allocation.h"
#include "base/text_arena.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// Numbers distinct texts in the order in which they first come, 0, 1, ... It keeps a copy of each,
// all of them close together, so that a text that is known already costs few looks at memory.
class TextNumbers {
  public:
    // The number of the text, whose hash_text is given; a new one gets the next number.
    uint32_t number_of(std::string_view text, uint64_t hash);

    static constexpr uint32_t unknown = UINT32_MAX;

    // The number of the text, whose hash_text is given, or `unknown`.
    uint32_t find(std::string_view text, uint64_t hash);

    // Fetches into the processor's cache what number_of will look at for a text with this hash: the
    // place in the table first, the known text when that has arrived.
    void fetch_slot(uint64_t hash) const {
        if (!slots_.empty()) {
            __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]);
        }
    }
    void fetch_text(uint64_t hash) const {
        if (!slots_.empty()) {
            const Text* text = slots_[hash & (slots_.size() - 1)].text;
            if (text != nullptr) {
                __builtin_prefetch(text);
                __builtin_prefetch(reinterpret_cast<const char*>(text) + cache_line);
            }
        }
    }

    uint32_t count() const { return static_cast<uint32_t>(texts_.size()); }

    // The text with this number, which must be below count().
    std::string_view text(uint32_t number) const { return texts_[number]->view(); }

  private:
    static constexpr size_t cache_line = 64;

    struct Text {
        uint32_t number;
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
    Text* add(std::string_view text);

    using Slots = std::vector<Slot, PageAllocator<Slot>>;

    Slots slots_; // a power of two of them, at most half of them used
    std::vector<Text*> texts_;
    TextArena arena_;
};
