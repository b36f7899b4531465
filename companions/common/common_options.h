#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

// What the companions' command lines have in common.

// Which scenario is meant, and the options of a run that change what the run gives.
struct RunOptions {
    std::string scenario;       // as option `scenario` of the tool takes it
    std::string replay_profile; // likewise; empty: that of the scenario
    int num_thread = 0;         // 0: by the processors
    int dump_query_url = 1;
    std::string work_dir; // of the installation; empty: ZV_WDIR says it
};

// Exit status of a companion that was used wrongly or that cannot do its work.
constexpr int failure_status = 3;

// Adds a command with its help and version to a program, or to a command. It stays the program's.
CLI::App& add_command(CLI::App& program, const std::string& name, const std::string& description);

// Adds option --version.
void add_version(CLI::App& command);

// Add options that fill these: all; all but the number of threads; the work directory alone.
// `options` must stay while the command line is read.
void add_run_options(CLI::App& command, RunOptions& options);
void add_run_options_without_threads(CLI::App& command, RunOptions& options);
void add_work_dir_option(CLI::App& command, RunOptions& options);

// What checks the value of an option that is a count.
CLI::Validator count_up_to(uint64_t greatest);

// Adds option --json.
void add_json_option(CLI::App& command, bool& is_json);

// Reads the command line, which runs the command that it names. Returns the exit status: 0 where
// only help was asked for; `status`, which the command has set; or failure_status with a line on
// standard error, where the command line is wrong, the command throws a Failure or an exception, or
// standard output does not take all that is written.
int run_command_line(CLI::App& program, int argc, char* argv[], const int& status);
