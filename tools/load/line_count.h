#pragma once

#include <cstdint>

// Number of line feeds in a file, the count that `wc -l` gives: a last line without one does not
// count. 0 when the file does not exist or cannot be read.
uint64_t zvr_get_total_lines_in_file(const char* file_name);

// The same for a file that the caller has open and whose name serves the debug lines. Reads it from
// its start and leaves it there.
uint64_t total_lines_in_open_file(const char* file_name, int descriptor);
