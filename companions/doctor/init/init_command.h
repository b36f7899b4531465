#pragma once

#include "companions/common/common_options.h"

// Command "init": writes a scenario that works for the logs that it is given.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_init_command(CLI::App& program, int& exit_status);
