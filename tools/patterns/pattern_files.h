#pragma once

// Loaders of the two pattern files of the replay profile. Each fails when its file cannot be
// opened, a line has too few fields, a pattern does not compile, or a post-data file is missing.

// Adds the active patterns of `url_pattern_file` to the main, inline and main-without-transaction
// tables.
void save_url_pattern(const char* url_pattern_file);

// Adds the active patterns of `filter_file` to the filter table.
void save_filter_url_pattern(const char* filter_file);
