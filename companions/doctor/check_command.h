#pragma once

#include "companions/common/common_options.h"
#include "companions/doctor/finding.h"

// Command "check": looks at everything that a run would read, and changes nothing.

// Adds the command to the program; run, it sets `exit_status`, which must stay.
void add_check_command(CLI::App& program, int& exit_status);

// All that is found about the inputs of a scenario. A process can look at one scenario only.
Findings check_scenario_inputs(const RunOptions& options);
