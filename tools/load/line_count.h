#pragma once

#include "tools/load/measured_log.h"

#include <cstdint>

// Number of line feeds in a regular file, the count that `wc -l` gives: a last line without one
// does not count, nor does what the file gained since it was of `size`, 0 if it showed none. 0 when
// the file does not exist, is of another kind, or cannot be read. Fails when it is another file
// than the one that was measured, or has more than is read of one that shows no size.
uint64_t zvr_get_total_lines_in_file(const char* file_name, const FileIdentity& measured,
                                     uint64_t size);

// Whether a file of this size when it was measured, 0 if it showed none, has a line feed. Reads no
// further than it must; writes no debug lines.
bool has_lines(const char* file_name, const FileIdentity& measured, uint64_t size);

// The same of a file that stands at its start, up to `end`; false also when nothing is open.
bool has_lines(int descriptor, uint64_t end);

// As zvr_get_total_lines_in_file for a file that the caller has open and whose name serves the
// debug lines. What stands at offset `end` or behind it does not count. The file must stand at its
// start, and does so afterwards; 0 when it cannot be set back there.
uint64_t total_lines_in_open_file(const char* file_name, int descriptor, uint64_t end = UINT64_MAX);
