#include "companions/shard/stage_options.h"

#include "companions/shard/plan/apply_plan.h"
#include "companions/shard/plan/plan_file.h"

#include <unistd.h>

void add_plan_option(CLI::App& command, StageOptions& options) {
    command.add_option("--plan", options.plan_path, "The plan of the job")
        ->type_name("FILE")
        ->required();
}

void add_bare_option(CLI::App& command, StageOptions& options) {
    command.add_flag("--bare", options.has_bare_input,
                     "Standard input was regrouped: it has no end frames");
}

Plan enter_plan(const StageOptions& options) {
    Plan plan = read_plan(options.plan_path);
    apply_plan(plan);
    return plan;
}

// Without logs no stage has anything to be read.
FrameReader standard_input(const StageOptions& options, const Plan& plan) {
    const bool is_bare = options.has_bare_input || plan.pieces.empty();
    return {STDIN_FILENO, plan.id, is_bare ? StreamEnd::bare : StreamEnd::marked};
}

FrameWriter standard_output(const Plan& plan) {
    return {STDOUT_FILENO, plan.id};
}
