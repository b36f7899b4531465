#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/layout_choice.h"
#include "companions/doctor/init/scenario_texts.h"
#include "companions/doctor/init/session_cookies.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// What command "init" has found and done.
struct InitReport {
    std::string scenario;
    LayoutChoice layout;
    SessionEvidence evidence = {};
    ScenarioPlan plan = {};                       // with logs only once a layout is found
    std::vector<std::string> written = {};        // paths of files
    std::string command = "";                     // that runs the tool; empty: nothing was written
    std::vector<std::string> later_commands = {}; // that tell of its results
    Findings findings = {};                       // all of them
};

// For people.
void print_report(FILE* stream, const InitReport& report);

// An object, with what findings_as_json gives.
nlohmann::json report_as_json(const InitReport& report);
