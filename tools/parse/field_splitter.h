#pragma once

#include "base/line_text.h"

constexpr char field_quote = '"'; // whose places have to be known

// Splits an access-log line in place into words, "quoted" fields and [bracketed] fields; a
// backslash keeps the quote or bracket after it from closing its field. A field's text is without
// its quotes or brackets. Stores at most `max_fields` fields in `fields` and returns their number,
// 0 for a blank line, or -1 when a quoted or bracketed field is not closed (`fields` is then not to
// be used). `quotes` stands at the first quote of the line and is left behind those that were
// passed. room_behind_line bytes have to be readable behind the line's terminator.
int get_al_fields(LineText line, MarkCursor& quotes, LineText fields[], int max_fields);
