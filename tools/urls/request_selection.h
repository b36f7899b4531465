#pragma once

#include "tools/urls/session_order.h"

#include <cstdint>

// Which requests count: not those without a session, if so set, nor those that a browser made by
// itself when it followed a redirect.

// Totals of the requests that a browser made by itself or without a session. Set by select_requests
// or fill_url_pattern_from_cache.
extern uint64_t g_redirected_req;        // redirect follow-ups
extern uint64_t g_total_non_session_req; // requests without a session, also where they count
extern uint64_t
    g_total_non_session_with_secondary_cookie; // of these, with a secondary-cookie value

// Goes through the requests of the table session by session and returns those that count, in that
// order.
OrderedRequests select_requests(const RequestTable& table, SessionOrder session_order);
