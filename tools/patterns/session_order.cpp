#include "tools/patterns/session_order.h"

#include "tools/config/replay_settings.h"
#include "tools/driver/logs.h"
#include "tools/patterns/number_table.h"
#include "tools/patterns/text_hash.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using Comparator = int(const alInfo&, const alInfo&);

int compare_times(const alInfo& a, const alInfo& b) {
    return a.time_stamp < b.time_stamp ? -1 : a.time_stamp > b.time_stamp;
}

struct Session {
    uint32_t first_record;
    uint32_t count;     // requests; later where the next of them goes in the order
    uint64_t last_time; // of its last request in table order
    bool is_in_time_order;
};

// Tells sessions apart and orders them in one of the two session modes. `prefix` decides nearly all
// comparisons without a look at the records.
struct CookieKey {
    static uint64_t prefix(const alInfo& record) {
        uint64_t prefix = 0;
        const char* id = record.jsession_id;
        for (int i = 0; i < 8; ++i) {
            prefix = prefix << 8 | static_cast<unsigned char>(*id);
            id += *id != '\0';
        }
        return prefix;
    }
    static uint64_t hash(const alInfo& record) {
        return hash_text(record.jsession_id, hash_seed());
    }
    static bool is_same(const alInfo& a, const alInfo& b) {
        return std::strcmp(a.jsession_id, b.jsession_id) == 0;
    }
};

struct AddressKey {
    static uint64_t prefix(const alInfo& record) { return record.client_ip; }
    static uint64_t hash(const alInfo& record) {
        return mix_hash(record.client_ip ^ hash_seed(), 0x9e3779b97f4a7c15);
    }
    static bool is_same(const alInfo& a, const alInfo& b) { return a.client_ip == b.client_ip; }
};

// Numbers the sessions in table order; `session_of` receives the number of each record's session.
template <typename Key>
std::vector<Session> find_sessions(const alInfo* records, std::vector<uint32_t>& session_of) {
    std::vector<Session> sessions;
    NumberTable numbers;
    for (uint32_t i = 0; i < session_of.size(); ++i) {
        const alInfo& record = records[i];
        bool is_new;
        const uint32_t number = numbers.number_of(
            Key::hash(record),
            [&](uint32_t known) {
                return Key::is_same(record, records[sessions[known].first_record]);
            },
            &is_new);
        if (is_new) {
            sessions.push_back({i, 0, record.time_stamp, true});
        }
        Session& session = sessions[number];
        ++session.count;
        session.is_in_time_order =
            session.is_in_time_order && session.last_time <= record.time_stamp;
        session.last_time = record.time_stamp;
        session_of[i] = number;
    }
    return sessions;
}

struct SessionKey {
    uint64_t prefix;
    uint32_t number;
};

template <typename Key>
std::vector<SessionKey> sort_sessions(const alInfo* records, const std::vector<Session>& sessions,
                                      Comparator* compare) {
    std::vector<SessionKey> keys;
    keys.reserve(sessions.size());
    for (uint32_t number = 0; number < sessions.size(); ++number) {
        keys.push_back({Key::prefix(records[sessions[number].first_record]), number});
    }
    std::sort(keys.begin(), keys.end(), [&](const SessionKey& a, const SessionKey& b) {
        return a.prefix != b.prefix ? a.prefix < b.prefix
                                    : compare(records[sessions[a.number].first_record],
                                              records[sessions[b.number].first_record]) < 0;
    });
    return keys;
}

template <typename Key>
SessionOrder order_by(const alInfo* records, uint32_t count, Comparator* compare) {
    std::vector<uint32_t> session_of(count);
    std::vector<Session> sessions = find_sessions<Key>(records, session_of);
    const std::vector<SessionKey> keys = sort_sessions<Key>(records, sessions, compare);

    uint32_t start = 0;
    for (const SessionKey& key : keys) {
        start += std::exchange(sessions[key.number].count, start);
    }
    SessionOrder order;
    order.requests.resize(count);
    for (uint32_t i = 0; i < count; ++i) {
        order.requests[sessions[session_of[i]].count++] = i;
    }
    order.session_ends.reserve(keys.size());
    auto session_start = order.requests.begin();
    for (const SessionKey& key : keys) {
        const Session& session = sessions[key.number];
        const auto session_end = order.requests.begin() + session.count;
        if (!session.is_in_time_order) {
            std::stable_sort(session_start, session_end, [&](uint32_t a, uint32_t b) {
                return compare_times(records[a], records[b]) < 0;
            });
        }
        order.session_ends.push_back(session.count);
        session_start = session_end;
    }
    return order;
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

SessionOrder order_by_session(const alInfo* records, uint64_t count) {
    constexpr uint64_t max_count = UINT32_MAX - 1;
    if (count > max_count) {
        fatal_error("main", "More than %lu requests can not be processed", max_count);
    }
    const auto record_count = static_cast<uint32_t>(count);
    return session_mode == SESSION_MODE_COOKIE
               ? order_by<CookieKey>(records, record_count, sort_al_info_using_jid_time)
               : order_by<AddressKey>(records, record_count, sort_al_info_using_cip_time);
}
