#pragma once

#include "base/allocation.h"
#include "base/text_numbers.h"
#include "tools/parse/request_record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Numbers that stand for the session and for the unique URL of each request. They are found while a
// request's texts are still in the processor's cache, so that what comes after loading orders and
// counts numbers and seldom looks at a text again.

constexpr uint32_t max_requests = 0x7fffffff; // of a run: so many numbers a URL has the bits for

struct RequestNumber {
    uint32_t session;
    uint32_t url : 31;
    uint32_t is_redirect : 1; // its response sends the browser to another location
};

// Whether the response redirects the browser to a location that is worth remembering.
bool is_redirect(const alInfo& request);

// The numbers of the requests of one table of records. One thread at a time may use it.
class RequestNumbers {
  public:
    // Notes the next record of the table, which must be complete. Its numbers are looked up when
    // the next records are noted: until then, what the look-up needs has been fetched from memory.
    void add(const alInfo& request);

    // Looks up the numbers of the last records noted. To be called before numbers are read.
    void finish();

    // Numbers the session of a record that was noted before, after it got one. Looks up all that is
    // noted first. A session may be left without requests by this.
    void change_session(uint32_t index, const alInfo& request);

    // Takes over the numbers of records that came to stand behind the records of this table. Both
    // must be finished. Fails beyond 2,147,483,647 requests, as add and finish do.
    void append(RequestNumbers&& other);

    uint32_t count() const { return static_cast<uint32_t>(numbers_.size()); }
    const RequestNumber& operator[](uint32_t index) const { return numbers_[index]; }

    uint32_t session_count() const { return session_texts_.count(); }
    uint32_t url_count() const { return url_texts_.count(); }

    // What sessions are ordered by, byte by byte: the cookie value, or the address with its first
    // number first.
    std::string_view session_text(uint32_t session) const { return session_texts_.text(session); }

    // Whether the session's requests are known to stand in the table in time order; false also when
    // nobody has kept track of it.
    bool is_in_time_order(uint32_t session) const { return spans_[session].is_in_order; }

  private:
    // Where and when a session's requests stand in the table.
    struct SessionSpan {
        bool is_in_order;     // all of them stand in time order
        uint32_t first_index; // of the record added first
        uint32_t last_index;  // of the record added last
        uint64_t first_time;  // seconds
        uint64_t last_time;
    };

    // A record that is noted and not yet numbered.
    struct NotedRequest {
        std::string session_text;
        std::string url_text;
        uint64_t session_hash = 0;
        uint64_t url_hash = 0;
        uint64_t time_stamp = 0;
        bool is_redirect = false;
    };
    static constexpr size_t max_noted = 3; // one for each step: slot, text, number

    static void describe_session(const alInfo& request, std::string& text);
    static void describe_url(const alInfo& request, std::string& text);
    void number_oldest();
    uint32_t number_session(std::string_view text, uint64_t hash, const SessionSpan& part);

    std::array<NotedRequest, max_noted> noted_;
    size_t noted_count_ = 0; // records noted so far, numbered or not
    std::vector<RequestNumber, PageAllocator<RequestNumber>> numbers_;
    TextNumbers session_texts_;
    std::vector<SessionSpan> spans_; // by session
    TextNumbers url_texts_;
};
