#pragma once

#include "tools/urls/session_order.h"

#include <cstdint>
#include <vector>

// Requests with the same URL, as far as it counts, method (in any case) and host, brought together.

// A unique URL before it has its place in the table.
struct CollapsedUrl {
    uint32_t first_row;   // of the first of its requests by session and time
    uint32_t count;       // requests behind it
    uint32_t queries_end; // one past the last of its requests in CollapsedRequests::queried
};

struct CollapsedRequests {
    std::vector<CollapsedUrl> urls; // in the order of URL, method and host
    std::vector<uint32_t> queried;  // rows of requests with an ignored query, those of one unique
                                    // URL together, each by session and time
};

// Collapses requests of the table that are in the order of session and time. Fills `queried` only
// when `keep_queried`.
CollapsedRequests collapse_requests(const RequestTable& table, const OrderedRequests& requests,
                                    bool keep_queried);
