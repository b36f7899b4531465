#include "base/failure.h"
#include "companions/shard/exchange/event_records.h"
#include "companions/shard/exchange/row_block.h"
#include "companions/shard/exchange/settled_instance.h"
#include "companions/shard/exchange/url_table.h"
#include "tests/companions/properties/companion_properties.h"
#include "tests/companions/shard/frames_in_file.h"

namespace {

constexpr FrameKind kinds[] = {FrameKind::rows, FrameKind::events, FrameKind::settled,
                               FrameKind::urls};

constexpr const char* entries[] = {"rows", "instance",  "first",   "end",
                                   "part", "total_req", "bad_req", "time_filtered_req"};

std::string some_key(Choices& choices) {
    std::string key(choices.of(std::array{"get", "post"}));
    key.resize(max_method_length);
    return key + choices.text("ab", 2) + '\0' + choices.text("/a?", 3);
}

void write_rows(Choices& choices, FrameWriter& frames) {
    RowBlockWriter writer(frames, nlohmann::json::object());
    uint32_t row = 0;
    for (size_t left = choices.below(6); left != 0; --left) {
        const std::string key = some_key(choices);
        ExchangedRow next = {};
        next.session = left > 3 ? "" : "user";
        next.url_key = key;
        next.place = {0, row++};
        next.is_redirect = choices.one_in(2);
        next.own_texts.location = next.is_redirect ? "/there" : nullptr;
        writer.add(next);
    }
    writer.finish();
}

void write_events(Choices& choices, FrameWriter& frames) {
    EventFrameWriter writer(frames);
    const size_t count = choices.below(4);
    writer.add_piece({0, 9, {}, 9, choices.one_in(2)}, 0, count);
    for (uint32_t i = 0; i < count; ++i) {
        const std::string key = some_key(choices);
        ExchangedEvent event = {choices.one_in(2), i + 1, "=K", {}};
        event.request.session = "user";
        event.request.url_key = key;
        event.request.place = {0, i};
        writer.add_event(event);
    }
    writer.finish();
}

void write_urls(Choices& choices, FrameWriter& frames) {
    UrlTableWriter writer(frames, 0);
    for (size_t left = choices.below(3); left != 0; --left) {
        const uint64_t count = 1 + choices.below(3);
        writer.add_url({some_key(choices), count, "gEt", count});
        for (uint64_t i = 0; i < count; ++i) {
            writer.add_query("q");
        }
    }
    writer.finish();
}

// What a stage writes, if anything.
std::string written_payload(Choices& choices, FrameKind kind) {
    FramesInFile file;
    FrameWriter frames = file.writer();
    if (kind == FrameKind::rows) {
        write_rows(choices, frames);
    } else if (kind == FrameKind::events) {
        write_events(choices, frames);
    } else if (kind == FrameKind::urls) {
        write_urls(choices, frames);
    } else {
        write_settled({0, {}, 3, {{0, 1, 2}, {1, 2, 0}}}, frames);
    }
    const std::vector<Frame> written = file.frames();
    return written.empty() ? "" : written.front().payload;
}

std::string some_payload(Choices& choices, FrameKind kind) {
    if (!choices.one_in(2)) {
        return choices.rest(std::string_view("\x00\x01\x02\x10\x80\xffget", 9), 80);
    }
    std::string payload = written_payload(choices, kind);
    for (size_t left = choices.below(4); left != 0; --left) {
        choices.edit(payload, std::string_view("\x00\x01\x7f\x80\xff", 5));
    }
    return payload;
}

nlohmann::json some_label(Choices& choices) {
    nlohmann::json label = {{"is_last", choices.one_in(2)}};
    for (const char* const entry : entries) {
        label[entry] = choices.below(6);
    }
    if (choices.one_in(4)) {
        label[choices.of(entries)] =
            choices.of(std::array<nlohmann::json, 5>{-1, 1.5, "1", nullptr, UINT64_MAX});
    }
    return label;
}

class OrderChecker : public EventTaker {
  public:
    void take_piece(const PieceRecord& piece) override { log_piece_ = piece.log_piece; }
    void take_event(const ExchangedEvent& event) override {
        EXPECT_EQ(event.request.place.log_piece, log_piece_);
        EXPECT_LT(event.akaau_id.size(), max_cookie_length);
    }

  private:
    uint32_t log_piece_ = 0;
};

void read_rows(Frame frame) {
    RowBlockReader reader(std::move(frame));
    std::string last_session;
    uint64_t last_time = 0;
    while (reader.next()) {
        const ExchangedRow& row = reader.row();
        EXPECT_LE(last_session, row.session);
        EXPECT_TRUE(last_session != row.session || last_time <= row.time);
        EXPECT_EQ(row.is_redirect, row.own_texts.location != nullptr);
        last_session = row.session;
        last_time = row.time;
    }
}

void read_urls(const Frame& frame) {
    UrlTableReader reader([left = &frame]() mutable {
        const Frame* const next = std::exchange(left, nullptr);
        return next == nullptr ? std::nullopt : std::optional(*next);
    });
    while (reader.next_url()) {
        EXPECT_GT(reader.url().count, 0U);
        EXPECT_GT(reader.url().key.size(), max_method_length);
    }
}

void read_settled_cuts(const Frame& frame) {
    uint32_t end = 0;
    for (const LoadingCut& cut : read_settled(frame).cuts) {
        EXPECT_LE(end, cut.first);
        EXPECT_LT(cut.first, cut.end);
        end = cut.end;
    }
}

void read_frame(const Frame& frame) {
    OrderChecker checker;
    if (frame.kind == FrameKind::rows) {
        read_rows(frame);
    } else if (frame.kind == FrameKind::events) {
        read_event_frame(frame, checker);
    } else if (frame.kind == FrameKind::settled) {
        read_settled_cuts(frame);
    } else {
        read_urls(frame);
    }
}

} // namespace

void check_exchanged_payloads(Choices& choices) {
    const FrameKind kind = choices.of(kinds);
    const nlohmann::json label = nlohmann::json::parse(some_label(choices).dump());
    try {
        read_frame({kind, label, some_payload(choices, kind)});
    } catch (const Failure& failure) {
        EXPECT_NE(failure.message, "");
    }
}
