#pragma once

#include "companions/common/common_options.h"
#include "companions/shard/exchange/frame.h"
#include "companions/shard/plan/plan.h"

#include <string>

// What the commands of the stages have in common.

struct StageOptions {
    std::string plan_path;
    bool has_bare_input = false;
};

// Add the options that fill these; `options` must stay while the command line is read.
void add_plan_option(CLI::App& command, StageOptions& options);
void add_bare_option(CLI::App& command, StageOptions& options);

// Reads the plan and applies it to this process (apply_plan.h).
Plan enter_plan(const StageOptions& options);

// Frames from standard input, and to standard output.
FrameReader standard_input(const StageOptions& options, const Plan& plan);
FrameWriter standard_output(const Plan& plan);
