#pragma once

#include <CLI/CLI.hpp>

// Command "load": the figures of a scenario on a terminal.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_load_command(CLI::App& program, int& exit_status);
