#pragma once

#include "companions/common/common_options.h"

// The inputs of a scenario, opened and read by the functions of a run into the settings and tables
// of the tool's libraries (each in the header of its module). A process reads them once.

// The steps of a run, in its order. Each fails as the run does, with the message of its error line.

// Goes by --work-dir, else by the environment: sets g_wdir. A relative --work-dir is one of the
// working directory.
void enter_work_directory(const RunOptions& options);

// Applies the options that change what a run gives, and finds the zone of the replay period, about
// which standard error is told when the installation names none.
void apply_run_options(const RunOptions& options);

// All steps up to the logs: the two above, the scenario and its profile, settings, patterns, field
// layout, scenario file, and the tables of patterns in the order in which they decide.
void read_installation(const RunOptions& options);
