#pragma once

#include "base/line_text.h"
#include "tools/parse/request_record.h"

#include <cstddef>
#include <string_view>

// Cuts the value of a cookie out of a Cookie or Set-Cookie header. The name is searched as plain
// text, so it is also found inside a longer name; the value begins `skip` characters after the
// start of the name and ends before the next ';'. At most 63 characters are stored in `value`.
// Returns false, with `value` unchanged, when the name does not occur.
bool get_cookie_value(LineText header, std::string_view name, size_t skip,
                      char (&value)[max_cookie_length]);
