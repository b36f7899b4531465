#include "tools/parse/request_numbers.h"

#include "tools/config/replay_settings.h"
#include "tools/driver/logs.h"
#include "tools/parse/text_hash.h"

#include <cstring>
#include <strings.h>
#include <utility>

namespace {

uint64_t hash_session(const alInfo& request) {
    return session_mode == SESSION_MODE_COOKIE ? hash_text(request.jsession_id, hash_seed())
                                               : hash_number(request.client_ip);
}

bool is_same_session(const alInfo& a, const alInfo& b) {
    return session_mode == SESSION_MODE_COOKIE ? std::strcmp(a.jsession_id, b.jsession_id) == 0
                                               : a.client_ip == b.client_ip;
}

uint64_t hash_url(const alInfo& request) {
    char method[max_method_length];
    size_t length = 0;
    for (; request.method[length] != '\0'; ++length) {
        method[length] = static_cast<char>(request.method[length] | 0x20); // one for both cases
    }
    const uint64_t hash = hash_text({method, length}, hash_text(request.host_ip, hash_seed()));
    return hash_text(counted_url(request), hash);
}

bool is_same_url(const alInfo& a, const alInfo& b) {
    return counted_url(a) == counted_url(b) && strcasecmp(a.method, b.method) == 0 &&
           std::strcmp(a.host_ip, b.host_ip) == 0;
}

} // namespace

bool has_session(const alInfo& request) {
    return session_mode == SESSION_MODE_COOKIE ? request.jsession_id[0] != '\0'
                                               : request.client_ip != 0;
}

void RequestNumbers::number_group() {
    constexpr size_t max_count = UINT32_MAX - 1;
    const uint32_t first = count();
    if (first + size_t{group_size_} > max_count) {
        fatal_error("load_url_info", "More than %zu requests can not be processed", max_count);
    }
    Hashes hashes[max_group_size];
    fetch_tables(first, hashes);
    fetch_known_records(hashes);
    fetch_known_texts(hashes);
    for (uint32_t i = 0; i < group_size_; ++i) {
        const uint32_t index = first + i;
        const uint32_t session = session_number(index, hashes[i].session);
        const uint64_t time = records_[index].time_stamp;
        extend_session(session, {index, true, time, time});
        numbers_.push_back({session, url_number(index, hashes[i].url)});
    }
    group_size_ = 0;
}

// First step to a group's numbers: the places in the tables.
void RequestNumbers::fetch_tables(uint32_t first, Hashes hashes[]) const {
    for (uint32_t i = 0; i < group_size_; ++i) {
        const alInfo& request = records_[first + i];
        hashes[i] = {hash_session(request), hash_url(request)};
        session_table_.prefetch(hashes[i].session);
        url_table_.prefetch(hashes[i].url);
    }
}

// Second step: the records that the group's are compared with.
void RequestNumbers::fetch_known_records(const Hashes hashes[]) const {
    for (uint32_t i = 0; i < group_size_; ++i) {
        const uint32_t session = session_table_.likely_number(hashes[i].session);
        if (session != NumberTable::unknown) {
            const alInfo& known = records_[sessions_[1 + session].first_record];
            __builtin_prefetch(known.jsession_id);
            __builtin_prefetch(known.jsession_id + max_cookie_length - 1);
        }
        const uint32_t url = url_table_.likely_number(hashes[i].url);
        if (url != NumberTable::unknown) {
            const alInfo& known = records_[first_of_url_[url]];
            __builtin_prefetch(known.method);
            __builtin_prefetch(&known.host_ip);
        }
    }
}

// Third step: their texts.
void RequestNumbers::fetch_known_texts(const Hashes hashes[]) const {
    for (uint32_t i = 0; i < group_size_; ++i) {
        const uint32_t url = url_table_.likely_number(hashes[i].url);
        if (url != NumberTable::unknown) {
            const alInfo& known = records_[first_of_url_[url]];
            __builtin_prefetch(known.url);
            __builtin_prefetch(known.host_ip);
        }
    }
}

void RequestNumbers::change_session(uint64_t record) {
    number_group();
    const auto index = static_cast<uint32_t>(record);
    const uint32_t session = session_number(index, hash_session(records_[index]));
    sessions_[session].is_in_time_order = false; // it stands before requests numbered earlier
    numbers_[index].session = session;
}

void RequestNumbers::append(RequestNumbers&& other) {
    if (numbers_.empty()) {
        *this = std::move(other);
        return;
    }
    const uint32_t base = count();
    std::vector<uint32_t> sessions;
    sessions.reserve(other.sessions_.size());
    for (const NumberedSession& part : other.sessions_) {
        const bool is_none = sessions.size() == no_session;
        const uint32_t first = base + part.first_record;
        sessions.push_back(is_none ? no_session
                                   : session_number(first, hash_session(records_[first])));
        extend_session(sessions.back(), part);
    }
    std::vector<uint32_t> urls;
    urls.reserve(other.first_of_url_.size());
    for (const uint32_t first : other.first_of_url_) {
        urls.push_back(url_number(base + first, hash_url(records_[base + first])));
    }
    numbers_.reserve(numbers_.size() + other.numbers_.size());
    for (const RequestNumber& number : other.numbers_) {
        numbers_.push_back({sessions[number.session], urls[number.url]});
    }
}

uint32_t RequestNumbers::session_number(uint32_t index, uint64_t hash) {
    const alInfo& request = records_[index];
    if (!has_session(request)) {
        return no_session;
    }
    bool is_new;
    const uint32_t number =
        1 + session_table_.number_of(
                hash,
                [&](uint32_t known) {
                    return is_same_session(request, records_[sessions_[1 + known].first_record]);
                },
                &is_new);
    if (is_new) {
        sessions_.push_back({index, true, request.time_stamp, request.time_stamp});
    }
    return number;
}

uint32_t RequestNumbers::url_number(uint32_t index, uint64_t hash) {
    const alInfo& request = records_[index];
    bool is_new;
    const uint32_t number = url_table_.number_of(
        hash, [&](uint32_t known) { return is_same_url(request, records_[first_of_url_[known]]); },
        &is_new);
    if (is_new) {
        first_of_url_.push_back(index);
    }
    return number;
}

// Takes in requests that stand behind those of the session so far.
void RequestNumbers::extend_session(uint32_t number, const NumberedSession& part) {
    NumberedSession& session = sessions_[number];
    session.is_in_time_order =
        session.is_in_time_order && part.is_in_time_order && session.last_time <= part.first_time;
    session.last_time = part.last_time;
}
