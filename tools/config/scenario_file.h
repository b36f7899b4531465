#pragma once

#include <string>

// Reads a scenario file: its REPLAY_LOG_FILE lines into the input file list
// (log_files.h) and its REPLAY_PERIOD lines into the replay period (replay_period.h).
// Fails when the file cannot be opened, a line of these keywords is
// malformed, or more than 1000 log files are named.
void read_scenario_file(const std::string& scenario_file);
