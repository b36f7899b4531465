#pragma once

#include "base/file_descriptor.h"

#include <filesystem>
#include <optional>
#include <sys/types.h>

// The directories in which runs put copies of their inputs aside (cache/backup_names.h).

// Opens the backup directory of a run with this process id; not open when it is not there or not a
// directory of the calling user's for that user alone.
FileDescriptor open_own_backup(pid_t pid);

// Asks the run that holds this backup to refuse to work beside another one (see exclusion_name).
// Returns false when it cannot.
bool ask_for_exclusion(const FileDescriptor& backup);

// Process id of another live run of the calling user that works on the same results; nothing when
// there is none. Of two runs that were started at the same moment only one finds the other, so that
// one goes on.
std::optional<pid_t> find_other_run(pid_t pid, const std::filesystem::path& config_directory);

// Removes the backup directory of this process id, which is open.
void remove_backup(pid_t pid, const FileDescriptor& directory);

// Removes the calling user's backups that no run holds any more, also those that runs in other
// containers have left, where their process ids mean something else.
void remove_left_backups();
