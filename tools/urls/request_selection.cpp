#include "tools/urls/request_selection.h"

#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/urls/redirect_followups.h"

#include <utility>

uint64_t g_redirected_req = 0;
uint64_t g_total_non_session_req = 0;
uint64_t g_total_non_session_with_secondary_cookie = 0;

namespace {

constexpr const char* fname = "make_url_pattern_list"; // the phase, as the debug log names it

// Returns whether the request counts all the same.
bool count_non_session(alInfo& request) {
    ++g_total_non_session_req;
    if (session_mode == SESSION_MODE_COOKIE && request.akaau_id[0] != '\0') {
        ++g_total_non_session_with_secondary_cookie;
    }
    if (ignore_non_session_urls == 0) {
        return true;
    }
    DEBUG_LOG(3, fname, "session id/client ip not found ignoring url - '%s'", request.url);
    request.ignore_flag = 1;
    return false;
}

// Returns whether the request counts. One that does not may itself be redirected further.
bool follow_redirects(alInfo& request, bool is_redirected, RedirectLocations& locations) {
    const bool is_follow_up = !locations.is_empty() && locations.take_follow_up(request);
    if (is_follow_up) {
        DEBUG_LOG(4, fname, "Found redirected url \"%s\", ignoring", request.url);
        request.ignore_flag = 1;
        ++g_redirected_req;
    }
    if (is_redirected) {
        locations.remember(request.redirect_url);
        DEBUG_LOG(4, fname, "Found redirection \"%s\", adding location for skipping.",
                  request.redirect_url);
    }
    return !is_follow_up;
}

} // namespace

OrderedRequests select_requests(SessionOrder session_order) {
    OrderedRequests& requests = session_order.requests;
    auto selected_end = requests.begin();
    RedirectLocations locations;
    auto place = requests.cbegin();
    for (const OrderedSession& session : session_order.sessions) {
        locations.clear();
        for (; place != requests.cbegin() + session.end; ++place) {
            alInfo& request = al_info_array[place->record];
            bool counts = true;
            if (!session.has_session) {
                counts = count_non_session(request);
            } else if (auto_redirect_flag != 0) {
                counts = follow_redirects(request, place->is_redirect != 0, locations);
            }
            if (counts) {
                *selected_end++ = *place;
            }
        }
    }
    requests.erase(selected_end, requests.end());
    return std::move(session_order.requests);
}
