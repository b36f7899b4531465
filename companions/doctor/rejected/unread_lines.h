#pragma once

#include "companions/doctor/rejected/explained_logs.h"
#include "tools/load/noted_pieces.h"

#include <vector>

// Adds the lines that a run does not read to the pieces, which hold those that it does, in the
// order of `notes`. Reads only what was not read.
void add_unread_lines(const std::vector<NotedPiece>& notes, std::vector<ExplainedPiece>& pieces);
