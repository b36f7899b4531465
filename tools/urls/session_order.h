#pragma once

#include "base/allocation.h"
#include "tools/parse/request_numbers.h"
#include "tools/parse/request_record.h"

#include <cstdint>
#include <vector>

// The order in which requests are tested for redirects: session by session, each in time.

// Order of two requests by session cookie and time, and by client address and time. Less than,
// equal to or greater than 0.
int sort_al_info_using_jid_time(const alInfo& a, const alInfo& b);
int sort_al_info_using_cip_time(const alInfo& a, const alInfo& b);

// A request in that order, with what the next phases need of its RequestNumber.
struct OrderedRequest {
    uint32_t record; // index of its record
    uint32_t url : 31;
    uint32_t is_redirect : 1;
};

struct OrderedSession {
    uint32_t end;     // one past the place of its last request
    bool has_session; // false for the requests that belong to no session
};

using OrderedRequests = std::vector<OrderedRequest, PageAllocator<OrderedRequest>>;

// The order of a table of records by the comparator that fits session_mode; requests of one session
// and one second keep the order of the table. The records stay where they are: moving their 256
// bytes about would cost more than all else.
struct SessionOrder {
    OrderedRequests requests;
    std::vector<OrderedSession> sessions;
};

// Orders the records that have the given numbers.
SessionOrder order_by_session(const alInfo* records, const RequestNumbers& numbers);
