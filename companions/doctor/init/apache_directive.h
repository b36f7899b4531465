#pragma once

#include "companions/doctor/init/format_pieces.h"

#include <cstddef>
#include <string_view>

// Reads the directive of Apache's LogFormat with which `text` begins, such as %>s, %{Cookie}i or
// %!200,304{us}T, all but the source of the piece. Returns its length; 0 when there is none.
size_t read_apache_directive(std::string_view text, FormatPiece& piece);
