#pragma once

#include "companions/doctor/init/format_pieces.h"

#include <cstddef>
#include <string_view>

// Reads the variable of nginx's log_format with which `text` begins, such as $request or ${status},
// all but the source of the piece. Returns its length; 0 when there is none.
size_t read_nginx_variable(std::string_view text, FormatPiece& piece);
