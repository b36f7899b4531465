#include "companions/doctor/rejected/rejection.h"

namespace {

constexpr const char* bad = "BadRequest";
constexpr const char* time_filtered = "TimeBasedFiltered";
constexpr const char* non_session = "NonSessionRequest";

// By Rejection.
constexpr RejectionText texts[] = {
    {"none", "counts", ""},
    {"blank", "empty line", ""},
    {"comment", "begins with #", ""},
    {"unclosed-field", "a quote or bracket is not closed", bad},
    {"too-few-fields", "fewer fields than the field layout names", bad},
    {"invalid-client-address", "the client address is no IPv4 address", bad},
    {"invalid-request-line", "no method, URL and protocol in the request line", bad},
    {"invalid-time", "date or time cannot be read", bad},
    {"missing-fields", "the field layout names no date, time or URL", bad},
    {"before-period", "before the replay period", time_filtered},
    {"after-period", "after the replay period", time_filtered},
    {"no-session-cookie", "the session cookie is not in the headers", non_session},
    {"session-cookie-empty", "the session cookie has no value", non_session},
    {"session-never-set", "waited for its session, which no later response set", non_session},
    {"no-client-address", "the client address is - or 0.0.0.0", non_session},
    {"redirect-follow-up", "a browser made the request when it followed a redirect", "Redirected"},
    {"waiting-limit-reached", "one request too many that waits for its session", ""},
    {"behind-waiting-limit", "not read, since too many requests wait for their session", ""},
    {"behind-line-count", "not read, since it is behind the number of lines to read", ""},
    {"no-line-feed", "not read, since the file ends without a line feed", ""},
};
static_assert(std::size(texts) == rejection_count);

} // namespace

const RejectionText& text_of(Rejection why) {
    return texts[static_cast<size_t>(why)];
}

Rejection rejection_of_line(LineKind kind) {
    switch (kind) {
    case LineKind::accepted:
        return Rejection::none;
    case LineKind::empty:
        return Rejection::blank;
    case LineKind::comment:
        return Rejection::comment;
    case LineKind::unclosed_field:
        return Rejection::unclosed_field;
    case LineKind::too_few_fields:
        return Rejection::too_few_fields;
    case LineKind::invalid_client_address:
        return Rejection::invalid_client_address;
    case LineKind::invalid_request_line:
        return Rejection::invalid_request_line;
    case LineKind::invalid_time:
        return Rejection::invalid_time;
    case LineKind::missing_fields:
        return Rejection::missing_fields;
    case LineKind::before_period:
        return Rejection::before_period;
    case LineKind::after_period:
        return Rejection::after_period;
    case LineKind::beyond_waiting_limit:
        break;
    }
    return Rejection::waiting_limit_reached;
}

Rejection rejection_of_request(DroppedRequest why, SessionNote session) {
    if (why == DroppedRequest::redirect_follow_up) {
        return Rejection::redirect_follow_up;
    }
    switch (session) {
    case SessionNote::waits:
        return Rejection::session_never_set;
    case SessionNote::session_cookie_empty:
        return Rejection::session_cookie_empty;
    case SessionNote::no_client_address:
        return Rejection::no_client_address;
    default:
        return Rejection::no_session_cookie;
    }
}
