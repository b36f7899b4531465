#pragma once

#include "base/logs.h"
#include "tools/parse/own_texts.h"
#include "tools/parse/url_key.h"
#include "tools/urls/redirect_followups.h"
#include "tools/urls/session_order.h"

#include <cstdint>
#include <string_view>

// Which requests count: not those without a session, if so set, nor those that a browser made by
// itself when it followed a redirect.

// Totals of the requests that a browser made by itself or without a session. Added to by
// RequestSelection, or set by fill_url_pattern_from_cache.
extern uint64_t g_redirected_req;        // redirect follow-ups
extern uint64_t g_total_non_session_req; // requests without a session, also where they count
extern uint64_t
    g_total_non_session_with_secondary_cookie; // of these, with a secondary-cookie value

// Decides on one request after the other, session by session and in each by time. Keeps no text of
// theirs but a copy of locations. For one thread, as are the totals.
class RequestSelection {
  public:
    // Begins with the requests of another session, or with those that belong to none.
    void begin_session(bool has_session);

    // Whether the next request counts whatever its texts are, and changes nothing: it need not be
    // taken. `is_redirect`: its response sends the browser to another location.
    bool counts_in_any_case(bool is_redirect) const {
        return has_session_ && (!follows_redirects_ || (locations_.is_empty() && !is_redirect));
    }

    // Takes the next request of the session. Returns whether it counts. `url_key` is called for the
    // text of its URL key when that has a say, which for requests without a session it seldom has.
    template <typename GetText>
    bool take(const OwnTexts& own, bool is_redirect, const GetText& url_key) {
        if (has_session_) {
            return !follows_redirects_ || take_of_session(own, is_redirect, UrlKey(url_key()));
        }
        if (take_without_session(own)) {
            return true;
        }
        if (debug_wanted(3)) {
            log_ignored(own, UrlKey(url_key()));
        }
        return false;
    }

  private:
    static bool take_without_session(const OwnTexts& own);
    static void log_ignored(const OwnTexts& own, const UrlKey& key);
    bool take_of_session(const OwnTexts& own, bool is_redirect, const UrlKey& key);
    bool is_follow_up(const UrlKey& key, std::string_view url);

    bool has_session_ = false;
    bool follows_redirects_ = false;
    RedirectLocations locations_; // that responses of this session have named
};

enum class DroppedRequest : uint8_t { without_session, redirect_follow_up };

// Told of each request that does not count, by the index of its row. Null, as in the tool: nobody
// is told. Set by a program before select_requests.
extern void (*dropped_request_observer)(uint32_t row, DroppedRequest why);

// Goes through the requests of the table session by session and returns those that count, in that
// order.
OrderedRequests select_requests(const RequestTable& table, SessionOrder session_order);
