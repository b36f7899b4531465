#pragma once

#include <cstdint>
#include <vector>

// A text to be sorted, with whatever it stands for.
struct SortableText {
    const char* text; // terminated
    uint32_t number;
    uint64_t cached; // used while sorting: eight characters, the first in the highest byte
};

// Sorts texts byte-wise, as strcmp has them; equal ones stand together in any order. Looks at eight
// characters at a time, so that what many of them begin with costs little.
void sort_texts(std::vector<SortableText>& texts);
