#pragma once

#include "base/interned_texts.h"
#include "base/text_arena.h"
#include "companions/shard/exchange/exchanged_row.h"
#include "companions/shard/exchange/frame.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

// Requests in the order of session, time and place, brought together by their URL keys.
class UrlCounts {
  public:
    // `keeps_queries`: the ignored queries are wanted.
    explicit UrlCounts(bool keeps_queries) : keeps_queries_(keeps_queries) {}

    // Adds the next request.
    void add(const ExchangedRow& row);

    bool is_empty() const { return urls_.empty(); }
    size_t held_size() const; // bytes

    // Writes a table of what was added, of this number (exchange/url_table.h), and begins anew.
    void write(FrameWriter& frames, uint64_t table);

  private:
    struct Query {
        const char* rest; // of the full URL
        const Query* next;
    };

    struct CountedUrl {
        uint64_t count = 0;
        const char* own_method = nullptr; // of its first request
        const Query* first_query = nullptr;
        Query* last_query = nullptr;
    };

    CountedUrl& find_url(std::string_view key);
    void add_query(CountedUrl& url, std::string_view rest);
    std::vector<uint32_t> order() const;

    bool keeps_queries_;
    InternedTexts keys_;
    std::vector<CountedUrl> urls_; // by id of the key
    std::deque<Query> queries_;    // do not move
    TextArena texts_;
};
