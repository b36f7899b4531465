#pragma once

#include <CLI/CLI.hpp>

// Command "patterns": what the tester's patterns do with the unique URLs of the last run. Reads no
// log.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_patterns_command(CLI::App& program, int& exit_status);
