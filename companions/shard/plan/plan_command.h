#pragma once

#include "companions/common/common_options.h"

// Adds the commands that make a plan and that compare the logs of this host with it. They set
// `status`.
void add_plan_command(CLI::App& program, int& status);
void add_check_command(CLI::App& program, int& status);
