#pragma once

#include "base/own_directory.h"

// complete_url.list: the run's counters and the unique URLs before classification, from which a
// later run can classify them anew without reading the logs.

// Writes the file into the configuration directory. Fails when it cannot be written whole.
// Returns whether fill_url_pattern_from_cache would read back what was written: it would not when a
// log has a method that begins like a counter's line, or a separator in a method or host.
bool write_complete_url_list(const OwnDirectory& config_dir);

// Reads the counters (request_table.h, request_selection.h) and the table url_pattern back from the
// file. Fails when the file cannot be read or a row is malformed.
void fill_url_pattern_from_cache(const OwnDirectory& config_dir);

// Sets counters and table back to what they were before.
void forget_cached_urls();
