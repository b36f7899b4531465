#include "tests/companions/doctor/doctor_runs.h"

#include <gtest/gtest.h>

RunResult run_doctor(const TestInstallation& installation, const std::string& command, Lines words,
                     const Environment& environment) {
    words.insert(words.begin(), {command, "-s", "web"});
    return run_doctor_words(installation, words, environment);
}

RunResult run_doctor_words(const TestInstallation& installation, const Lines& words,
                           const Environment& environment) {
    return installation.run_program(ZVR_DOCTOR_PATH, words, environment);
}

nlohmann::json CheckRun::of(const std::string& id) const {
    nlohmann::json found = nlohmann::json::array();
    for (const nlohmann::json& finding : findings) {
        if (finding["id"] == id) {
            found.push_back(finding);
        }
    }
    return found;
}

CheckRun check(const TestInstallation& installation, const Lines& words,
               const Environment& environment) {
    Lines all = words;
    all.push_back("--json");
    const RunResult run = run_doctor(installation, "check", all, environment);
    EXPECT_EQ(run.errors, "");
    const nlohmann::json output = nlohmann::json::parse(run.output);
    EXPECT_EQ(output["exit_status"], run.status);
    return {run.status, output["findings"]};
}
