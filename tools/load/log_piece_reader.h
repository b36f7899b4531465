#pragma once

#include "base/file_descriptor.h"
#include "tools/load/log_pieces.h"
#include "tools/parse/log_loader.h"
#include "tools/parse/parsing_thread.h"
#include "tools/parse/request_batch.h"

#include <cstdint>

// A piece of a log through the parser, whatever order the pieces are read in.

// Opens the log that a piece is of, and notes its state (read_logs.h). Fails when it cannot be
// opened, or is another file than the one that was measured.
FileDescriptor open_log(const LogPiece& piece);

// Reads a piece of an open log into an empty batch, up to `max_lines` lines of it. `lines_before`:
// of the file, where they are known; for debug lines and observers only. `after_line`: see
// load_url_info. Fails when the log cannot be read.
void load_piece(ParsingThread& parsing, const LogPiece& piece, const FileDescriptor& file,
                int64_t lines_before, int64_t max_lines, RequestBatch& batch,
                const AfterLine& after_line);

// Reads once more the first `max_lines` lines of a piece of a regular file, of which too many are
// in `batch`, and puts them in its place. Fails also when the session events of these lines are not
// those that were read before: they may have decided already what others got.
void reload_piece(ParsingThread& parsing, const LogPiece& piece, int64_t max_lines,
                  RequestBatch& batch);
