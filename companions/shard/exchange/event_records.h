#pragma once

#include "companions/shard/exchange/exchanged_row.h"
#include "companions/shard/exchange/frame.h"
#include "tools/parse/request_batch.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What the settling of sessions has to know of log pieces, as the payload of frames of kind
// "events". The label tells "instance", "first" and "end": the log pieces, all of one instance.
//
// Payload, in packed numbers and texts, log piece by log piece: lines, requests, of these bad ones
// and ones outside the period, rows, 1 if there are lines that came in pieces, events; then for
// each event: 1 if it waits, its line, its row, the value of its secondary cookie; of one that
// waits its time, URL key and own texts, of another one its session.

// A request that waits for its session, or whose response sets one.
struct ExchangedEvent {
    bool waits;
    int64_t line_num;          // in the log piece, from 1
    std::string_view akaau_id; // value of its secondary cookie
    ExchangedRow request;      // of one that does not wait, only session and place
};

// One log piece.
struct PieceRecord {
    uint32_t log_piece;
    int64_t line_count;
    threadCounter counters;
    uint32_t row_count;
    bool has_line_pieces; // see RequestBatch
};

// Puts what happened in log pieces into frames of some megabytes.
class EventFrameWriter {
  public:
    explicit EventFrameWriter(FrameWriter& frames) : frames_(frames) {}

    // Takes the next log piece and then its events, as many as announced.
    void add_piece(const PieceRecord& piece, int instance, uint64_t event_count);
    void add_event(const ExchangedEvent& event);

    // Writes out what is left.
    void finish();

  private:
    FrameWriter& frames_;
    std::string payload_;
    int instance_ = 0;
    uint32_t first_ = 0;
    uint32_t end_ = 0;
};

// Told of what is in an events frame, in its order. Texts stay as they are until the next call.
class EventTaker {
  public:
    virtual void take_piece(const PieceRecord& piece) = 0;
    virtual void take_event(const ExchangedEvent& event) = 0;

  protected:
    ~EventTaker() = default;
};

// Fails when the frame is damaged.
void read_event_frame(const Frame& frame, EventTaker& taker);
