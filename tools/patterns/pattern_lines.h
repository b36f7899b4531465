#pragma once

#include "base/line_observer.h"
#include "base/line_text.h"
#include "tools/patterns/pattern_tables.h"

// What the lines of both pattern files have in common.

// Equal in any case, as keywords and "NA" are.
bool equal_ignoring_case(const char* a, const char* b);

// Hands every line of the file but comments, empty lines and the column header, which only line 1
// can be, to `add_line`. Returns false when the file cannot be opened.
bool read_pattern_lines(const char* path, void (*add_line)(const LinePlace& place, LineText line));

// Splits a line at "|" into `column_count` fields, the last of which is the pattern. Returns false
// when it has fewer.
bool split_pattern_line(const LinePlace& place, LineText line, char* fields[], int column_count);

// Whether a line's status says that it is used.
bool is_active(const char* status);

// Tells the line observer of a line whose status says that it is not used; true when it is one.
bool skip_inactive(const LinePlace& place, const char* status);

// What a line of either file says of an entry.
struct PatternFields {
    const char* pattern;
    const char* method; // "NA": any
    const char* host;   // "NA": any
};

// Fills a zeroed entry of the table with these fields, and with no transaction. Returns false when
// the pattern does not compile; the entry is then not to be used.
bool fill_pattern(const LinePlace& place, const PatternTable& table, const PatternFields& fields,
                  UPInfo& entry);
