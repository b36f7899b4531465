#pragma once

#include "tools/parse/request_record.h"
#include "tools/urls/session_order.h"

#include <cstdint>
#include <vector>

// Requests with the same URL, as far as it counts, method (in any case) and host, brought together.

// Order of two requests by the counted part of the URL (byte-wise), method (ignoring case) and host
// (byte-wise). Less than, equal to or greater than 0.
int sort_al_by_url_method_host(const alInfo& a, const alInfo& b);

// A unique URL before it has its place in the table.
struct CollapsedUrl {
    uint32_t first_request; // index of the first of its requests by session and time
    uint32_t count;         // requests behind it
    uint32_t queries_end;   // one past the last of its requests in CollapsedRequests::queried
};

struct CollapsedRequests {
    std::vector<CollapsedUrl> urls; // in the order of URL, method and host
    std::vector<uint32_t> queried; // indices of requests with an ignored query, those of one unique
                                   // URL together, each by session and time
};

// Collapses requests that are in the order of session and time by the numbers of their URLs, which
// are below `url_count`. Fills `queried` only when `keep_queried`.
CollapsedRequests collapse_requests(const OrderedRequests& requests, uint32_t url_count,
                                    bool keep_queried);
