#pragma once

#include <cstdint>

// Number of line feeds in a file, the count that `wc -l` gives: a last line without one does not
// count. 0 when the file does not exist or cannot be read.
uint64_t zvr_get_total_lines_in_file(const char* file_name);
