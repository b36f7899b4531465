#include "tools/urls/session_order.h"

#include "tools/config/replay_settings.h"
#include "tools/urls/text_sort.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

int compare_times(const alInfo& a, const alInfo& b) {
    return a.time_stamp < b.time_stamp ? -1 : a.time_stamp > b.time_stamp;
}

struct SessionKey {
    uint64_t prefix; // decides nearly all comparisons
    uint32_t session;
};

std::vector<SessionKey> sort_sessions(const RequestNumbers& numbers) {
    std::vector<SessionKey> keys;
    keys.reserve(numbers.session_count());
    for (uint32_t session = 0; session < numbers.session_count(); ++session) {
        keys.push_back({order_prefix(numbers.session_text(session)), session});
    }
    std::sort(keys.begin(), keys.end(), [&](const SessionKey& a, const SessionKey& b) {
        return a.prefix != b.prefix
                   ? a.prefix < b.prefix
                   : numbers.session_text(a.session) < numbers.session_text(b.session);
    });
    return keys;
}

// Puts the requests of each session together, in table order. `place_of_session` tells where each
// session's first request goes, by session number; afterwards, where its last one ends.
OrderedRequests place_requests(const RequestNumbers& numbers,
                               std::vector<uint32_t>& place_of_session) {
    OrderedRequests requests(numbers.count());
    for (uint32_t i = 0; i < numbers.count(); ++i) {
        const RequestNumber& number = numbers[i];
        requests[place_of_session[number.session]++] = {i, number.url, number.is_redirect};
    }
    return requests;
}

std::vector<uint32_t> count_by_session(const RequestNumbers& numbers) {
    std::vector<uint32_t> counts(numbers.session_count());
    for (uint32_t i = 0; i < numbers.count(); ++i) {
        ++counts[numbers[i].session];
    }
    return counts;
}

} // namespace

int sort_al_info_using_jid_time(const alInfo& a, const alInfo& b) {
    const int sessions = std::strcmp(a.jsession_id, b.jsession_id);
    return sessions != 0 ? sessions : compare_times(a, b);
}

int sort_al_info_using_cip_time(const alInfo& a, const alInfo& b) {
    if (a.client_ip != b.client_ip) {
        return a.client_ip < b.client_ip ? -1 : 1;
    }
    return compare_times(a, b);
}

SessionOrder order_by_session(const alInfo* records, const RequestNumbers& numbers) {
    const auto compare = session_mode == SESSION_MODE_COOKIE ? sort_al_info_using_jid_time
                                                             : sort_al_info_using_cip_time;
    const std::vector<SessionKey> keys = sort_sessions(numbers);
    std::vector<uint32_t> places = count_by_session(numbers);
    uint32_t start = 0;
    for (const SessionKey& key : keys) {
        start += std::exchange(places[key.session], start);
    }
    SessionOrder order;
    order.requests = place_requests(numbers, places);
    auto session_start = order.requests.begin();
    for (const SessionKey& key : keys) {
        const auto session_end = order.requests.begin() + places[key.session];
        if (session_start == session_end) {
            continue;
        }
        if (!numbers.is_in_time_order(key.session)) {
            std::stable_sort(session_start, session_end,
                             [&](const OrderedRequest& a, const OrderedRequest& b) {
                                 return compare(records[a.record], records[b.record]) < 0;
                             });
        }
        const bool has_session = key.prefix != 0; // an empty cookie value, or address 0
        order.sessions.push_back({places[key.session], has_session});
        session_start = session_end;
    }
    return order;
}
