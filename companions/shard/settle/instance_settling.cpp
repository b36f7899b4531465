#include "companions/shard/settle/instance_settling.h"

#include "companions/shard/plan/apply_plan.h"
#include "tools/load/log_piece_reader.h"

#include <utility>

namespace {

// As the piece was loaded. Of its rows only the number has a say.
RequestBatch batch_of(PieceEvents& happened) {
    RequestBatch batch;
    batch.rows.resize(happened.piece.row_count);
    batch.events = std::move(happened.events);
    batch.counters = happened.piece.counters;
    batch.line_count = happened.piece.line_count;
    batch.has_line_pieces = happened.piece.has_line_pieces;
    return batch;
}

} // namespace

InstanceSettling::InstanceSettling(const Plan& plan, int32_t instance, SettledRows& rows)
    : plan_(plan),
      rows_(rows), settled_{.instance = instance, .counters = {}, .row_count = 0, .cuts = {}} {
    arguments_.thread_idx = instance;
}

void InstanceSettling::settle(const LogPiece& log_piece, PieceEvents& happened) {
    const uint32_t number = happened.piece.log_piece;
    RequestBatch batch = batch_of(happened);
    thread_.begin(log_piece);
    if (!thread_.wants_more()) {
        batch = {};
    } else {
        if (batch.has_line_pieces) { // lines may have to be counted
            check_logs(plan_, {static_cast<size_t>(log_piece.file)});
        }
        thread_.settle_batch(batch, number, log_piece,
                             [&](int64_t max_lines) { reload(log_piece, max_lines, batch); });
    }
    thread_.end(log_piece, batch);
    const auto row_count = static_cast<uint32_t>(batch.rows.size());
    if (row_count != happened.piece.row_count) {
        note_cut(number, row_count);
    }
    keep_waiting(happened, row_count);
    give_sessions(happened);
}

void InstanceSettling::reload(const LogPiece& log_piece, int64_t max_lines,
                              RequestBatch& batch) const {
    check_logs(plan_, {static_cast<size_t>(log_piece.file)});
    ParsingThread parsing;
    reload_piece(parsing, log_piece, max_lines, batch);
    parsing.interner.release_texts();
    parsing.own_texts.release();
}

void InstanceSettling::note_cut(uint32_t log_piece, uint32_t row_count) {
    std::vector<LoadingCut>& cuts = settled_.cuts;
    if (row_count == 0 && !cuts.empty() && cuts.back().end == log_piece && cuts.back().rows == 0) {
        ++cuts.back().end;
    } else {
        cuts.push_back({log_piece, log_piece + 1, row_count});
    }
}

// But for requests behind the last line that counts.
void InstanceSettling::keep_waiting(PieceEvents& happened, uint32_t row_count) {
    for (auto& [row, request] : happened.waiting) {
        if (row < row_count) {
            waiting_.put({happened.piece.log_piece, row}, std::move(request));
        }
    }
}

// A session is given as soon as it is set, so that all donors are in this piece.
void InstanceSettling::give_sessions(const PieceEvents& happened) {
    for (const auto& [receiver, donor] : thread_.take_grants()) {
        const RequestPlace place = {receiver.batch, receiver.row};
        rows_.add(place, happened.sessions.at(donor.row), waiting_.take(place));
    }
}

SettledInstance InstanceSettling::finish() {
    for (const WaitingRequest& request : thread_.waiting()) {
        const RequestPlace place = {request.place.batch, request.place.row};
        rows_.add(place, "", waiting_.take(place));
    }
    settled_.counters = thread_.counters();
    settled_.row_count = arguments_.total_valid_req_t;
    return std::move(settled_);
}
