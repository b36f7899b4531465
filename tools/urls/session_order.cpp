#include "tools/urls/session_order.h"

#include "tools/urls/text_sort.h"

#include <algorithm>
#include <utility>

namespace {

struct SessionKey {
    uint64_t prefix; // decides nearly all comparisons
    uint32_t session;
};

std::vector<SessionKey> sort_sessions(const InternedTexts& texts) {
    std::vector<SessionKey> keys;
    keys.reserve(texts.count());
    for (uint32_t session = 0; session < texts.count(); ++session) {
        keys.push_back({order_prefix(texts.text(session)), session});
    }
    std::sort(keys.begin(), keys.end(), [&](const SessionKey& a, const SessionKey& b) {
        return a.prefix != b.prefix ? a.prefix < b.prefix
                                    : texts.text(a.session) < texts.text(b.session);
    });
    return keys;
}

// Of one session, while its requests are put together.
struct SessionPlace {
    uint32_t end = 0; // behind its last request so far
    bool is_in_order = true;
    uint64_t last_time = 0;
};

std::vector<SessionPlace> find_places(const RequestTable& table,
                                      const std::vector<SessionKey>& keys) {
    std::vector<SessionPlace> places(table.texts.sessions.count());
    table.rows.for_each([&](uint32_t, const RequestRow& row) { ++places[row.session].end; });
    uint32_t start = 0;
    for (const SessionKey& key : keys) {
        start += std::exchange(places[key.session].end, start);
    }
    return places;
}

// Puts the requests of each session together, in table order.
OrderedRequests place_requests(const RowTable& rows, std::vector<SessionPlace>& places) {
    OrderedRequests requests(rows.size());
    rows.for_each([&](uint32_t index, const RequestRow& row) {
        SessionPlace& place = places[row.session];
        requests[place.end++] = {index, row.url, row.is_redirect};
        place.is_in_order = place.is_in_order && place.last_time <= row.time_stamp;
        place.last_time = row.time_stamp;
    });
    return requests;
}

} // namespace

SessionOrder order_by_session(const RequestTable& table) {
    const std::vector<SessionKey> keys = sort_sessions(table.texts.sessions);
    std::vector<SessionPlace> places = find_places(table, keys);
    SessionOrder order;
    order.requests = place_requests(table.rows, places);
    auto session_start = order.requests.begin();
    for (const SessionKey& key : keys) {
        const SessionPlace& place = places[key.session];
        const auto session_end = order.requests.begin() + place.end;
        if (session_start == session_end) {
            continue;
        }
        if (!place.is_in_order) {
            std::stable_sort(session_start, session_end,
                             [&](const OrderedRequest& a, const OrderedRequest& b) {
                                 return table.rows[a.row].time_stamp < table.rows[b.row].time_stamp;
                             });
        }
        const bool has_session = key.prefix != 0; // an empty cookie value, or address 0
        order.sessions.push_back({place.end, has_session});
        session_start = session_end;
    }
    return order;
}
