#include "tools/patterns/session_order.h"

#include "tools/config/replay_settings.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

int compare_times(const alInfo& a, const alInfo& b) {
    return a.time_stamp < b.time_stamp ? -1 : a.time_stamp > b.time_stamp;
}

// The first eight characters of the session's id, or its address: decides nearly all comparisons of
// sessions without a look at their records.
uint64_t order_prefix(const alInfo& request) {
    if (session_mode != SESSION_MODE_COOKIE) {
        return request.client_ip;
    }
    uint64_t prefix = 0;
    const char* id = request.jsession_id;
    for (int i = 0; i < 8; ++i) {
        prefix = prefix << 8 | static_cast<unsigned char>(*id);
        id += *id != '\0';
    }
    return prefix;
}

struct SessionKey {
    uint64_t prefix;
    uint32_t number;
};

// Session numbers in their order; no_session, which has the lowest of all ids, comes first.
std::vector<SessionKey> sort_sessions(const alInfo* records,
                                      const std::vector<NumberedSession>& sessions) {
    const auto compare = session_mode == SESSION_MODE_COOKIE ? sort_al_info_using_jid_time
                                                             : sort_al_info_using_cip_time;
    std::vector<SessionKey> keys = {{0, no_session}};
    keys.reserve(sessions.size());
    for (uint32_t number = no_session + 1; number < sessions.size(); ++number) {
        keys.push_back({order_prefix(records[sessions[number].first_record]), number});
    }
    std::sort(keys.begin() + 1, keys.end(), [&](const SessionKey& a, const SessionKey& b) {
        return a.prefix != b.prefix ? a.prefix < b.prefix
                                    : compare(records[sessions[a.number].first_record],
                                              records[sessions[b.number].first_record]) < 0;
    });
    return keys;
}

// Puts the requests of each session together, in table order. `place_of_session` tells where each
// session's first request goes, by session number; afterwards, where its last one ends.
std::vector<uint32_t> place_requests(const RequestNumbers& numbers,
                                     std::vector<uint32_t>& place_of_session) {
    std::vector<uint32_t> requests(numbers.count());
    for (uint32_t i = 0; i < numbers.count(); ++i) {
        requests[place_of_session[numbers[i].session]++] = i;
    }
    return requests;
}

std::vector<uint32_t> count_by_session(const RequestNumbers& numbers) {
    std::vector<uint32_t> counts(numbers.sessions().size());
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
    const std::vector<SessionKey> keys = sort_sessions(records, numbers.sessions());
    std::vector<uint32_t> places = count_by_session(numbers);
    uint32_t start = 0;
    for (const SessionKey& key : keys) {
        start += std::exchange(places[key.number], start);
    }
    SessionOrder order;
    order.requests = place_requests(numbers, places);
    auto session_start = order.requests.begin();
    for (const SessionKey& key : keys) {
        const auto session_end = order.requests.begin() + places[key.number];
        if (session_start == session_end) {
            continue;
        }
        if (!numbers.sessions()[key.number].is_in_time_order) {
            std::stable_sort(session_start, session_end, [&](uint32_t a, uint32_t b) {
                return compare_times(records[a], records[b]) < 0;
            });
        }
        order.session_ends.push_back(places[key.number]);
        session_start = session_end;
    }
    return order;
}
