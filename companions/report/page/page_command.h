#pragma once

#include <CLI/CLI.hpp>

// Command "page": the figures of a scenario as a page for a browser.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_page_command(CLI::App& program, int& exit_status);
