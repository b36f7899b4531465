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

// Up to sixteen characters as two such numbers. The text may be null when there are none.
struct ShortText {
    ShortText(const char* text, size_t size) {
        constexpr size_t half = sizeof(uint64_t);
        low = short_text_word(text, size > half ? half : size);
        high = size > half ? short_text_word(text + half, size - half) : 0;
    }

    // Writes sixteen characters.
    void store(char* place) const {
        const uint64_t words[] = {htole64(low), htole64(high)};
        std::memcpy(place, words, sizeof words);
    }

    uint64_t low;
    uint64_t high;
};
