#pragma once

#include <array>
#include <string>

// The input files of which each run puts copies aside, and the directory that keeps those of the
// last run that has ended well. A copy has the name of its file.

// Beside the configuration directory.
constexpr const char* input_cache_name = ".tmp";

// In the directory of the replay profile.
constexpr const char* settings_name = "replay_settings.dat";
constexpr const char* url_patterns_name = "replay_url_patterns.dat";
constexpr const char* filter_patterns_name = "replay_url_filter_patterns.dat";

// In that of the scenarios; `scenario_name` is without ".conf".
inline std::string scenario_file_name(const std::string& scenario_name) {
    return scenario_name + ".conf";
}

// All four, the scenario first.
inline std::array<std::string, 4> input_names(const std::string& scenario_name) {
    return {scenario_file_name(scenario_name), settings_name, url_patterns_name,
            filter_patterns_name};
}
