#pragma once

#include "tools/load/input_files.h"

#include <cstdint>

// Fixes how many lines each file of the input file list is to give (InputFileInfo::num_req), where
// the scenario does not say: as many as it has now. Fails with the first file of the list
// for which that is none, or which is no regular file.
void fix_line_budgets();

// The most requests that the file can give with its line budget and the size that it has now, where
// each takes a character and a line feed, but for the last one; never more than a run can have. 0
// when that cannot be known: the file is missing, or it is no regular file.
uint64_t max_requests_of(const InputFileInfo& file);
