#pragma once

#include "checker/run_process.h"

#include <filesystem>
#include <optional>
#include <string>

// What a run's command line and environment say about where it works and how.
struct RunPlace {
    std::filesystem::path work_dir; // ZV_WDIR
    std::string scenario;           // name without ".conf"
    std::filesystem::path scenario_file;
    std::string replay_profile;               // relative name
    std::filesystem::path replay_profile_dir; // as the tool composes it
    std::filesystem::path config_path; // of the results, as the tool composes it; ends with "/"
    std::filesystem::path config_directory; // the same without symbolic links, to compare
    int num_thread = 0;                     // option `num_thread`
    bool dump_query_url = true;             // option `dump_query_url`
    bool akaau_trace = false;               // option `akaau_trace`
};

// Resolves the options of a run by the tool's rules. Nothing when the tool would not accept them.
std::optional<RunPlace> locate_run(const RunProcess& run);
