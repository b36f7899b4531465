#include "base/standard_streams.h"
#include "companions/shard/collapse/collapse_command.h"
#include "companions/shard/cut/cut_command.h"
#include "companions/shard/load/load_command.h"
#include "companions/shard/merge/merge_command.h"
#include "companions/shard/plan/plan_command.h"
#include "companions/shard/settle/settle_command.h"
#include "tools/driver/process_signals.h"

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its options a program cannot go on
int main(int argc, char* argv[]) {
    occupy_standard_streams();
    take_over_signals();
    int exit_status = 0;
    CLI::App program("Does the stages of a job that shares out a scenario's logs among machines.",
                     "zvr_al_shard");
    add_version(program);
    program.require_subcommand(1);
    // One line for each command, in the order in which a job needs them.
    add_plan_command(program, exit_status);
    add_check_command(program, exit_status);
    add_load_command(program, exit_status);
    add_settle_command(program, exit_status);
    add_cut_command(program, exit_status);
    add_collapse_command(program, exit_status);
    add_merge_command(program, exit_status);
    return run_command_line(program, argc, argv, exit_status);
}
