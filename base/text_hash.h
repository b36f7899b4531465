#pragma once

#include "base/short_text.h"

#include <cstdint>
#include <cstring>
#include <string_view>

// Hashes of texts. They differ in every process, so that nobody can write texts into a log that all
// meet in one place of a table; nothing that a run gives out depends on them.

// Two of them: who knew the multiplier could write a word that wipes out all that came before it.
struct HashSeed {
    uint64_t first;
    uint64_t second;
};
extern const HashSeed hash_seed; // chosen when the process starts

// The product of two numbers, its halves folded into one.
inline uint64_t folded_product(uint64_t a, uint64_t b) {
    __extension__ using uint128 = unsigned __int128;
    const uint128 product = static_cast<uint128>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

// Inline, as a line has three texts to hash and they are short.
inline uint64_t hash_text(std::string_view text) {
    constexpr uint64_t odd_multiplier = 0x9e3779b97f4a7c15;
    constexpr size_t step = 2 * sizeof(uint64_t);
    uint64_t hash = hash_seed.first ^ text.size();
    const auto add_step = [&](uint64_t low, uint64_t high) {
        hash = folded_product(hash ^ low, hash_seed.second ^ high);
    };
    const auto add_step_at = [&](const char* position) {
        uint64_t words[2];
        std::memcpy(words, position, sizeof words);
        add_step(words[0], words[1]);
    };
    if (text.size() < step) {
        const ShortText words(text.data(), text.size());
        add_step(words.low, words.high);
        return folded_product(hash, odd_multiplier);
    }
    const char* const last_step = text.data() + text.size() - step;
    for (const char* position = text.data(); position < last_step; position += step) {
        add_step_at(position);
    }
    add_step_at(last_step); // overlaps the one before rather than being pieced together
    return folded_product(hash, odd_multiplier);
}
