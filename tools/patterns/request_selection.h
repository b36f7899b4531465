#pragma once

#include "tools/parse/request_record.h"

#include <cstdint>
#include <vector>

// Which requests count: not those without a session, if so set, nor those that a browser made by
// itself when it followed a redirect. And what part of their URL counts.

// Totals of the requests that a browser made by itself or without a session. Set by select_requests
// or fill_url_pattern_from_cache.
extern uint64_t g_redirected_req;        // redirect follow-ups
extern uint64_t g_total_non_session_req; // requests without a session, also where they count
extern uint64_t
    g_total_non_session_with_secondary_cookie; // of these, with a secondary-cookie value

// Goes through the request table in the order of its records by session and time. Sets ignore_flag
// in the requests that do not count, and url_len in those that do; where the settings say so, cuts
// their URL after its first query separator (ignore_query_flag, query_last_char).
void select_requests(const std::vector<uint32_t>& session_order);

// Undoes the cut of a URL; for one that was not cut, changes nothing.
void restore_url(alInfo& request);
