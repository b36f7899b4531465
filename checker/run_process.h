#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// Runs of the tool as the system's process files show them.

struct RunProcess {
    pid_t pid;
    std::vector<std::string> words;                 // command line, the program's name first
    std::map<std::string, std::string> environment; // as the run was started with
    std::filesystem::path directory;                // working directory
    std::filesystem::path program;                  // leads to the program file that is executed

    // Value of a variable of its environment; null when it is not set.
    const std::string* variable(const std::string& name) const;
};

// The live run of this number; nothing when there is none of the calling user's. A process that has
// ended counts as gone even while its parent has not taken notice of it.
std::optional<RunProcess> find_run(pid_t pid);

// Whether the process started the calling one, itself or through other processes.
bool is_ancestor(pid_t pid);

// No file that was changed after the process had started has an earlier time than this, in
// nanoseconds since the epoch; one that was changed up to two hundredths of a second before may
// have a later one. Nothing when the process is gone.
std::optional<int64_t> earliest_start_time(pid_t pid);
