#pragma once

#include "bench/generator/generator_options.h"

// Writes an installation tree into options.directory: the scenario "bench" in the workspace
// "admin/default", its replay profile, its log files, and the directories that a run of the tool
// expects to find. Throws std::exception for options that contradict each other and on failure.
void write_installation(const GeneratorOptions& options);
