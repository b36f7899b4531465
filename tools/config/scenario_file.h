#pragma once

#include <cstddef>
#include <string>
#include <string_view>

constexpr size_t scenario_line_size = 2048; // of the buffer whose limit lines are held to

// Of the lines that name logs: path, a field that is not read, line budget and type, between
// blanks.
constexpr std::string_view log_file_keyword = "REPLAY_LOG_FILE";

// Reads a scenario file: its REPLAY_LOG_FILE lines into the input file list
// (log_files.h) and its REPLAY_PERIOD lines into the replay period (replay_period.h).
// Fails when the file cannot be opened, a line of these keywords is
// malformed, or more than 1000 log files are named.
void read_scenario_file(const std::string& scenario_file);
