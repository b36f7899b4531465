#include "tools/urls/request_selection.h"

#include "tools/config/replay_settings.h"

#include <string>
#include <string_view>
#include <utility>

uint64_t g_redirected_req = 0;
uint64_t g_total_non_session_req = 0;
uint64_t g_total_non_session_with_secondary_cookie = 0;
void (*dropped_request_observer)(uint32_t row, DroppedRequest why) = nullptr;

namespace {

constexpr const char* fname = "make_url_pattern_list"; // the phase, as the debug log names it

std::string_view full_url(const OwnTexts& own, const UrlKey& key) {
    return own.full_url == nullptr ? key.url : own.full_url;
}

// Looks the request's texts up.
bool take_request(RequestSelection& selection, const RequestTable& table,
                  const OrderedRequest& request) {
    return selection.take(read_own_texts(table.rows[request.row].own_texts),
                          request.is_redirect != 0,
                          [&] { return table.texts.urls.text(request.url); });
}

void tell_dropped(const OrderedRequest& request, const OrderedSession& session) {
    dropped_request_observer(request.row, session.has_session ? DroppedRequest::redirect_follow_up
                                                              : DroppedRequest::without_session);
}

} // namespace

void RequestSelection::begin_session(bool has_session) {
    has_session_ = has_session;
    follows_redirects_ = has_session && auto_redirect_flag != 0;
    locations_.clear();
}

// Returns whether the request counts all the same.
bool RequestSelection::take_without_session(const OwnTexts& own) {
    ++g_total_non_session_req;
    if (session_mode == SESSION_MODE_COOKIE && own.has_secondary_cookie) {
        ++g_total_non_session_with_secondary_cookie;
    }
    return ignore_non_session_urls == 0;
}

void RequestSelection::log_ignored(const OwnTexts& own, const UrlKey& key) {
    debug_log(3, fname, "session id/client ip not found ignoring url - '%s'",
              std::string(full_url(own, key)).c_str());
}

// A request that does not count may itself be redirected further.
bool RequestSelection::take_of_session(const OwnTexts& own, bool is_redirect, const UrlKey& key) {
    const bool counts = !is_follow_up(key, full_url(own, key));
    if (is_redirect) {
        locations_.remember(own.location);
        DEBUG_LOG(4, fname, "Found redirection \"%s\", adding location for skipping.",
                  own.location);
    }
    return counts;
}

bool RequestSelection::is_follow_up(const UrlKey& key, std::string_view url) {
    if (locations_.is_empty() || !locations_.take_follow_up(key.host, url)) {
        return false;
    }
    DEBUG_LOG(4, fname, "Found redirected url \"%s\", ignoring", std::string(url).c_str());
    ++g_redirected_req;
    return true;
}

OrderedRequests select_requests(const RequestTable& table, SessionOrder session_order) {
    OrderedRequests& requests = session_order.requests;
    auto selected_end = requests.begin();
    RequestSelection selection;
    auto place = requests.cbegin();
    for (const OrderedSession& session : session_order.sessions) {
        selection.begin_session(session.has_session);
        for (; place != requests.cbegin() + session.end; ++place) {
            if (selection.counts_in_any_case(place->is_redirect != 0) ||
                take_request(selection, table, *place)) {
                *selected_end++ = *place;
            } else if (dropped_request_observer != nullptr) {
                tell_dropped(*place, session);
            }
        }
    }
    requests.erase(selected_end, requests.end());
    return std::move(session_order.requests);
}
