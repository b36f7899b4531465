#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace bench {

using Clock = std::chrono::steady_clock;

// A program to be run as a process of its own. Its standard input is empty and its standard
// output goes to a file.
struct Command {
    std::vector<std::string> words;
    std::vector<std::pair<std::string, std::string>> environment;
    std::filesystem::path output;
};

// A line of standard error and the moment its end arrived.
struct StampedLine {
    Clock::time_point arrival;
    std::string text;
};

struct ProcessResult {
    pid_t pid = 0;
    // As the shell reports it: 128 and the signal's number after a death by signal.
    int exit_status = 0;
    double wall_seconds = 0;
    // User and system time of the process and of the processes it waited for.
    double processor_seconds = 0;
    // Of the largest process among them.
    double peak_bytes = 0;
    std::vector<StampedLine> error_lines;
};

// Runs the command to its end. Throws std::system_error when no process can be started; a
// program that cannot be executed gives the exit status 127.
ProcessResult run_process(const Command& command);

// Whether the program is found on the command path.
bool has_program(const std::string& name);

} // namespace bench
