#pragma once

#include "base/own_directory.h"

// The mark that a run sets on its configuration directory while it replaces the results: a lock,
// which ends with the run and which every process of the machine meets, also in another container
// or of another user, where process ids tell nothing. Where the file system has no locks there is
// no mark.

// Sets the mark of the calling process, which lasts as long as the result is open.
FileDescriptor mark_work(const OwnDirectory& config_dir);

// Whether any process has set it.
bool is_work_marked(const OwnDirectory& config_dir);

// Whether there is another mark beside the calling process's, on the same directory. Of two runs
// that first set theirs and then ask, at least one finds the other.
bool is_marked_by_others(const FileDescriptor& mark);
