#pragma once

#include "companions/common/common_options.h"

// Adds the command that loads pieces of work. It sets `status`.
void add_load_command(CLI::App& program, int& status);
