#include "tests/companions/report/report_runs.h"

#include <gtest/gtest.h>

RunResult run_report(const TestInstallation& installation, const std::string& command, Lines words,
                     const Environment& environment) {
    words.insert(words.begin(), {command, "-s", "web"});
    return installation.run_program(ZVR_REPORT_PATH, words, environment);
}

nlohmann::json figures_of(const TestInstallation& installation, const Lines& words,
                          const std::string& scenario, const Environment& environment) {
    Lines all = {"load", "--json", "-s", scenario};
    all.insert(all.end(), words.begin(), words.end());
    const RunResult run = installation.run_program(ZVR_REPORT_PATH, all, environment);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    return nlohmann::json::parse(run.output);
}

long number(const nlohmann::json& value) {
    return value.get<long>();
}
