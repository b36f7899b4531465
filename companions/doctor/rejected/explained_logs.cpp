#include "companions/doctor/rejected/explained_logs.h"

#include "companions/doctor/rejected/unread_lines.h"
#include "tools/load/input_files.h"
#include "tools/load/load_phase.h"
#include "tools/load/noted_pieces.h"
#include "tools/load/request_table.h"
#include "tools/urls/session_order.h"

#include <numeric>
#include <optional>

namespace {

std::vector<NotedPiece> load_with_notes() {
    std::vector<NotedPiece> notes;
    noted_pieces = &notes;
    process_input_file_list2();
    process_url_files();
    noted_pieces = nullptr;
    return notes;
}

// By row of the request table.
std::vector<std::optional<DroppedRequest>> dropped_requests;

void find_dropped_requests() {
    dropped_requests.resize(request_table.rows.size());
    dropped_request_observer = [](uint32_t row, DroppedRequest why) {
        dropped_requests[row] = why;
    };
    select_requests(request_table, order_by_session(request_table));
    dropped_request_observer = nullptr;
}

// The accepted lines are the rows of the request table; `row` is that of the next one.
Rejection explain_line(const LineNote& note, size_t& row) {
    if (note.kind != LineKind::accepted) {
        return rejection_of_line(note.kind);
    }
    const std::optional<DroppedRequest>& dropped = dropped_requests[row++];
    return dropped ? rejection_of_request(*dropped, note.session) : Rejection::none;
}

ExplainedPiece explain_piece(const NotedPiece& noted, size_t& row) {
    ExplainedPiece piece = {.piece = noted.piece};
    for (const LineNote& note : noted.lines) {
        const Rejection why = explain_line(note, row);
        if (why != Rejection::none) {
            piece.rejected.push_back({piece.line_count, note.offset, why});
        }
        ++piece.line_count;
    }
    return piece;
}

std::vector<ExplainedPiece> explain_pieces(const std::vector<NotedPiece>& notes) {
    std::vector<ExplainedPiece> pieces;
    pieces.reserve(notes.size());
    size_t row = 0;
    for (const NotedPiece& noted : notes) {
        pieces.push_back(explain_piece(noted, row));
    }
    return pieces;
}

void count_lines(ExplainedLogs& logs) {
    int64_t lines_before = 0;
    logs.counts.resize(static_cast<size_t>(num_al_files));
    for (ExplainedPiece& piece : logs.pieces) {
        lines_before = piece.piece.begins_file ? 0 : lines_before;
        piece.lines_before = lines_before;
        lines_before += piece.line_count;
        RejectionCounts& counts = logs.counts[static_cast<size_t>(piece.piece.file)];
        counts[static_cast<size_t>(Rejection::none)] += piece.line_count - piece.rejected.size();
        for (const RejectedPlace& place : piece.rejected) {
            ++counts[static_cast<size_t>(place.why)];
        }
    }
}

} // namespace

uint64_t ExplainedLogs::rejected_lines() const {
    uint64_t rejected = 0;
    for (const RejectionCounts& log : counts) {
        rejected = std::accumulate(log.begin() + 1, log.end(), rejected); // all but `none`
    }
    return rejected;
}

ExplainedLogs explain_logs() {
    const std::vector<NotedPiece> notes = load_with_notes();
    find_dropped_requests();
    ExplainedLogs logs = {explain_pieces(notes), {}};
    add_unread_lines(notes, logs.pieces);
    count_lines(logs);
    return logs;
}
