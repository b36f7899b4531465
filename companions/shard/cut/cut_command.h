#pragma once

#include "companions/common/common_options.h"

// Adds the command that cuts blocks of rows at range keys. It sets `status`.
void add_cut_command(CLI::App& program, int& status);
