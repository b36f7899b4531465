#pragma once

#include "checker/run_process.h"

#include <string>

// Leaves a record of the calling process, which is no run of the tool but makes the results that
// one would: later runs may then use them again.

// Does what answer_run does for a run that must read its logs: makes its configuration and its
// input cache directory, takes out of that what describes the last results, and leaves a manifest
// in the calling process's backup of its inputs, which InputBackup has made and seals at the end.
//
// `run` is the calling process (`pid`) as the run that it stands for: command line, environment,
// working directory, which must be the process's own, and program file of that run. Sets the
// settings (tools/config/replay_settings.h) as the command line and the copies of the inputs say.
// One thread at a time may call it.
//
// Returns why there is no manifest, so that the results will not be used again; empty when there is
// one.
std::string record_own_run(const RunProcess& run);
