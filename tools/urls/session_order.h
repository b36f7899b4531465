#pragma once

#include "base/allocation.h"
#include "tools/load/request_table.h"

#include <cstdint>
#include <vector>

// The order in which requests are tested for redirects: session by session, by the text of the
// session, each in time.

// A request in that order, with what the next phases need of its row.
struct OrderedRequest {
    uint32_t row; // index
    uint32_t url : 31;
    uint32_t is_redirect : 1;
};

struct OrderedSession {
    uint32_t end;     // one past the place of its last request
    bool has_session; // false for the requests that belong to no session
};

using OrderedRequests = std::vector<OrderedRequest, RawPageAllocator<OrderedRequest>>;

// Requests of one session and one second keep the order of the table. The rows stay where they are.
struct SessionOrder {
    OrderedRequests requests;
    std::vector<OrderedSession> sessions;
};

SessionOrder order_by_session(const RequestTable& table);
