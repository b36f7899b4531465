#pragma once

#include "tests/support/test_installation.h"

#include <nlohmann/json.hpp>

// Runs a command of the report on the installation's scenario, with further words.
RunResult run_report(const TestInstallation& installation, const std::string& command,
                     Lines words = {}, const Environment& environment = {});

// The figures that "load --json" gives of a scenario; expects that there is no error.
nlohmann::json figures_of(const TestInstallation& installation, const Lines& words = {},
                          const std::string& scenario = "web", const Environment& environment = {});

// A number of the figures as tests compare it.
long number(const nlohmann::json& value);
