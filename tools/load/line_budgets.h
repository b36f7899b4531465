#pragma once

#include "tools/load/measured_log.h"

#include <cstdint>
#include <vector>

// How much of a file of the input file list is to be read.
struct LogExtent {
    FileIdentity identity; // of what was measured
    bool is_regular;
    uint64_t size; // bytes now; 0 for a file that is not regular or not there
    uint64_t end;  // nothing from here on is read: the size, but unshown_size where it is 0
};

// Whether what becomes of each line is told, in the debug log or to an observer. Logs are then read
// in the order of their lines, after these were counted.
bool lines_are_told();

// Fixes how many lines each file of the input file list is to give (InputFileInfo::num_req): as
// many as the scenario says. Files of which it says nothing give all the lines that they have now;
// they are counted only where lines are told. Returns the extent of each file. Fails with the first
// file of the list that would have to be counted and has no line, or is no regular file.
std::vector<LogExtent> fix_line_budgets();
