#include "tools/patterns/request_selection.h"

#include "tools/config/replay_settings.h"
#include "tools/driver/logs.h"
#include "tools/load/request_table.h"
#include "tools/patterns/redirect_followups.h"

#include <cstring>
#include <utility>

uint64_t g_redirected_req = 0;
uint64_t g_total_non_session_req = 0;
uint64_t g_total_non_session_with_secondary_cookie = 0;

namespace {

constexpr const char* fname = "make_url_pattern_list"; // the phase, as the debug log names it

bool has_session(const alInfo& request) {
    return session_mode == SESSION_MODE_COOKIE ? request.jsession_id[0] != '\0'
                                               : request.client_ip != 0;
}

bool is_same_session(const alInfo& a, const alInfo& b) {
    return session_mode == SESSION_MODE_COOKIE ? std::strcmp(a.jsession_id, b.jsession_id) == 0
                                               : a.client_ip == b.client_ip;
}

void count_non_session(alInfo& request) {
    ++g_total_non_session_req;
    if (session_mode == SESSION_MODE_COOKIE && request.akaau_id[0] != '\0') {
        ++g_total_non_session_with_secondary_cookie;
    }
    if (ignore_non_session_urls != 0) {
        DEBUG_LOG(3, fname, "session id/client ip not found ignoring url - '%s'", request.url);
        request.ignore_flag = 1;
    }
}

bool is_redirect(const alInfo& request) {
    const int code = request.response_code;
    return (code == 301 || code == 302 || code == 307) && request.redirect_url != nullptr;
}

// A follow-up may itself be redirected further.
void follow_redirects(alInfo& request, RedirectLocations& locations) {
    if (locations.take_follow_up(request)) {
        DEBUG_LOG(4, fname, "Found redirected url \"%s\", ignoring", request.url);
        request.ignore_flag = 1;
        ++g_redirected_req;
    }
    if (is_redirect(request)) {
        locations.remember(request.redirect_url);
        DEBUG_LOG(4, fname, "Found redirection \"%s\", adding location for skipping.",
                  request.redirect_url);
    }
}

// Cuts the URL after its first query separator; the character behind it is kept in the record.
void cut_query(alInfo& request) {
    const size_t length = std::strlen(request.url);
    const size_t separator = ignore_query_flag != 0 ? std::strcspn(request.url, "?#;") : length;
    if (separator == length) {
        request.url_len = static_cast<int>(length);
        return;
    }
    request.url_len = static_cast<int>(separator) + 1;
    request.ignore_query_flag = 1;
    request.query_last_char = std::exchange(request.url[request.url_len], '\0');
}

} // namespace

void select_requests(const std::vector<uint32_t>& session_order) {
    RedirectLocations locations;
    const alInfo* last_with_session = nullptr;
    for (const uint32_t index : session_order) {
        alInfo& request = al_info_array[index];
        if (!has_session(request)) {
            count_non_session(request);
            if (ignore_non_session_urls != 0) {
                continue;
            }
        } else if (auto_redirect_flag != 0) {
            if (last_with_session != nullptr && !is_same_session(*last_with_session, request)) {
                locations.clear();
            }
            last_with_session = &request;
            follow_redirects(request, locations);
        }
        cut_query(request);
    }
}

void restore_url(alInfo& request) {
    request.url[request.url_len] = request.query_last_char;
}
