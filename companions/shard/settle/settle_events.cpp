#include "companions/shard/settle/settle_events.h"

#include "base/failure.h"
#include "companions/shard/plan/planned_logs.h"
#include "companions/shard/settle/instance_settling.h"

#include <algorithm>
#include <optional>
#include <set>

namespace {

void store_cookie(std::string_view text, char (&cookie)[max_cookie_length]) {
    if (text.size() >= sizeof cookie) {
        fail_as_damaged();
    }
    cookie[text.copy(cookie, sizeof cookie)] = '\0';
}

class Settling : private EventTaker {
  public:
    Settling(const Plan& plan, const std::vector<int32_t>& instances, FrameWriter& to);

    void take(const Frame& frame);

    // To be called after the last frame.
    void finish();

  private:
    void take_piece(const PieceRecord& piece) override;
    void take_event(const ExchangedEvent& event) override;
    void settle_piece();
    bool is_wanted(int32_t instance) const { return wanted_.empty() || wanted_.contains(instance); }
    void require_sound(const PieceRecord& piece) const;

    const Plan& plan_;
    FrameWriter& to_;
    SettledRows rows_{to_};
    std::set<int32_t> wanted_; // empty: all instances
    std::vector<LogPiece> log_pieces_;
    uint32_t next_ = 0; // log piece whose events are to come
    std::optional<PieceEvents> happened_;
    std::optional<InstanceSettling> instance_;
};

Settling::Settling(const Plan& plan, const std::vector<int32_t>& instances, FrameWriter& to)
    : plan_(plan), to_(to), wanted_(instances.begin(), instances.end()),
      log_pieces_(cut_planned_logs(plan.logs)) {
    for (const int32_t instance : wanted_) {
        if (instance < 0 || instance > (log_pieces_.empty() ? -1 : log_pieces_.back().thread)) {
            fail("The plan has no instance %d", instance);
        }
    }
}

void Settling::take(const Frame& frame) {
    if (frame.kind == FrameKind::events &&
        is_wanted(static_cast<int32_t>(number_in(frame.label, "instance", INT32_MAX)))) {
        read_event_frame(frame, *this);
    }
}

void Settling::take_piece(const PieceRecord& piece) {
    settle_piece();
    while (next_ < log_pieces_.size() && !is_wanted(log_pieces_[next_].thread)) {
        ++next_;
    }
    if (next_ == log_pieces_.size() || piece.log_piece != next_) {
        fail("Events of log piece %u come where those of log piece %u should", piece.log_piece,
             next_);
    }
    require_sound(piece);
    happened_.emplace().piece = piece;
}

// Each line has a byte at least.
void Settling::require_sound(const PieceRecord& piece) const {
    const FileRange& range = log_pieces_[piece.log_piece].range;
    const auto lines = static_cast<uint64_t>(piece.line_count);
    if (lines > range.file_size - range.begin || piece.row_count > lines) {
        fail_as_damaged();
    }
}

void Settling::take_event(const ExchangedEvent& event) {
    const uint32_t row = event.request.place.row;
    std::deque<SessionEvent>& events = happened_->events;
    const bool is_in_order =
        events.empty() || (events.back().row < row && events.back().line_num < event.line_num);
    if (!is_in_order || row >= happened_->piece.row_count || event.line_num < 1 ||
        event.line_num > happened_->piece.line_count || event.akaau_id.empty()) {
        fail_as_damaged();
    }
    SessionEvent& own = events.emplace_back();
    own.row = row;
    own.line_num = event.line_num;
    own.waits = event.waits;
    own.url = nullptr;
    store_cookie(event.akaau_id, own.akaau_id);
    store_cookie(event.request.session, own.jsession_id);
    if (event.waits) {
        append_request(happened_->waiting[row], event.request);
    } else {
        happened_->sessions[row] = event.request.session;
    }
}

void Settling::settle_piece() {
    if (!happened_) {
        return;
    }
    const LogPiece& log_piece = log_pieces_[next_++];
    if (!instance_) {
        instance_.emplace(plan_, log_piece.thread, rows_);
    }
    instance_->settle(log_piece, *happened_);
    happened_.reset();
    if (log_piece.ends_thread) {
        write_settled(instance_->finish(), to_);
        instance_.reset();
    }
}

void Settling::finish() {
    settle_piece();
    const bool is_any_left =
        std::any_of(log_pieces_.begin() + next_, log_pieces_.end(),
                    [&](const LogPiece& piece) { return is_wanted(piece.thread); });
    if (is_any_left) {
        fail("Events of log pieces from number %u on are missing", next_);
    }
    rows_.finish();
}

} // namespace

void settle_events(const Plan& plan, const std::vector<int32_t>& instances, FrameReader& from,
                   FrameWriter& to) {
    Settling settling(plan, instances, to);
    while (const std::optional<Frame> frame = from.next()) {
        settling.take(*frame);
    }
    settling.finish();
}
