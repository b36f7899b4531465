#pragma once

#include <cstdint>
#include <cstring>
#include <endian.h>
#include <string_view>
#include <vector>

// The first eight characters of a text as a number that is ordered as they are: the first in the
// highest byte, zeros from the end of the text on.
inline uint64_t order_prefix(std::string_view text) {
    uint64_t prefix = 0;
    if (text.size() >= sizeof prefix) {
        std::memcpy(&prefix, text.data(), sizeof prefix);
    } else {
        text.copy(reinterpret_cast<char*>(&prefix), sizeof prefix);
    }
    return be64toh(prefix);
}

// A text to be sorted, with whatever it stands for. The characters stay where they are.
struct SortableText {
    const char* characters; // none of them NUL
    uint32_t size;
    uint32_t number;
    uint64_t cached = 0; // used while sorting: order_prefix of what is to be compared next

    std::string_view text() const { return {characters, size}; }
};

// Sorts texts byte-wise; equal ones stand together in any order. Looks at eight characters at a
// time, so that what many of them begin with costs little.
void sort_texts(std::vector<SortableText>& texts);
