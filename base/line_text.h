#pragma once

#include <cstddef>

// A line or a part of one: `size` characters at `text`, none of them NUL, followed by a terminator.
struct LineText {
    char* text;
    size_t size;
};

// Bytes that may be read behind the terminator of a line that LineReader has cut, whatever they
// hold: searches in short texts need not ask at each step where the text ends.
constexpr size_t room_behind_line = 64;

// Goes through the places of a character in a line. They are followed by others, the first of them
// at or behind the end of the line.
struct MarkCursor {
    char* const* next = nullptr;
};
