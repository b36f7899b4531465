#pragma once

#include "checker/run_place.h"

#include <filesystem>
#include <optional>

// The directories in which runs put copies of their inputs aside, one for each process id.

// Where a run with this process id has its backup; nothing when it is not there or not a directory
// of the calling user's.
std::optional<std::filesystem::path> own_backup_directory(pid_t pid);

// Process id of another live run that works on the same results; nothing when there is none. Of two
// runs that were started at the same moment only one finds the other, so that one goes on.
std::optional<pid_t> find_other_run(pid_t pid, const std::filesystem::path& config_directory);

// Removes the calling user's backups that belong to no live run and are older than a day.
void remove_stale_backups();
