#pragma once

#include "companions/common/common_options.h"

// Adds the command that collapses the requests of a range of sessions. It sets `status`.
void add_collapse_command(CLI::App& program, int& status);
