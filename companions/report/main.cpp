#include "base/standard_streams.h"
#include "companions/common/common_options.h"
#include "companions/report/export/export_command.h"
#include "companions/report/load_command.h"
#include "companions/report/page/page_command.h"

#include <csignal>

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its options a program cannot go on
int main(int argc, char* argv[]) {
    occupy_standard_streams();
    std::signal(SIGXFSZ, SIG_IGN); // a file that gets too large is a failed write
    int exit_status = 0;
    CLI::App program("Shows the load that a scenario's logs hold, and takes it to other tools.",
                     "zvr_al_report");
    add_version(program);
    program.require_subcommand(1);
    // One line for each command, in the order in which --help lists them.
    add_load_command(program, exit_status);
    add_page_command(program, exit_status);
    add_export_command(program, exit_status);
    return run_command_line(program, argc, argv, exit_status);
}
