#pragma once

#include "base/line_observer.h"
#include "base/line_text.h"

#include <string_view>

// What readers of keyword and pattern files tell the line observer of values that they take as they
// are. Nothing depends on it, and without an observer none looks at the text.

// Of a line whose first character is '#', or that is empty, its outcome; true when it is one.
bool skip_comment(const LinePlace& place, LineText line);

// Whether the line fills a buffer of `line_size` bytes.
void remark_on_length(const LinePlace& place, LineText line, size_t line_size);

// Whether a blank, a tab or the end of the line stands after a keyword.
void remark_on_separator(const LinePlace& place, const char* separator);

// Whether there is more in `rest`, which follows a value, than blanks, tabs and a carriage return.
void remark_on_rest(const LinePlace& place, const char* rest);

// Whether `text`, of which a reader takes the number in this base that it begins with, is one from
// `lowest` to `highest` and nothing else. With base 0 the number says itself what base it has.
void remark_on_number(const LinePlace& place, const char* text, int base, long lowest,
                      long highest);

// That `value` is not one of the words that are looked for.
void remark_on_unknown(const LinePlace& place, const char* value);

// Whether a tab or a carriage return is part of the value.
void remark_on_spacing(const LinePlace& place, std::string_view value);

// Whether `line` has more columns than were read, the last of them being `last_column`.
void remark_on_columns(const LinePlace& place, LineText line, const char* last_column,
                       const char* delimiter);
