#pragma once

#include <cstddef>

// Where lines end and where one more character stands, found in one pass: lines are short, and have
// many such characters, so that a search for each would cost more than the pass.

// Ends of two lists of places in a text, in their order. Places are written behind them.
struct LineIndexEnds {
    char** line_feeds;
    char** marks;
};

// Places that may be written to a list behind those that count.
constexpr size_t line_index_slack = 4;

// Looks through [begin, end) and appends the places of line feeds and of `mark` to the lists. Each
// needs room for as many places as there are characters, and line_index_slack more. Returns whether
// NUL is among the characters.
bool index_lines(char* begin, char* end, char mark, LineIndexEnds& ends);

// The same, one character after the other.
bool index_lines_plainly(char* begin, char* end, char mark, LineIndexEnds& ends);
