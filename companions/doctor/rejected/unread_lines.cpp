#include "companions/doctor/rejected/unread_lines.h"

#include "base/file_descriptor.h"
#include "base/line_reader.h"
#include "base/parallel_tasks.h"
#include "companions/doctor/rejected/log_texts.h"
#include "tools/config/log_files.h"
#include "tools/load/load_phase.h"
#include "tools/parse/log_loader.h"

#include <algorithm>
#include <set>
#include <span>

namespace {

// The pieces of one log, by index.
struct LogPieces {
    size_t begin;
    size_t end;
};

// Why the lines of a log were not read, from the first one on that was not.
struct WhyUnread {
    Rejection line;
    Rejection rest; // characters behind the last line feed
};

// A piece, and why those of its lines are unread that it does not hold yet.
struct UnreadPart {
    ExplainedPiece* piece;
    WhyUnread why;
};

bool reaches_waiting_limit(const ExplainedPiece& piece) {
    return !piece.rejected.empty() && piece.rejected.back().why == Rejection::waiting_limit_reached;
}

bool ends_with_line_feed(const LogPiece& last_piece) {
    char last = '\0';
    const FileDescriptor file = open_log_again(last_piece);
    const auto offset = static_cast<off_t>(last_piece.range.file_size) - 1;
    return pread(file.get(), &last, 1, offset) == 1 && last == '\n';
}

// Whether lines may be left behind those that were read.
bool may_hold_more(std::span<const NotedPiece> log) {
    const LogPiece& last = log.back().piece;
    const InputFileInfo& file = seq_file_path[last.file];
    uint64_t lines = 0;
    bool has_line_pieces = false;
    for (const NotedPiece& piece : log) {
        lines += piece.lines.size();
        has_line_pieces = has_line_pieces || piece.has_line_pieces;
    }
    if (file.num_req != 0) {
        return lines >= file.num_req;
    }
    return has_line_pieces || !ends_with_line_feed(last);
}

WhyUnread why_unread(const LogPiece& piece, bool is_limit_reached) {
    if (is_limit_reached) {
        return {Rejection::behind_waiting_limit, Rejection::behind_waiting_limit};
    }
    const bool has_line_count = seq_file_path[piece.file].num_req != 0;
    return {Rejection::behind_line_count,
            has_line_count ? Rejection::behind_line_count : Rejection::no_line_feed};
}

LogPieces next_log(const std::vector<NotedPiece>& notes, size_t begin) {
    size_t end = begin + 1;
    while (end < notes.size() && !notes[end].piece.begins_file) {
        ++end;
    }
    return {begin, end};
}

void add_parts_of(const LogPieces& log, std::vector<ExplainedPiece>& pieces, const WhyUnread& why,
                  std::vector<UnreadPart>& parts) {
    size_t first = log.end - 1;
    while (first > log.begin && pieces[first].line_count == 0) {
        --first;
    }
    for (size_t i = first; i < log.end; ++i) {
        parts.push_back({&pieces[i], why});
    }
}

std::vector<UnreadPart> find_unread_parts(const std::vector<NotedPiece>& notes,
                                          std::vector<ExplainedPiece>& pieces) {
    std::vector<UnreadPart> parts;
    std::set<int> full_threads;
    for (size_t begin = 0; begin < notes.size();) {
        const LogPieces log = next_log(notes, begin);
        begin = log.end;
        const LogPiece& piece = notes[log.begin].piece;
        if (piece.is_stream || seq_file_path[piece.file].body_flag != 0) {
            continue;
        }
        for (size_t i = log.begin; i < log.end; ++i) {
            if (reaches_waiting_limit(pieces[i])) {
                full_threads.insert(piece.thread);
            }
        }
        const bool is_limit_reached = full_threads.contains(piece.thread);
        if (is_limit_reached ||
            may_hold_more(std::span(notes).subspan(log.begin, log.end - log.begin))) {
            add_parts_of(log, pieces, why_unread(piece, is_limit_reached), parts);
        }
    }
    return parts;
}

void add_lines(const UnreadPart& part) {
    ExplainedPiece& piece = *part.piece;
    const FileDescriptor file = open_log_again(piece.piece);
    LineReader lines(file.get(), log_line_size, piece.piece.range);
    LineText line;
    for (uint32_t number = 0; lines.next(line); ++number) {
        if (number == piece.line_count) {
            const uint64_t offset = lines.offset_of(line) - piece.piece.range.begin;
            piece.rejected.push_back({number,
                                      static_cast<uint32_t>(std::min(offset, uint64_t{UINT32_MAX})),
                                      lines.is_last_rest() ? part.why.rest : part.why.line});
            ++piece.line_count;
        }
    }
}

} // namespace

void add_unread_lines(const std::vector<NotedPiece>& notes, std::vector<ExplainedPiece>& pieces) {
    const std::vector<UnreadPart> parts = find_unread_parts(notes, pieces);
    run_tasks(run_thread_count, parts.size(), [&](size_t i) { add_lines(parts[i]); });
}
