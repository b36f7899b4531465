#pragma once

#include "companions/shard/exchange/frame.h"
#include "companions/shard/exchange/packed_text.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Unique URLs in their order (tools/urls/url_order.h), each once, as the payloads of frames of kind
// "urls". The label tells "table", the number of the table among those of its writer, "part", the
// number of the frame in the table, both from 0, and "is_last", whether it is the table's last.
//
// Payloads of a table one behind the other, in packed numbers and texts: URL by URL its key, its
// requests, the method of the first as that spelt it (empty: as standard_method does), the number
// of its queries, and these in the order of the requests, each as what the full URL goes on with
// behind the URL of the key. A frame ends behind a query or a URL without any left.

constexpr size_t url_frame_size = size_t{64} << 10; // bytes of a payload, about

struct TabledUrl {
    std::string_view key; // see tools/parse/url_key.h
    uint64_t count;
    std::string_view own_method;
    uint64_t query_count; // none, or one for each request
};

class UrlTableWriter {
  public:
    // `frames` must outlive the object. `table`: number of the table.
    UrlTableWriter(FrameWriter& frames, uint64_t table) : frames_(frames), table_(table) {}

    // Takes the next URL and then its queries, as many as announced.
    void add_url(const TabledUrl& url);
    void add_query(std::string_view rest);

    // Writes out what is left, and that it is the last. To be called after the last URL.
    void finish() { write(true); }

  private:
    void make_room();
    void write(bool is_last);

    FrameWriter& frames_;
    uint64_t table_;
    uint64_t part_ = 0;
    std::string payload_;
};

// Reads one table, frame by frame. Fails when a part is missing or what is read is damaged.
class UrlTableReader {
  public:
    // `next_part` gives the frames of the table in order, or nothing when there are no more.
    explicit UrlTableReader(std::function<std::optional<Frame>()> next_part)
        : next_part_(std::move(next_part)) {}
    UrlTableReader(const UrlTableReader&) = delete; // parts of it are pointed to
    UrlTableReader& operator=(const UrlTableReader&) = delete;

    // Goes on to the next URL, over queries that were not read. Returns false at the end.
    bool next_url();

    // The URL; its texts stay until the next call of next_url.
    const TabledUrl& url() const { return url_; }

    // The rest of its next query; to be called query_count times at most. Stays until the next call
    // of anything else than url.
    std::string_view next_query();

  private:
    bool has_more();
    void read_url();

    std::function<std::optional<Frame>()> next_part_;
    std::optional<Frame> part_;
    PackedReader from_ = PackedReader({});
    uint64_t part_count_ = 0;
    bool was_last_ = false;
    std::string key_;
    std::string own_method_;
    TabledUrl url_ = {};
    uint64_t queries_left_ = 0;
};
