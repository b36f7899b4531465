#pragma once

#include "tools/patterns/pattern_tables.h"

// What the lines of both pattern files have in common.

// Equal in any case, as keywords and "NA" are.
bool equal_ignoring_case(const char* a, const char* b);

// Hands every line of the file but comments, empty lines and the column header, which only line 1
// can be, to `add_line`, with its number. Returns false when the file cannot be opened.
bool read_pattern_lines(const char* path, void (*add_line)(char* line, int line_num));

// Whether a line's status says that it is used.
bool is_active(const char* status);

// What a line of either file says of an entry.
struct PatternFields {
    const char* pattern;
    const char* method; // "NA": any
    const char* host;   // "NA": any
};

// Fills a zeroed entry of the table with these fields, and with no transaction. Returns false when
// the pattern does not compile; the entry is then not to be used.
bool fill_pattern(const PatternTable& table, const PatternFields& fields, UPInfo& entry);
