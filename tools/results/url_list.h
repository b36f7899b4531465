#pragma once

#include "base/own_directory.h"

#include <cstddef>
#include <string>

// url.list: the classified unique URLs from which the load is replayed, below a summary of the
// run's counts that is also printed.

// Copies the first `len` characters of `in` (all of them when `len` is 0) to `out`, every "|"
// replaced by "&#124;".
void replace_pipe_by_ascii(const char* in, size_t len, std::string& out);

// Writes the file into the configuration directory and, once it is whole, prints the summary line
// on standard output. Fails when either fails.
void write_url_list(const OwnDirectory& config_dir);
