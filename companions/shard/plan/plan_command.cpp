#include "companions/shard/plan/plan_command.h"

#include "companions/shard/plan/apply_plan.h"
#include "companions/shard/plan/make_plan.h"
#include "companions/shard/plan/plan_file.h"
#include "companions/shard/stage_options.h"

#include <memory>
#include <numeric>

namespace {

struct PlanOptions {
    RunOptions run;
    uint64_t piece_count = 0;
    std::string output;
};

} // namespace

void add_plan_command(CLI::App& program, int& status) {
    CLI::App& command = add_command(
        program, "plan", "Read a scenario as a run does and cut its logs into pieces of work");
    const auto options = std::make_shared<PlanOptions>();
    add_run_options_without_threads(command, options->run);
    command
        .add_option("--pieces", options->piece_count,
                    "Pieces of work that are wanted (default: of 256 MB each)")
        ->type_name("N");
    command.add_option("-o,--output", options->output, "Where the plan is written")
        ->type_name("FILE")
        ->required();
    command.callback([options, &status] {
        write_plan(make_plan(options->run, options->piece_count), options->output);
        status = 0;
    });
}

void add_check_command(CLI::App& program, int& status) {
    CLI::App& command =
        add_command(program, "check", "Compare the logs of this host with those of the plan");
    const auto options = std::make_shared<StageOptions>();
    add_plan_option(command, *options);
    command.callback([options, &status] {
        const Plan plan = enter_plan(*options);
        std::vector<size_t> logs(plan.logs.size());
        std::iota(logs.begin(), logs.end(), 0);
        check_logs(plan, logs);
        status = 0;
    });
}
