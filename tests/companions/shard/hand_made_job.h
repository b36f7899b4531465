#pragma once

#include "tests/support/test_installation.h"

#include <string>

// A job by hand: the stages of zvr_al_shard for scenario `web` of an installation, one process
// each.

struct JobShape {
    size_t pieces;
    size_t ranges; // of sessions, at most
};

// Runs all stages. The result is that of the last one, or of the first one that fails.
RunResult run_job(const TestInstallation& installation, const JobShape& shape);

// Runs one command of zvr_al_shard, with files of the installation as standard input, one after the
// other, and output.
RunResult run_stage(const TestInstallation& installation, const std::string& words,
                    const std::string& inputs, const std::string& output);
