#include "tests/companions/shard/hand_made_job.h"
#include "tests/companions/shard/random_scenario.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace {

std::string instances_of(const TestInstallation& installation) {
    std::set<std::string> directories;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(installation.root() / "logs")) {
        if (entry.is_regular_file()) {
            directories.insert(entry.path().parent_path());
        }
    }
    return std::to_string(directories.size());
}

class RandomJobs : public testing::TestWithParam<uint32_t> {};

// Two hundred scenarios, each with three plans.
constexpr uint32_t scenarios_a_test = 10;

TEST_P(RandomJobs, GiveWhatTheToolGivesWithAThreadForEachInstance) {
    for (uint32_t i = 0; i < scenarios_a_test; ++i) {
        const uint32_t seed = GetParam() * scenarios_a_test + i;
        SCOPED_TRACE("seed " + std::to_string(seed));
        Choices choices(seed);
        const TestInstallation installation;
        write_random_scenario(choices, installation);
        const RunResult run = installation.run({"-t", instances_of(installation)});
        const auto results = installation.files_of(config_directory);
        for (const JobShape shape : {JobShape{1, 1}, JobShape{4, 3}, JobShape{29, 8}}) {
            std::filesystem::remove_all(installation.root() / config_directory);
            const RunResult job = run_job(installation, shape);
            ASSERT_EQ(job.status == 0, run.status == 0) << job.errors << run.output;
            if (run.status == 0) {
                ASSERT_EQ(job.output, run.output) << shape.pieces << " pieces";
                ASSERT_EQ(installation.files_of(config_directory), results)
                    << shape.pieces << " pieces";
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomJobs, testing::Range(0U, 20U));

} // namespace
