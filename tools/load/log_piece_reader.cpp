#include "tools/load/log_piece_reader.h"

#include "base/failure.h"
#include "base/regular_file.h"
#include "tools/config/log_files.h"
#include "tools/load/measured_log.h"
#include "tools/load/noted_pieces.h"
#include "tools/load/read_logs.h"
#include "tools/load/tallied_lines.h"
#include "tools/parse/field_splitter.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

bool are_same(const SessionEvent& a, const SessionEvent& b) {
    return a.row == b.row && a.line_num == b.line_num && a.waits == b.waits &&
           std::strcmp(a.akaau_id, b.akaau_id) == 0 &&
           std::strcmp(a.jsession_id, b.jsession_id) == 0;
}

void require_unchanged(const LogPiece& piece, const std::deque<SessionEvent>& first,
                       const std::deque<SessionEvent>& second) {
    if (!std::equal(first.begin(), first.end(), second.begin(), second.end(), are_same)) {
        fail_as_changed(seq_file_path[piece.file].input_file);
    }
}

// A terminal that somebody puts in the place of a log must not become that of this process: who
// holds its other end could interrupt the run.
FileDescriptor open_stream(const char* name) {
    return FileDescriptor(open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY));
}

// Whether the log showed no size when it was measured.
bool had_no_size(const LogPiece& piece) {
    return piece.range.file_size == unshown_size;
}

FileRange range_to_read(const LogPiece& piece, const FileDescriptor& file) {
    if (!had_no_size(piece)) {
        return piece.range;
    }
    const uint64_t end = end_of_measured(file.get(), 0);
    return {piece.range.begin, end, end};
}

// What shows no size shows no change of it either, so that later runs must not go by its state.
void note_unshown(const LogPiece& piece, const FileDescriptor& file, const RequestBatch& batch) {
    struct stat status;
    if (batch.line_count > 0 && fstat(file.get(), &status) == 0 && status.st_size == 0) {
        note_read_log(seq_file_path[piece.file].input_file, "shows no size");
    }
}

} // namespace

FileDescriptor open_log(const LogPiece& piece) {
    const char* const name = seq_file_path[piece.file].input_file;
    FileDescriptor file = piece.is_stream ? open_stream(name) : open_regular_file(name);
    if (!file.is_open()) {
        fail("Unable to open url file %s", name);
    }
    take_measured_log(name, file, piece.identity);
    return file;
}

void load_piece(ParsingThread& parsing, const LogPiece& piece, const FileDescriptor& file,
                int64_t lines_before, int64_t max_lines, RequestBatch& batch,
                const AfterLine& after_line) {
    const FileRange range = range_to_read(piece, file);
    LineReader lines = piece.is_stream ? LineReader(file.get(), log_line_size, field_quote)
                                       : LineReader(file.get(), log_line_size, range, field_quote);
    constexpr uint64_t usual_line = 200; // bytes, rather too few than too many
    batch.rows.reserve(std::min(piece.range.end - piece.range.begin, log_piece_size) / usual_line);
    const InputFileInfo& input = seq_file_path[piece.file];
    const LogPart part = {.file_name = input.input_file,
                          .lines_before = lines_before,
                          .max_lines = max_lines,
                          .ends_with_rest = input.num_req != 0,
                          .takes_notes = noted_pieces != nullptr,
                          .takes_tally = line_tally != nullptr,
                          .begin = piece.range.begin};
    load_url_info(parsing, lines, part, batch, after_line);
    if (batch.rows.empty()) {
        // A log that lost what it was measured by may have very many such pieces, and an empty list
        // in braces would leave the room reserved.
        batch.rows = RequestRows();
    }
    if (piece.is_stream) {
        return;
    }
    if (had_no_size(piece) && batch.line_count < max_lines) {
        refuse_more_than_unshown(input.input_file, file.get());
    }
    note_unshown(piece, file, batch);
}

void reload_piece(ParsingThread& parsing, const LogPiece& piece, int64_t max_lines,
                  RequestBatch& batch) {
    std::erase_if(batch.events,
                  [&](const SessionEvent& event) { return event.line_num > max_lines; });
    RequestBatch again;
    load_piece(parsing, piece, open_log(piece), 0, max_lines, again, {});
    require_unchanged(piece, batch.events, again.events);
    batch = std::move(again);
}
