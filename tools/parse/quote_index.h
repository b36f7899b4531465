#pragma once

#include <cstddef>
#include <cstdint>

// Where the quotes of a line are, found in one pass: a line has many, and the fields between them
// are too short for a search each.

constexpr size_t max_indexed_size = 2048; // characters; longer lines are not indexed

// Offsets of a line's quotes, in their order, and then the size of the line. The last ones written
// may be more than there are.
using QuoteOffsets = uint16_t[max_indexed_size + 5];

// Writes the offsets for `size` characters at `text`, at most max_indexed_size.
void index_quotes(const char* text, size_t size, QuoteOffsets& offsets);

// The same, one character after the other.
void index_quotes_plainly(const char* text, size_t size, QuoteOffsets& offsets);
