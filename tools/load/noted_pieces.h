#pragma once

#include "tools/load/log_pieces.h"
#include "tools/parse/line_outcome.h"

#include <vector>

// What became of every line of the logs, for a program that explains it. The accepted lines, in
// this order, are the rows of the request table in theirs.

// A piece with its lines up to the last one that was read; none when the piece was not.
struct NotedPiece {
    LogPiece piece;
    std::vector<LineNote> lines;
    bool has_line_pieces; // a line was longer than the limit and came in pieces
};

// Where process_url_files leaves the pieces of all logs, in load order. Null, as in the tool: no
// notes are taken. Set by a program before process_url_files.
extern std::vector<NotedPiece>* noted_pieces;
