#pragma once

#include "base/own_directory.h"
#include "tools/urls/unique_urls.h"

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

// What a row tells of a unique URL that is classified and not left out. The texts live as long as
// the tables.
struct UrlListRow {
    bool is_filtered;
    std::string_view type; // MAIN, MAIN_WITHOUT_TX or INLINE
    const char* method;
    const char* url; // not escaped
    uint64_t count;
    const char* transaction; // na_string: none
    const char* host;
    int64_t query_file_offset;  // -1: none
    const char* post_data_file; // path; na_string: none
    const char* pattern;        // na_string: none fits
};

UrlListRow url_list_row(const UrlInfo& entry);

// Whether requests with this method have a body, which a pattern may give a file for.
bool sends_body(const char* method);

// The summary line of a run that lists so many unique URLs, without its line feed.
std::string url_list_summary(uint64_t row_count);

// The lines above the rows: the summary, padded with blanks, and the names of the columns.
constexpr size_t summary_width = 511; // characters, without the line feed
constexpr uint64_t url_list_head_lines = 2;

// Number of rows that a summary line, without its line feed, tells; nothing when it is none.
std::optional<uint64_t> row_count_in_summary(std::string_view summary);

// Writes the file into the configuration directory and, once it is whole, prints the summary line
// on standard output. Fails when either fails.
void write_url_list(const OwnDirectory& config_dir);
