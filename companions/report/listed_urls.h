#pragma once

#include "companions/report/scenario_figures.h"
#include "tools/urls/request_collapse.h"

#include <cstdint>
#include <vector>

// The rows of url.list, and the queries that were cut off their URLs.

// Indices of the entries of url_pattern, which are classified and not yet sorted anew, that
// url.list lists, in its order.
std::vector<uint32_t> listed_entries();

std::vector<ListedUrl> list_urls(const std::vector<uint32_t>& entries);

// The most frequent queries, up to `limit`, of each entry that has any, equally frequent ones by
// text. `collapsed`, whose URLs are the entries, holds the requests with a query.
std::vector<UrlQueries> count_queries(const RequestTable& table, const CollapsedRequests& collapsed,
                                      const std::vector<uint32_t>& entries, size_t limit);
