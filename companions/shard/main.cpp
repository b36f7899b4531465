#include "base/standard_streams.h"
#include "companions/shard/load/load_command.h"
#include "companions/shard/plan/plan_command.h"

#include <csignal>

int main(int argc, char* argv[]) {
    occupy_standard_streams();
    std::signal(SIGPIPE, SIG_IGN); // a reader that is gone has its error line
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow likewise
    int exit_status = 0;
    CLI::App program("Does the stages of a job that shares out a scenario's logs among machines.",
                     "zvr_al_shard");
    add_version(program);
    program.require_subcommand(1);
    // One line for each command, in the order in which a job needs them.
    add_plan_command(program, exit_status);
    add_check_command(program, exit_status);
    add_load_command(program, exit_status);
    return run_command_line(program, argc, argv, exit_status);
}
