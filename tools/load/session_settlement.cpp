#include "tools/load/session_settlement.h"

#include "base/logs.h"
#include "tools/parse/secondary_cookie_trace.h"

namespace {

constexpr const char* fname = "load_url_info";                   // as the debug log names the
constexpr const char* update_fname = "update_unaccounted_array"; // two steps

} // namespace

bool SessionSettlement::settle(const SessionEvent& event, const BatchPlace& place,
                               std::vector<SessionGrant>& grants) {
    const int64_t line_num = place.lines_before + event.line_num;
    if (!event.waits) {
        trace_matched(event.akaau_id, event.jsession_id, {thread_idx_, place.file_name, line_num});
        give_session(event, place, grants);
        return true;
    }
    DEBUG_LOG(3, fname, "Jsession id not found adding request in unaccounted url list.");
    if (unaccounted_.is_full()) {
        DEBUG_LOG(1, fname, "Max unaccounted URL limit reached. No new request will be processed.");
        trace_limit_reached(max_unaccounted_requests);
        return false;
    }
    unaccounted_.add({{place.batch, event.row}, place.file_name, line_num, event.url},
                     event.akaau_id);
    trace_added(event.akaau_id, {thread_idx_, place.file_name, line_num});
    return true;
}

void SessionSettlement::give_session(const SessionEvent& donor, const BatchPlace& place,
                                     std::vector<SessionGrant>& grants) {
    DEBUG_LOG(2, update_fname, "Method called");
    for (const WaitingRequest& receiver : unaccounted_.take(donor.akaau_id)) {
        grants.push_back({receiver.place, {place.batch, donor.row}});
        DEBUG_LOG(3, update_fname, "Settign jsessionid for url %s", receiver.url);
        trace_updated(donor.akaau_id, {thread_idx_, receiver.file_name, receiver.line_num});
    }
}
