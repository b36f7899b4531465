#include "companions/shard/load/load_command.h"

#include "companions/shard/load/load_pieces.h"
#include "companions/shard/stage_options.h"

#include <memory>

namespace {

struct LoadOptions {
    StageOptions stage;
    std::vector<uint32_t> pieces;
};

} // namespace

void add_load_command(CLI::App& program, int& status) {
    CLI::App& command = add_command(program, "load", "Load pieces of work from their logs");
    const auto options = std::make_shared<LoadOptions>();
    add_plan_option(command, options->stage);
    command.add_option("pieces", options->pieces, "Their numbers in the plan, from 0")
        ->type_name("PIECE")
        ->required();
    command.callback([options, &status] {
        const Plan plan = enter_plan(options->stage);
        FrameWriter frames = standard_output(plan);
        load_pieces(plan, options->pieces, frames);
        frames.end();
        status = 0;
    });
}
