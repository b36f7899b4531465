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

enum class DroppedRequest : uint8_t { without_session, redirect_follow_up };

// Told of each request that does not count, by the index of its row. Null, as in the tool: nobody
// is told. Set by a program before select_requests.
extern void (*dropped_request_observer)(uint32_t row, DroppedRequest why);

// Goes through the requests of the table session by session and returns those that count, in that
// order.
OrderedRequests select_requests(const RequestTable& table, SessionOrder session_order);
