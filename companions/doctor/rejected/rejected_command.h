#pragma once

#include "companions/common/common_options.h"

// Command "rejected": reads all logs like a run and lists every line that does not count.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_rejected_command(CLI::App& program, int& exit_status);
