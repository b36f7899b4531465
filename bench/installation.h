#pragma once

#include "generator_options.h"

namespace bench {

// Writes an installation tree into options.directory: the scenario "bench" in the workspace
// "admin/default", its replay profile, its log files, and the directories that a run of the tool
// expects to find. Throws std::runtime_error or std::system_error on failure.
void write_installation(const GeneratorOptions& options);

} // namespace bench
