#include "companions/shard/exchange/exchanged_row.h"

#include "companions/shard/exchange/frame.h"
#include "tools/parse/url_key.h"

#include <algorithm>
#include <cstring>

namespace {

// Bits of the number that tells what follows it, in this order.
enum Holds : uint64_t {
    REDIRECT = 1,
    LOCATION = 2,
    FULL_URL = 4,
    METHOD = 8,
    SECONDARY_COOKIE = 16
};

// Texts of a request have a terminator and so hold none.
const char* copy_terminated(std::string_view text, std::string& copy) {
    if (text.find('\0') != std::string_view::npos) {
        fail_as_damaged();
    }
    copy = text;
    return copy.c_str();
}

} // namespace

std::string_view read_url_key(PackedReader& from) {
    const std::string_view key = from.text();
    const size_t host_end = key.find('\0', std::min<size_t>(key.size(), max_method_length));
    if (host_end == std::string_view::npos ||
        key.find('\0', host_end + 1) != std::string_view::npos) {
        fail_as_damaged();
    }
    return key;
}

void append_own_texts(std::string& to, const ExchangedRow& row, std::string_view url) {
    const OwnTexts& own = row.own_texts;
    append_packed(to, uint64_t{(row.is_redirect ? REDIRECT : 0UL) |
                               (own.location != nullptr ? LOCATION : 0UL) |
                               (own.full_url != nullptr ? FULL_URL : 0UL) |
                               (own.method != nullptr ? METHOD : 0UL) |
                               (own.has_secondary_cookie ? SECONDARY_COOKIE : 0UL)});
    if (own.location != nullptr) {
        append_packed(to, std::string_view(own.location));
    }
    if (own.full_url != nullptr) {
        append_packed(to, std::string_view(own.full_url).substr(url.size()));
    }
    if (own.method != nullptr) {
        append_packed(to, std::string_view(own.method));
    }
}

void OwnTextsReader::read(PackedReader& from, std::string_view url, ExchangedRow& row) {
    const uint64_t held = from.number();
    OwnTexts& own = row.own_texts;
    own = {};
    row.is_redirect = (held & REDIRECT) != 0;
    own.has_secondary_cookie = (held & SECONDARY_COOKIE) != 0;
    if ((held & LOCATION) != 0) {
        own.location = copy_terminated(from.text(), location_);
    }
    if ((held & FULL_URL) != 0) {
        full_url_ = url;
        full_url_ += from.text();
        own.full_url = full_url_.c_str();
    }
    if ((held & METHOD) != 0) {
        own.method = copy_terminated(from.text(), method_);
    }
    if (row.is_redirect != (own.location != nullptr) ||
        std::strlen(own.method == nullptr ? "" : own.method) > max_method_length) {
        fail_as_damaged();
    }
}

void append_request(std::string& to, const ExchangedRow& row) {
    append_packed(to, row.time);
    append_packed(to, row.url_key);
    append_own_texts(to, row, UrlKey(row.url_key).url);
}

void read_request(PackedReader& from, OwnTextsReader& own_texts, ExchangedRow& row) {
    row.time = from.number();
    row.url_key = read_url_key(from);
    own_texts.read(from, UrlKey(row.url_key).url, row);
}
