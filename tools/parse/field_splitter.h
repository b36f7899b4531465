#pragma once

#include "base/line_text.h"

// Splits an access-log line in place into words, "quoted" fields and [bracketed] fields; a
// backslash keeps the quote or bracket after it from closing its field. A field's text is without
// its quotes or brackets. Stores at most `max_fields` fields in `fields` and returns their number,
// 0 for a blank line, or -1 when a quoted or bracketed field is not closed (`fields` is then not to
// be used).
int get_al_fields(LineText line, LineText fields[], int max_fields);
