#pragma once

#include "base/own_directory.h"
#include "cache/reuse.h"
#include "tools/driver/reuse_guard.h"

#include <string>

// What an earlier run has left that this run may use again.

extern char
    g_workspace_user_profile_name[1024]; // first part of the checker's first argument; always empty

// The checker's first argument for a run with this profile, relative name.
std::string checker_argument(const std::string& profile);

// Fails as another run is at work on the same results.
[[noreturn]] void refuse_second_run();

// Runs the checker command with the replay profile and this process's number and returns what it
// says can be used: nothing when it is not found, cannot be run or is ended by a signal. Fails when
// it says that another run is at work, or when the system has no process to run it in.
Reuse check_cache();

// Prints the first line of url.list as it stands there. Returns false when there is none, or when
// it may not be the one that the checker has seen. Fails when the file cannot be opened.
bool print_cached_summary(const OwnDirectory& config_dir, const ReuseGuard& guard);
