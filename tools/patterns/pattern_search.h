#pragma once

#include "tools/patterns/pattern_tables.h"

#include <cstddef>
#include <cstdint>

// What it means that a pattern fits a URL, and the search that tries one pattern after the other.

constexpr int32_t no_pattern = -1; // in place of an index into a table

// Whether the pattern covers the whole URL, by its compiled form alone.
bool covers_whole_url(const UPInfo& pattern, const char* url, size_t length);

// Whether an entry takes requests of this method and host: the entry's are "NA" or the same, the
// method in any case.
bool fits_method_and_host(const UPInfo& pattern, const char* method, const char* host);

// Index of the first entry of a pattern table that fits: its pattern covers the whole URL, its
// method is "NA" or the URL's (ignoring case), its host "NA" or the URL's. no_pattern when there is
// none.
int32_t get_url_pattern_idx(const UPInfo* pattern_table, int pattern_count, const char* url,
                            const char* method, const char* host);
