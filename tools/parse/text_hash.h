#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

// Hash of a text, eight characters at a time. Different in every process, so that nobody can write
// texts into a log that all meet in one place of a table; nothing that a run gives out depends on
// it.

__extension__ using uint128 = unsigned __int128;

inline uint64_t mix_hash(uint64_t a, uint64_t b) {
    const uint128 product = static_cast<uint128>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

uint64_t hash_seed();

inline uint64_t hash_number(uint64_t number) {
    constexpr uint64_t multiplier = 0x9e3779b97f4a7c15;
    return mix_hash(number ^ hash_seed(), multiplier);
}

inline uint64_t hash_text(std::string_view text, uint64_t hash) {
    constexpr uint64_t multiplier = 0x9e3779b97f4a7c15;
    const char* position = text.data();
    size_t left = text.size();
    for (; left >= sizeof(uint64_t); left -= sizeof(uint64_t), position += sizeof(uint64_t)) {
        uint64_t word;
        std::memcpy(&word, position, sizeof word);
        hash = mix_hash(hash ^ word, multiplier);
    }
    uint64_t word = 0;
    std::memcpy(&word, position, left);
    return mix_hash(hash ^ word ^ static_cast<uint64_t>(text.size()) << 56, multiplier);
}
