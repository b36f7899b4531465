#pragma once

#include "base/own_directory.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// url.list: the classified unique URLs from which the load is replayed, below a summary of the
// run's counts that is also printed.

// Copies the first `len` characters of `in` (all of them when `len` is 0) to `out`, every "|"
// replaced by "&#124;".
void replace_pipe_by_ascii(const char* in, size_t len, std::string& out);

// The lines above the rows: the summary, padded with blanks, and the names of the columns.
constexpr size_t summary_width = 511; // characters, without the line feed
constexpr uint64_t url_list_head_lines = 2;

// Number of rows that a summary line, without its line feed, tells; nothing when it is none.
std::optional<uint64_t> row_count_in_summary(std::string_view summary);

// Writes the file into the configuration directory and, once it is whole, prints the summary line
// on standard output. Fails when either fails.
void write_url_list(const OwnDirectory& config_dir);
