#pragma once

#include "companions/shard/exchange/exchanged_row.h"
#include "companions/shard/exchange/frame.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Requests in the order of session, time and place, as the payload of frames of kind "rows". The
// label tells "first" and "last", the range keys of the first and the last row as hex_text gives
// them, and "rows", their number.
//
// Payload, in packed numbers and texts: the URL keys, their count first; then session by session
// its text, the count of its rows, and for each row: time (the first of a session whole, then what
// it is later than the one before), log piece, row in that, number of its URL key, own texts.

constexpr size_t row_block_size = size_t{1} << 19; // bytes of a payload, about

// Puts rows into blocks.
class RowBlockWriter {
  public:
    // Further entries of each label. `frames` must outlive the object.
    RowBlockWriter(FrameWriter& frames, nlohmann::json label)
        : frames_(frames), label_(std::move(label)) {}

    // Takes the next row in their order.
    void add(const ExchangedRow& row);

    // Writes out what is left. To be called after the last row.
    void finish();

  private:
    void end_session();
    uint64_t number_of_url(std::string_view key);

    FrameWriter& frames_;
    nlohmann::json label_;
    std::unordered_map<std::string, uint64_t> urls_; // their numbers in this block
    std::string url_texts_;
    std::string sessions_;     // all but the one at work
    std::string session_rows_; // of that
    uint64_t session_count_ = 0;
    std::string session_;
    uint64_t last_time_ = 0;
    uint64_t row_count_ = 0;
    std::string first_key_;
};

// Reads the rows of a block in their order. Fails when the block is damaged or not in order.
class RowBlockReader {
  public:
    explicit RowBlockReader(Frame block);
    RowBlockReader(const RowBlockReader&) = delete; // parts of it are pointed to
    RowBlockReader& operator=(const RowBlockReader&) = delete;

    // Goes on to the next row; returns false at the end.
    bool next();

    // The row; its texts stay as they are until the next call of next, its session's and its URL
    // key as long as the object does.
    const ExchangedRow& row() const { return row_; }

  private:
    void begin_session();
    void read_time_and_place();

    Frame block_;
    PackedReader from_;
    std::vector<std::string_view> keys_;
    OwnTextsReader own_texts_;
    ExchangedRow row_ = {};
    uint64_t rows_left_ = 0; // of the session
    bool is_first_of_session_ = false;
    uint64_t row_count_ = 0;
};
