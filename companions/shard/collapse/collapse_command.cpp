#include "companions/shard/collapse/collapse_command.h"

#include "companions/shard/collapse/collapse_rows.h"
#include "companions/shard/stage_options.h"

#include <memory>
#include <string>
#include <vector>

namespace {

struct CollapseOptions {
    StageOptions stage;
    std::vector<std::string> settled;
};

} // namespace

void add_collapse_command(CLI::App& program, int& status) {
    CLI::App& command = add_command(program, "collapse",
                                    "Collapse the requests of a range of sessions to unique URLs");
    const auto options = std::make_shared<CollapseOptions>();
    add_plan_option(command, options->stage);
    add_bare_option(command, options->stage);
    command.add_option("--settled", options->settled, "What settling all instances has put out")
        ->type_name("FILE...")
        ->required();
    command.callback([options, &status] {
        const Plan plan = enter_plan(options->stage);
        const LoadingCuts cuts(read_settled_files(plan, options->settled));
        FrameReader from = standard_input(options->stage, plan);
        FrameWriter to = standard_output(plan);
        collapse_rows(from, cuts, plan.id, to);
        to.end();
        status = 0;
    });
}
