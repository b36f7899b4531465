#include "base/standard_streams.h"
#include "companions/doctor/check_command.h"
#include "companions/doctor/init/init_command.h"
#include "companions/doctor/patterns_command.h"
#include "companions/doctor/rejected/rejected_command.h"

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its options a program cannot go on
int main(int argc, char* argv[]) {
    occupy_standard_streams();
    int exit_status = 0;
    CLI::App program("Says why a scenario gives what it gives, and sets up new ones.",
                     "zvr_al_doctor");
    add_version(program);
    program.require_subcommand(1);
    // One line for each command, in the order in which --help lists them.
    add_init_command(program, exit_status);
    add_check_command(program, exit_status);
    add_rejected_command(program, exit_status);
    add_patterns_command(program, exit_status);
    return run_command_line(program, argc, argv, exit_status);
}
