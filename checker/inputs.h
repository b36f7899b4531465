#pragma once

#include "base/file_descriptor.h"
#include "cache/manifest.h"
#include "checker/run_place.h"

#include <string>

// What goes into a run: its four input files, the logs that the scenario names, options and time
// zones.

// What the inputs say about which results there must be.
struct ExpectedResults {
    bool query_list = false;         // query_url.list
    bool trace = false;              // akaau.trace
    bool non_session_counts = false; // requests without a session count like others
};

struct Inputs {
    Manifest manifest; // without results
    ExpectedResults results;
    std::string doubt; // why the manifest may not describe what the run reads; empty when it does
};

// Describes a run's inputs from their copies in its backup directory.
Inputs read_inputs(const RunProcess& run, const RunPlace& place, const FileDescriptor& backup);
