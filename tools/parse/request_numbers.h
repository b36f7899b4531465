#pragma once

#include "tools/parse/number_table.h"
#include "tools/parse/request_record.h"

#include <cstdint>
#include <string_view>
#include <vector>

// Numbers that stand for the session and for the unique URL of each request. They are found while a
// request's texts are still in the processor's cache, so that what comes after loading orders and
// counts numbers and seldom looks at a text again.

struct RequestNumber {
    uint32_t session;
    uint32_t url;
};

// The session number of requests without a session. There may be none of them.
constexpr uint32_t no_session = 0;

// A session of the requests numbered so far.
struct NumberedSession {
    uint32_t first_record; // not known of no_session
    bool is_in_time_order; // as far as known: its requests stand in the table in time order
    uint64_t first_time;   // of its first request in the table
    uint64_t last_time;    // of its last one
};

// Whether a request has a session: a cookie value or a client address, as session_mode has it.
bool has_session(const alInfo& request);

// The part of a request's URL that identifies its unique URL.
inline std::string_view counted_url(const alInfo& request) {
    return {request.url, static_cast<size_t>(request.url_len)};
}

// The numbers of the requests of one table of records. One thread at a time may use it.
class RequestNumbers {
  public:
    // Of no table, to take others over.
    RequestNumbers() = default;

    // `records`: the table; its records must not move while they are numbered.
    explicit RequestNumbers(const alInfo* records) : records_(records) {}

    // Takes note of the next record of the table, which must be complete. Records are numbered in
    // groups, so that the memory that a group's numbers are looked up in is fetched for all of it
    // at once.
    void add_next() {
        if (++group_size_ == max_group_size) {
            number_group();
        }
    }

    // Numbers the records noted so far. To be called before the numbers are read.
    void finish() { number_group(); }

    // Numbers the session of a record anew after it got one.
    void change_session(uint64_t index);

    // Takes over the numbers of records that had a table of their own before they came to stand
    // behind the records of this one. The first to be taken over bring their table with them.
    void append(RequestNumbers&& other);

    uint32_t count() const { return static_cast<uint32_t>(numbers_.size()); }
    const RequestNumber& operator[](uint32_t index) const { return numbers_[index]; }

    // By number; the first is no_session.
    const std::vector<NumberedSession>& sessions() const { return sessions_; }
    uint32_t url_count() const { return static_cast<uint32_t>(first_of_url_.size()); }

  private:
    static constexpr uint32_t max_group_size = 32;

    // What the numbers of a record are looked up by.
    struct Hashes {
        uint64_t session;
        uint64_t url;
    };

    void number_group();
    void fetch_tables(uint32_t first, Hashes hashes[]) const;
    void fetch_known_records(const Hashes hashes[]) const;
    void fetch_known_texts(const Hashes hashes[]) const;
    uint32_t session_number(uint32_t index, uint64_t hash);
    uint32_t url_number(uint32_t index, uint64_t hash);
    void extend_session(uint32_t number, const NumberedSession& part);

    const alInfo* records_ = nullptr;
    std::vector<RequestNumber> numbers_;
    uint32_t group_size_ = 0; // records noted and not yet numbered
    NumberTable session_table_;
    std::vector<NumberedSession> sessions_ = {{0, true, 0, 0}};
    NumberTable url_table_;
    std::vector<uint32_t> first_of_url_; // by number: the first record with that URL
};
