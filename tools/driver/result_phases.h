#pragma once

#include "base/own_directory.h"

// What a run does from the table of unique URLs on (tools/urls/unique_urls.h), whoever has filled
// it: dump_complete_url_list, write_hosts_list (tools/results/hosts_list.h), classify_urls, and
// write_url_list (tools/results/url_list.h), in this order. They go by the settings, by the sorted
// pattern tables and by the totals (tools/load/request_table.h, tools/urls/request_selection.h).

// Writes complete_url.list, with its progress lines. Fails when it cannot be written whole. Returns
// whether a later run can read it back.
bool dump_complete_url_list(const OwnDirectory& config_dir);

// Classifies the unique URLs, with the progress lines, and brings them into the order of url.list.
void classify_urls();
