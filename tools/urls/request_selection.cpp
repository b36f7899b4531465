#include "tools/urls/request_selection.h"

#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/own_texts.h"
#include "tools/parse/url_key.h"
#include "tools/urls/redirect_followups.h"

#include <string>
#include <string_view>
#include <utility>

uint64_t g_redirected_req = 0;
uint64_t g_total_non_session_req = 0;
uint64_t g_total_non_session_with_secondary_cookie = 0;
void (*dropped_request_observer)(uint32_t row, DroppedRequest why) = nullptr;

namespace {

constexpr const char* fname = "make_url_pattern_list"; // the phase, as the debug log names it

UrlKey key_of(const RequestTable& table, const OrderedRequest& request) {
    return UrlKey(table.texts.urls.text(request.url));
}

std::string_view full_url(const OwnTexts& own, const UrlKey& key) {
    return own.full_url == nullptr ? key.url : own.full_url;
}

// Returns whether the request counts all the same.
bool count_non_session(const RequestTable& table, const OrderedRequest& request) {
    const OwnTexts own = read_own_texts(table.rows[request.row].own_texts);
    ++g_total_non_session_req;
    if (session_mode == SESSION_MODE_COOKIE && own.has_secondary_cookie) {
        ++g_total_non_session_with_secondary_cookie;
    }
    if (ignore_non_session_urls == 0) {
        return true;
    }
    DEBUG_LOG(3, fname, "session id/client ip not found ignoring url - '%s'",
              std::string(full_url(own, key_of(table, request))).c_str());
    return false;
}

// Returns whether the request counts. One that does not may itself be redirected further.
bool follow_redirects(const RequestTable& table, const OrderedRequest& request,
                      RedirectLocations& locations) {
    if (locations.is_empty() && request.is_redirect == 0) {
        return true;
    }
    const UrlKey key = key_of(table, request);
    const OwnTexts own = read_own_texts(table.rows[request.row].own_texts);
    const std::string_view url = full_url(own, key);
    const bool is_follow_up = !locations.is_empty() && locations.take_follow_up(key.host, url);
    if (is_follow_up) {
        DEBUG_LOG(4, fname, "Found redirected url \"%s\", ignoring", std::string(url).c_str());
        ++g_redirected_req;
    }
    if (request.is_redirect != 0) {
        locations.remember(own.location);
        DEBUG_LOG(4, fname, "Found redirection \"%s\", adding location for skipping.",
                  own.location);
    }
    return !is_follow_up;
}

void tell_dropped(const OrderedRequest& request, const OrderedSession& session) {
    dropped_request_observer(request.row, session.has_session ? DroppedRequest::redirect_follow_up
                                                              : DroppedRequest::without_session);
}

} // namespace

OrderedRequests select_requests(const RequestTable& table, SessionOrder session_order) {
    OrderedRequests& requests = session_order.requests;
    auto selected_end = requests.begin();
    RedirectLocations locations;
    auto place = requests.cbegin();
    for (const OrderedSession& session : session_order.sessions) {
        locations.clear();
        for (; place != requests.cbegin() + session.end; ++place) {
            bool counts = true;
            if (!session.has_session) {
                counts = count_non_session(table, *place);
            } else if (auto_redirect_flag != 0) {
                counts = follow_redirects(table, *place, locations);
            }
            if (counts) {
                *selected_end++ = *place;
            } else if (dropped_request_observer != nullptr) {
                tell_dropped(*place, session);
            }
        }
    }
    requests.erase(selected_end, requests.end());
    return std::move(session_order.requests);
}
