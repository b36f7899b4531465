#include "companions/shard/exchange/event_records.h"

#include <utility>

namespace {

constexpr size_t event_frame_size = size_t{1} << 20; // bytes of a payload, about

PieceRecord read_piece(PackedReader& from, uint32_t log_piece) {
    PieceRecord piece = {.log_piece = log_piece,
                         .line_count = static_cast<int64_t>(from.number()),
                         .counters = {},
                         .row_count = 0,
                         .has_line_pieces = false};
    piece.counters.total_req = from.number();
    piece.counters.bad_req = from.number();
    piece.counters.time_filtered_req = from.number();
    piece.row_count = from.word();
    piece.has_line_pieces = from.number() != 0;
    return piece;
}

void read_event(PackedReader& from, uint32_t log_piece, EventTaker& taker,
                OwnTextsReader& own_texts) {
    ExchangedEvent event = {};
    event.waits = from.number() != 0;
    event.line_num = static_cast<int64_t>(from.number());
    event.request.place = {log_piece, from.word()};
    event.akaau_id = from.text();
    if (event.akaau_id.size() >= max_cookie_length) {
        fail_as_damaged();
    }
    if (event.waits) {
        read_request(from, own_texts, event.request);
    } else {
        event.request.session = from.text();
    }
    taker.take_event(event);
}

} // namespace

void EventFrameWriter::add_piece(const PieceRecord& piece, int instance, uint64_t event_count) {
    if (instance != instance_ || piece.log_piece != end_ || payload_.size() >= event_frame_size) {
        finish();
    }
    if (payload_.empty()) {
        instance_ = instance;
        first_ = piece.log_piece;
    }
    end_ = piece.log_piece + 1;
    append_packed(payload_, static_cast<uint64_t>(piece.line_count));
    append_packed(payload_, piece.counters.total_req);
    append_packed(payload_, piece.counters.bad_req);
    append_packed(payload_, piece.counters.time_filtered_req);
    append_packed(payload_, uint64_t{piece.row_count});
    append_packed(payload_, uint64_t{piece.has_line_pieces});
    append_packed(payload_, event_count);
}

void EventFrameWriter::add_event(const ExchangedEvent& event) {
    append_packed(payload_, uint64_t{event.waits});
    append_packed(payload_, static_cast<uint64_t>(event.line_num));
    append_packed(payload_, uint64_t{event.request.place.row});
    append_packed(payload_, event.akaau_id);
    if (event.waits) {
        append_request(payload_, event.request);
    } else {
        append_packed(payload_, event.request.session);
    }
}

void EventFrameWriter::finish() {
    if (!payload_.empty()) {
        frames_.write(FrameKind::events,
                      {{"instance", instance_}, {"first", first_}, {"end", end_}},
                      std::exchange(payload_, {}));
    }
}

void read_event_frame(const Frame& frame, EventTaker& taker) {
    PackedReader from(frame.payload);
    OwnTextsReader own_texts;
    const auto end = static_cast<uint32_t>(number_in(frame.label, "end", UINT32_MAX));
    for (auto i = static_cast<uint32_t>(number_in(frame.label, "first", end)); i != end; ++i) {
        const PieceRecord piece = read_piece(from, i);
        taker.take_piece(piece);
        for (uint64_t left = from.number(); left != 0; --left) {
            read_event(from, i, taker, own_texts);
        }
    }
    if (!from.at_end()) {
        fail_as_damaged();
    }
}
