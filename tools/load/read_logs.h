#pragma once

#include <set>
#include <string>
#include <utility>

// The logs as this run has read them. Others may exchange a log between the look that the checker
// takes at it and its reading, and back again; only what was open tells.

// Notes the state of a log that is open to be read. `path`: as the scenario names it. Any worker
// thread may call.
void note_read_log(const char* path, int descriptor);

// Notes a log that was measured by its name, or read elsewhere, with its state as file_state gives
// it.
void note_read_log(const char* path, const std::string& state);

// Paths with states as file_state gives them, one pair for each state in which a log was found. For
// the main thread, after loading.
const std::set<std::pair<std::string, std::string>>& read_logs();
