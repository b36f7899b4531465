#pragma once

#include "tests/support/test_installation.h"

#include <nlohmann/json.hpp>

// Runs a command of the doctor on the installation's scenario, with further words.
RunResult run_doctor(const TestInstallation& installation, const std::string& command,
                     Lines words = {}, const Environment& environment = {});

// Runs it with exactly these words.
RunResult run_doctor_words(const TestInstallation& installation, const Lines& words,
                           const Environment& environment = {});

// The findings of "check".
struct CheckRun {
    int status;
    nlohmann::json findings; // an array, errors first

    // Those of a kind.
    nlohmann::json of(const std::string& id) const;
};
CheckRun check(const TestInstallation& installation, const Lines& words = {},
               const Environment& environment = {});
