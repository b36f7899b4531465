#pragma once

#include "companions/doctor/init/log_layout.h"
#include "companions/doctor/init/session_cookies.h"

#include <string>
#include <vector>

// What a new scenario is made of.
struct ScenarioPlan {
    std::string name;               // of the scenario
    LogLayout layout;               // that the settings are to say
    std::string layout_reason = ""; // why, in a sentence
    SessionChoice session = {};
    std::string session_reason = ""; // likewise
    std::vector<std::string> logs = {};
    std::string first_time = ""; // of the logs, as they have it; empty: not known
    std::string last_time = "";
    std::string zone = "+0000"; // of the logs
};

// The contents of its files. All texts that come from logs are made fit to be shown.
std::string scenario_text(const ScenarioPlan& plan);
std::string settings_text(const ScenarioPlan& plan);
std::string url_patterns_text();
std::string filter_patterns_text();
std::string zone_file_text(const ScenarioPlan& plan); // sys/replay_settings.default
