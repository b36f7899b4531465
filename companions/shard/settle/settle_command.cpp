#include "companions/shard/settle/settle_command.h"

#include "companions/shard/settle/settle_events.h"
#include "companions/shard/stage_options.h"

#include <memory>

namespace {

struct SettleOptions {
    StageOptions stage;
    std::vector<int32_t> instances;
};

} // namespace

void add_settle_command(CLI::App& program, int& status) {
    CLI::App& command = add_command(
        program, "settle", "Give sessions to requests that wait for one, and end loading in time");
    const auto options = std::make_shared<SettleOptions>();
    add_plan_option(command, options->stage);
    add_bare_option(command, options->stage);
    command
        .add_option("--instance", options->instances,
                    "Numbers of instances, from 0 (default: all of the plan)")
        ->type_name("N...");
    command.callback([options, &status] {
        const Plan plan = enter_plan(options->stage);
        FrameReader from = standard_input(options->stage, plan);
        FrameWriter to = standard_output(plan);
        settle_events(plan, options->instances, from, to);
        to.end();
        status = 0;
    });
}
