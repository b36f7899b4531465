#include "tools/load/session_settlement.h"

#include "base/logs.h"
#include "tools/parse/secondary_cookie_trace.h"

namespace {

constexpr const char* fname = "load_url_info";                   // as the debug log names the
constexpr const char* update_fname = "update_unaccounted_array"; // two steps

TracePlace trace_place(int thread_idx, const SessionEvent& event, const BatchPlace& place) {
    return {thread_idx, place.file_name, place.lines_before + event.line_num};
}

} // namespace

bool SessionSettlement::settle(const SessionEvent& event, const BatchPlace& place) {
    if (!event.waits) {
        trace_matched(event.akaau_id, event.jsession_id, trace_place(thread_idx_, event, place));
        give_session(event, place);
        return true;
    }
    DEBUG_LOG(3, fname, "Jsession id not found adding request in unaccounted url list.");
    if (unaccounted_.is_full()) {
        DEBUG_LOG(1, fname, "Max unaccounted URL limit reached. No new request will be processed.");
        trace_limit_reached(max_unaccounted_requests);
        return false;
    }
    unaccounted_.add(static_cast<int64_t>(waiting_.size()), event.akaau_id);
    waiting_.push_back({&event, place});
    trace_added(event.akaau_id, trace_place(thread_idx_, event, place));
    return true;
}

void SessionSettlement::give_session(const SessionEvent& donor, const BatchPlace& place) {
    DEBUG_LOG(2, update_fname, "Method called");
    for (const int64_t number : unaccounted_.take(donor.akaau_id)) {
        const auto& [event, receiver_place] = waiting_[static_cast<size_t>(number)];
        grants_.push_back({{receiver_place.batch, event->row}, {place.batch, donor.row}});
        DEBUG_LOG(3, update_fname, "Settign jsessionid for url %s", event->url);
        trace_updated(event->akaau_id, trace_place(thread_idx_, *event, receiver_place));
    }
}
