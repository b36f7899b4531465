#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Numbers distinct keys in the order in which they first come, 0, 1, ... The keys themselves stay
// with the caller: the table keeps only their hashes and numbers.
class NumberTable {
  public:
    // Number of the key with this hash for which `is_same(number)` holds; a new key gets the next
    // number, and `*is_new` tells.
    template <typename IsSame>
    uint32_t number_of(uint64_t hash, const IsSame& is_same, bool* is_new) {
        if (2 * (count_ + size_t{1}) > slots_.size()) {
            grow();
        }
        const auto tag = static_cast<uint32_t>(hash >> 32);
        size_t at = hash & (slots_.size() - 1);
        while (slots_[at].number != unknown) {
            if (slots_[at].tag == tag && is_same(slots_[at].number)) {
                *is_new = false;
                return slots_[at].number;
            }
            at = (at + 1) & (slots_.size() - 1);
        }
        slots_[at] = {tag, static_cast<uint32_t>(hash), count_};
        *is_new = true;
        return count_++;
    }

    // Asks for the memory in which the key with this hash is looked up first.
    void prefetch(uint64_t hash) const {
        if (!slots_.empty()) {
            __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]);
        }
    }

    // The number that a key with this hash most likely has; `unknown` when it has none yet.
    uint32_t likely_number(uint64_t hash) const {
        return slots_.empty() ? unknown : slots_[hash & (slots_.size() - 1)].number;
    }

    static constexpr uint32_t unknown = UINT32_MAX;

    uint32_t count() const { return count_; }

  private:
    struct Slot {
        uint32_t tag = 0; // upper half of the hash, to compare before the key
        uint32_t low = 0; // lower half, to find the place in a larger table
        uint32_t number = unknown;
    };

    void grow();

    std::vector<Slot> slots_;
    uint32_t count_ = 0;
};
