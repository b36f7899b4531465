#pragma once

#include "base/line_text.h"
#include "tools/parse/request_record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Cuts the values of the two cookies that tell sessions out of a Cookie or Set-Cookie header. Their
// names are searched as plain text, so they are also found inside longer names.

// Where the names stand first in a header; null: nowhere.
struct CookiePlaces {
    const char* session = nullptr;
    const char* secondary = nullptr;
};

// A name, which may stand where its first and its last character do, at their distance.
struct CookieName {
    using Block = std::array<char, 32>;

    explicit CookieName(std::string_view name);

    std::string_view text;
    size_t to_last = 0;   // from the first character
    Block all_first = {}; // filled with the first character
    Block all_last = {};
    Block all = {};          // its characters, as far as they fit
    uint32_t all_places = 0; // a bit for each of them
};

// Looks for both names at once, in headers behind which room_behind_line bytes may be read. The
// texts of the names must outlive this object.
class CookieNames {
  public:
    CookieNames(std::string_view session, std::string_view secondary);

    std::string_view session() const { return session_.text; }
    std::string_view secondary() const { return secondary_.text; }

    CookiePlaces find(LineText header) const {
        return header.size < min_size_ ? CookiePlaces{} : find_in(header);
    }

    // The same, one name after the other.
    CookiePlaces find_plainly(LineText header) const;

  private:
    CookiePlaces find_in(LineText header) const;

    CookieName session_;
    CookieName secondary_;
    size_t min_size_;                  // of a header that may hold a name
    size_t min_block_size_ = SIZE_MAX; // of one that is searched in blocks
};

// The value of a cookie ends before the next ';' or with its header.
using CookieValue = char[max_cookie_length];

// Stores the value that begins at `start`, at most 63 characters of it and a terminator; what
// stands behind that is undefined. `rest`: characters up to the end of the header. Returns how many
// it stored.
size_t store_cookie_value(const char* start, size_t rest, CookieValue& value);

// How many characters up to the end of the value, or max_cookie_length when there are more. Copies
// as many to `value`; what stands behind them is undefined.
size_t copy_cookie_value(const char* start, size_t rest, CookieValue& value);

// The same, with searching first.
size_t copy_cookie_value_plainly(const char* start, size_t rest, CookieValue& value);
