#pragma once

#include <cstdint>
#include <cstring>
#include <endian.h>

// Texts of a few characters, copied without asking for each character whether it is there.

// Up to eight characters as a number, the first in the lowest byte, zeros behind the last.
inline uint64_t short_text_word(const char* text, size_t size) {
    if (size == sizeof(uint64_t)) {
        uint64_t word;
        std::memcpy(&word, text, sizeof word);
        return le64toh(word);
    }
    if (size >= sizeof(uint32_t)) { // two halves, which overlap and agree where they do
        uint32_t start;
        uint32_t end;
        std::memcpy(&start, text, sizeof start);
        std::memcpy(&end, text + size - sizeof end, sizeof end);
        return le32toh(start) | uint64_t{le32toh(end)} << 8 * (size - sizeof end);
    }
    if (size == 0) {
        return 0;
    }
    const auto shifted = [&](size_t at) {
        return uint64_t{static_cast<unsigned char>(text[at])} << 8 * at;
    };
    return shifted(0) | shifted(size / 2) | shifted(size - 1);
}

// Copies up to sixteen characters and fills `place` up with zeros. `text` may be null for none.
inline void store_short_text(const char* text, size_t size, char* place) {
    constexpr size_t half = sizeof(uint64_t);
    const bool is_long = size > half;
    const uint64_t words[] = {htole64(short_text_word(text, is_long ? half : size)),
                              htole64(is_long ? short_text_word(text + half, size - half) : 0)};
    std::memcpy(place, words, sizeof words);
}
