#include "tests/support/test_installation.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace fs = std::filesystem;

// The sample installation under examples/, whose expected results were worked out from the logs by
// other means than this program.

namespace {

constexpr const char* project_directory = "workspace/admin/default/quarvel/default/default";
constexpr const char* result_names[] = {"complete_url.list", "hosts.list", "url.list",
                                        "query_url.list"};

class SampleInstallation : public testing::TestWithParam<std::string> {
  protected:
    SampleInstallation() {
        fs::copy(source_path("examples/installation"), installation_.root(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }

    RunResult run(const std::vector<std::string>& further_words) const {
        std::vector<std::string> words = {"-s", GetParam()};
        words.insert(words.end(), further_words.begin(), further_words.end());
        return installation_.run_words(words);
    }

    std::string result_path(const std::string& name) const {
        return std::string(project_directory) + "/ReplayAccessLogs/" + GetParam() + "/config/" +
               name;
    }

    // Expected files name the installation's place by a placeholder.
    std::string expected(const std::string& path) const {
        const std::string placeholder = "@ZV_WDIR@";
        std::string text = read_source_file("examples/" + path);
        for (size_t at; (at = text.find(placeholder)) != std::string::npos;) {
            text.replace(at, placeholder.size(), installation_.root().string());
        }
        return text;
    }

    void expect_results() const {
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
        EXPECT_EQ(run_result.output, expected("expected/" + GetParam() + "/stdout"));
        expect_results();
    }
}

TEST_P(SampleInstallation, DebuggingChangesNoResult) {
    const RunResult run_result = run({"-d", "4", "-t", "2"});
    EXPECT_EQ(run_result.output, expected("expected/" + GetParam() + "/stdout"));
    expect_results();
}

TEST_P(SampleInstallation, CacheLevelOnePrintsTheOldSummary) {
    run({});
    installation_.write_checker(0);
    const RunResult again = run({});
    EXPECT_EQ(again.status, 0);
    const std::string url_list = installation_.read(result_path("url.list"));
    EXPECT_EQ(again.output, url_list.substr(0, url_list.find('\n') + 1));
    expect_results();
}

TEST_P(SampleInstallation, CacheLevelTwoGivesTheSameResultsWithoutTheLogs) {
    run({});
    fs::remove_all(installation_.root() / "logs");
    installation_.write_checker(2);
    const RunResult again = run({});
    EXPECT_EQ(again.output, expected("expected/" + GetParam() + "/stdout"));
    expect_results();
}

INSTANTIATE_TEST_SUITE_P(Scenarios, SampleInstallation,
                         testing::Values("shop", "intranet", "news", "desk"),
                         [](const auto& scenario) { return scenario.param; });

using ChangedPatterns = SampleInstallation;

TEST_P(ChangedPatterns, AreAppliedAtCacheLevelTwo) {
    run({});
    const fs::path profile =
        installation_.root() / project_directory / "replay_profiles" / GetParam();
    for (const char* name : {"replay_url_patterns.dat", "replay_url_filter_patterns.dat"}) {
        fs::copy(source_path("examples/level2") / name, profile,
                 fs::copy_options::overwrite_existing);
    }
    installation_.write_checker(2);
    const RunResult again = run({});
    EXPECT_EQ(again.output, expected("level2/stdout"));
    EXPECT_EQ(installation_.read(result_path("url.list")), expected("level2/url.list"));
    EXPECT_EQ(installation_.read(result_path("complete_url.list")),
              expected("expected/shop/complete_url.list"));
}

INSTANTIATE_TEST_SUITE_P(Scenarios, ChangedPatterns, testing::Values("shop"));
