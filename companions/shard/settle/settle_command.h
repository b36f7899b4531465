#pragma once

#include "companions/common/common_options.h"

// Adds the command that gives sessions to the requests that wait for one. It sets `status`.
void add_settle_command(CLI::App& program, int& status);
