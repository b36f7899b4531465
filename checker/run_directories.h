#pragma once

#include "base/own_directory.h"
#include "checker/run_place.h"

// The directories of a run.
struct RunDirectories {
    OwnDirectory config;      // not open when it is not there or another user's
    OwnDirectory input_cache; // likewise
    FileDescriptor backup;
};

// Makes and opens the first two of them.
void make_directories(const RunPlace& place, RunDirectories& directories);

// Takes out of the input cache directory what describes the last results: a run that fails halfway
// must leave nothing that calls its leavings results.
void forget_last_run(const RunPlace& place, const OwnDirectory& input_cache);
