#pragma once

#include "companions/shard/merge/table_spool.h"
#include "tools/urls/query_list.h"

// Fills the table of unique URLs of the run (tools/urls/unique_urls.h) from those of the spool,
// which are in the order of their sessions, and writes the queries of each URL to the list when it
// is open. Fails when a table is damaged or the list cannot be written.
void merge_tables(const TableSpool& spool, QueryList& query_list);
