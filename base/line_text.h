#pragma once

#include <cstddef>

// A line or a part of one: `size` characters at `text`, none of them NUL, followed by a terminator.
struct LineText {
    char* text;
    size_t size;
};
