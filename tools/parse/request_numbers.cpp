#include "tools/parse/request_numbers.h"

#include "base/failure.h"
#include "base/text_hash.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/counted_url.h"

#include <algorithm>
#include <cstring>
#include <endian.h>
#include <utility>

namespace {

constexpr uint32_t max_url_number = max_requests; // each may have a URL of its own

void refuse_beyond_limit(size_t request_count) {
    if (request_count > max_requests) {
        fail("More than %u requests can not be processed", max_requests);
    }
}

char lower_case(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

} // namespace

bool is_redirect(const alInfo& request) {
    const int code = request.response_code;
    return (code == 301 || code == 302 || code == 307) && request.redirect_url != nullptr;
}

void RequestNumbers::add(const alInfo& request) {
    NotedRequest& newest = noted_[noted_count_ % max_noted];
    describe_session(request, newest.session_text);
    describe_url(request, newest.url_text);
    newest.session_hash = hash_text(newest.session_text);
    newest.url_hash = hash_text(newest.url_text);
    newest.time_stamp = request.time_stamp;
    newest.is_redirect = is_redirect(request);
    session_texts_.fetch_slot(newest.session_hash);
    url_texts_.fetch_slot(newest.url_hash);
    if (noted_count_ != 0) {
        const NotedRequest& before = noted_[(noted_count_ - 1) % max_noted];
        session_texts_.fetch_text(before.session_hash);
        url_texts_.fetch_text(before.url_hash);
    }
    ++noted_count_;
    if (noted_count_ - numbers_.size() == max_noted) {
        number_oldest();
    }
}

void RequestNumbers::finish() {
    while (numbers_.size() != noted_count_) {
        number_oldest();
    }
}

void RequestNumbers::number_oldest() {
    refuse_beyond_limit(numbers_.size() + 1);
    const NotedRequest& oldest = noted_[numbers_.size() % max_noted];
    const uint32_t session =
        number_session(oldest.session_text, oldest.session_hash,
                       {true, count(), count(), oldest.time_stamp, oldest.time_stamp});
    const uint32_t url = url_texts_.number_of(oldest.url_text, oldest.url_hash);
    numbers_.push_back({session, url & max_url_number, oldest.is_redirect});
}

void RequestNumbers::change_session(uint32_t index, const alInfo& request) {
    finish();
    std::string text;
    describe_session(request, text);
    numbers_[index].session = number_session(
        text, hash_text(text), {true, index, index, request.time_stamp, request.time_stamp});
}

void RequestNumbers::append(RequestNumbers&& other) {
    if (numbers_.empty()) {
        *this = std::move(other);
        return;
    }
    refuse_beyond_limit(numbers_.size() + other.numbers_.size());
    std::vector<uint32_t> sessions;
    sessions.reserve(other.session_count());
    for (uint32_t session = 0; session < other.session_count(); ++session) {
        const std::string_view text = other.session_text(session);
        SessionSpan part = other.spans_[session];
        part.first_index += count();
        part.last_index += count();
        sessions.push_back(number_session(text, hash_text(text), part));
    }
    std::vector<uint32_t> urls;
    urls.reserve(other.url_count());
    for (uint32_t url = 0; url < other.url_count(); ++url) {
        const std::string_view text = other.url_texts_.text(url);
        urls.push_back(url_texts_.number_of(text, hash_text(text)));
    }
    numbers_.reserve(numbers_.size() + other.numbers_.size());
    for (const RequestNumber& number : other.numbers_) {
        numbers_.push_back(
            {sessions[number.session], urls[number.url] & max_url_number, number.is_redirect});
    }
    noted_count_ = numbers_.size();
}

// `part`: of the requests that are added to the session.
uint32_t RequestNumbers::number_session(std::string_view text, uint64_t hash,
                                        const SessionSpan& part) {
    const uint32_t number = session_texts_.number_of(text, hash);
    if (number == spans_.size()) {
        spans_.push_back(part);
        return number;
    }
    SessionSpan& session = spans_[number];
    session.is_in_order = session.is_in_order && part.is_in_order &&
                          session.last_index < part.first_index &&
                          session.last_time <= part.first_time;
    session.last_index = part.last_index;
    session.last_time = part.last_time;
    return number;
}

void RequestNumbers::describe_session(const alInfo& request, std::string& text) {
    if (session_mode == SESSION_MODE_COOKIE) {
        text = request.jsession_id;
        return;
    }
    const uint32_t address = htobe32(request.client_ip);
    text.assign(reinterpret_cast<const char*>(&address), sizeof address);
}

// What makes a URL unique, as one text: method in lower case, filled up with zeros, host, and the
// counted part of the URL.
void RequestNumbers::describe_url(const alInfo& request, std::string& text) {
    char method[max_method_length];
    std::transform(request.method, request.method + max_method_length, method, lower_case);
    text.assign(method, sizeof method);
    text.append(request.host_ip, std::strlen(request.host_ip) + 1);
    text.append(counted_url(request));
}
