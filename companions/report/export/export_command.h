#pragma once

#include <CLI/CLI.hpp>

// Command "export": the load of a scenario for another program.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_export_command(CLI::App& program, int& exit_status);
