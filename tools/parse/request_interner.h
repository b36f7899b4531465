#pragma once

#include "base/allocation.h"
#include "base/interned_texts.h"
#include "tools/parse/request_row.h"
#include "tools/parse/url_key.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

using RequestRows = std::vector<RequestRow, RawPageAllocator<RequestRow>>;

// The session texts and URL keys of a run or of the requests that one worker thread has read. What
// sessions are ordered by, byte by byte, is their text: the cookie value, or the address with its
// first number first.
struct RequestTexts {
    InternedTexts sessions;
    InternedTexts urls;

    // Forgets all texts and gives their memory back.
    void release() {
        sessions.release();
        urls.release();
    }

    // Bytes that are taken.
    size_t held_size() const { return sessions.held_size() + urls.held_size(); }
};

// An address as the text of a session.
using AddressText = std::array<char, sizeof(uint32_t)>;
AddressText address_text(uint32_t client_ip);

// Interns the session and the URL key of each request while its texts are still in the processor's
// cache, so that what comes after loading orders and counts ids and seldom looks at a text again.
// One thread at a time may use it.
class RequestInterner {
  public:
    // Fills in the ids of the last of `rows`, the row of a request with these texts, of which
    // copies are made. They are looked up when further rows have come, or by finish: until then,
    // what the look-up needs is prefetched.
    void add(std::string_view session, const UrlParts& url, RequestRows& rows);

    // Looks up the ids of all rows added.
    void finish(RequestRows& rows);

    const RequestTexts& texts() const { return texts_; }

    // Forgets the texts of all rows that are finished, and gives their memory back.
    void release_texts() { texts_.release(); }
    RequestTexts take_texts() { return std::move(texts_); }

  private:
    // A copy of a text with its hash. Its room is used again.
    struct PendingText {
        char* resize(size_t new_size);
        std::string_view view() const { return {room.data(), size}; }

        std::vector<char> room;
        size_t size = 0;
        uint64_t hash = 0;
    };

    // A request whose ids are yet to be looked up.
    struct Pending {
        PendingText session;
        PendingText url;
        size_t row = 0;
    };
    static constexpr size_t max_pending = 8;
    static constexpr size_t steps_to_text = 4; // between prefetching a slot and its text

    void intern_oldest(RequestRows& rows);
    Pending& pending(size_t number) { return pending_[number % max_pending]; }

    RequestTexts texts_;
    std::array<Pending, max_pending> pending_;
    size_t added_ = 0;
    size_t interned_ = 0;
};
