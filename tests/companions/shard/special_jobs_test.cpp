#include "tests/companions/shard/hand_made_job.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

// The tool's results and what a job then makes of the same, each over what an earlier run has left.
void expect_same(const TestInstallation& installation) {
    const auto leave_old_results = [&] {
        for (const char* const name : {"akaau.trace", "query_url.list", "url.list", "note"}) {
            installation.write(config_directory + "/" + name, "old\n");
        }
    };
    leave_old_results();
    const RunResult run = installation.run({});
    ASSERT_EQ(run.status, 0) << run.output;
    const auto results = installation.files_of(config_directory);
    leave_old_results();
    const RunResult job = run_job(installation, {2, 2});
    ASSERT_EQ(job.status, 0) << job.errors;
    EXPECT_EQ(job.output, run.output);
    EXPECT_EQ(installation.files_of(config_directory), results);
}

std::string refusal_of_plan(const TestInstallation& installation) {
    const RunResult run =
        installation.run_program(ZVR_SHARD_PATH, {"plan", "-s", "web", "-o", "plan.json"});
    EXPECT_EQ(run.status, 3);
    return run.errors;
}

} // namespace

TEST(SpecialJobs, TakeAnEarlierRunsResultsAway) {
    const TestInstallation installation;
    installation.write_logs({combined_line({})});
    expect_same(installation);
}

TEST(SpecialJobs, MayHaveNoLogsOrNoneThatAreLoaded) {
    const TestInstallation installation;
    expect_same(installation);
    installation.write_scenario("REPLAY_LOG_FILE logs/none 0 0 POST\n");
    expect_same(installation);
}

TEST(SpecialJobs, ArePlannedOnlyWhereARunWouldBegin) {
    const TestInstallation installation;
    installation.write_logs({combined_line({})});
    installation.add_settings("NUM_THREAD -1\n");
    EXPECT_NE(refusal_of_plan(installation).find("can not be negative"), std::string::npos);
    installation.add_settings("");
    mkfifo((installation.root() / "pipe").c_str(), 0600);
    installation.name_logs({"pipe"}, "5");
    EXPECT_NE(refusal_of_plan(installation).find("no regular file"), std::string::npos);
    installation.write_logs({combined_line({})});
    std::filesystem::remove(installation.root() / profile_directory / "replay_url_patterns.dat");
    EXPECT_NE(refusal_of_plan(installation).find("Failed to run command 'cp"), std::string::npos);
}
