#include "tests/support/test_installation.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace fs = std::filesystem;

// The sample installation under examples/, whose expected results were worked out from the logs by
// other means than this program.

namespace {

constexpr const char* result_names[] = {"complete_url.list", "hosts.list", "url.list",
                                        "query_url.list"};

class SampleInstallation : public testing::TestWithParam<std::string> {
  protected:
    SampleInstallation() {
        fs::copy(source_path("examples/installation"), installation_.root(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }

    RunResult run(Lines words = {}) const {
        words.insert(words.begin(), {"-s", GetParam()});
        return installation_.run_words(words);
    }

    std::string result_path(const std::string& name) const {
        return project_directory + "/ReplayAccessLogs/" + GetParam() + "/config/" + name;
    }

    // Expected files name the installation's place by a placeholder.
    std::string expected(const std::string& path) const {
        const std::string placeholder = "@ZV_WDIR@";
        std::string text = installation_.read(source_path("examples/" + path));
        for (size_t at; (at = text.find(placeholder)) != std::string::npos;) {
            text.replace(at, placeholder.size(), installation_.root().string());
        }
        return text;
    }

    void expect_results(const RunResult& run) const {
        EXPECT_EQ(run.output, expected("expected/" + GetParam() + "/stdout"));
        const std::string directory = "expected/" + GetParam() + "/";
        for (const std::string name : result_names) {
            const bool is_expected = fs::exists(source_path("examples/" + directory + name));
            ASSERT_EQ(installation_.exists(result_path(name)), is_expected) << name;
            if (is_expected) {
                EXPECT_EQ(installation_.read(result_path(name)), expected(directory + name))
                    << name;
            }
        }
    }

    TestInstallation installation_;
};

} // namespace

TEST_P(SampleInstallation, GivesTheExpectedResultsAtEveryThreadCount) {
    for (const char* thread_count : {"1", "2", "4"}) {
        const RunResult run_result = run({"-t", thread_count});
        EXPECT_EQ(run_result.status, 0);
        expect_results(run_result);
    }
}

TEST_P(SampleInstallation, DebuggingChangesNoResult) {
    expect_results(run({"-d", "4", "-t", "2"}));
}

TEST_P(SampleInstallation, CacheLevelOnePrintsTheOldSummary) {
    const RunResult first = run();
    installation_.write_checker(0);
    const RunResult again = run();
    EXPECT_EQ(again.status, 0);
    const std::string url_list = installation_.read(result_path("url.list"));
    EXPECT_EQ(again.output, url_list.substr(0, url_list.find('\n') + 1));
    expect_results(first);
}

TEST_P(SampleInstallation, CacheLevelTwoGivesTheSameResultsWithoutTheLogs) {
    run();
    fs::remove_all(installation_.root() / "logs");
    installation_.write_checker(2);
    expect_results(run());
}

INSTANTIATE_TEST_SUITE_P(Scenarios, SampleInstallation,
                         testing::Values("shop", "intranet", "news", "desk"),
                         [](const auto& scenario) { return scenario.param; });

using ChangedPatterns = SampleInstallation;

TEST_P(ChangedPatterns, AreAppliedAtCacheLevelTwo) {
    run();
    const fs::path profile =
        installation_.root() / project_directory / "replay_profiles" / GetParam();
    for (const char* name : {"replay_url_patterns.dat", "replay_url_filter_patterns.dat"}) {
        fs::copy(source_path("examples/level2") / name, profile,
                 fs::copy_options::overwrite_existing);
    }
    installation_.write_checker(2);
    const RunResult again = run();
    EXPECT_EQ(again.output, expected("level2/stdout"));
    EXPECT_EQ(installation_.read(result_path("url.list")), expected("level2/url.list"));
    EXPECT_EQ(installation_.read(result_path("complete_url.list")),
              expected("expected/shop/complete_url.list"));
}

INSTANTIATE_TEST_SUITE_P(Scenarios, ChangedPatterns, testing::Values("shop"));
