#pragma once

#include "companions/shard/exchange/packed_text.h"
#include "tools/parse/own_texts.h"

#include <cstdint>
#include <string>
#include <string_view>

// A request on its way between stages.

// Where a request stands in the logs of a plan: the number of its log piece, and its row among the
// requests of that piece. Ordered as the requests are loaded.
struct RequestPlace {
    uint32_t log_piece;
    uint32_t row;

    // NOLINTNEXTLINE(modernize-use-nullptr): no pointer is compared
    auto operator<=>(const RequestPlace&) const = default;
};

struct ExchangedRow {
    std::string_view session; // see tools/parse/request_interner.h
    std::string_view url_key; // see tools/parse/url_key.h
    uint64_t time;            // on the scale of tools/parse/timestamps.h
    RequestPlace place;
    bool is_redirect;
    OwnTexts own_texts; // a full URL begins with the URL of the key
};

// Takes a text that must have the form of a URL key.
std::string_view read_url_key(PackedReader& from);

// Appends what is told of a request itself, of which `url` is the part that counts: whether it is a
// redirect, and its own texts.
void append_own_texts(std::string& to, const ExchangedRow& row, std::string_view url);

// What append_own_texts wrote. The texts stay as they are until the next call.
class OwnTextsReader {
  public:
    void read(PackedReader& from, std::string_view url, ExchangedRow& row);

  private:
    std::string location_;
    std::string full_url_;
    std::string method_;
};

// Time, URL key and own texts of a request, one behind the other.
void append_request(std::string& to, const ExchangedRow& row);
void read_request(PackedReader& from, OwnTextsReader& own_texts, ExchangedRow& row);
