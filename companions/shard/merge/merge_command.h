#pragma once

#include "companions/common/common_options.h"

// Adds the command that makes the results of a job. It sets `status`.
void add_merge_command(CLI::App& program, int& status);
