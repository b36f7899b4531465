#include "tests/support/test_installation.h"

#include <array>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/wait.h>

namespace fs = std::filesystem;

// The sample installation under examples/, whose expected results were worked out from the logs by
// other means than this program.

namespace {

constexpr const char* scenarios[] = {"shop", "intranet", "news", "desk"};

std::string replaced(std::string text, const std::string& old, const std::string& replacement) {
    for (size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += replacement.size()) {
        text.replace(at, old.size(), replacement);
    }
    return text;
}

class SampleInstallation : public testing::Test {
  protected:
    SampleInstallation() {
        fs::copy(source_path("examples/installation"), installation_.root(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }

    RunResult run(const std::string& scenario, Lines words = {}) const {
        words.insert(words.begin(), {"-s", scenario});
        return installation_.run_words(words);
    }

    std::string result(const std::string& scenario, const std::string& name) const {
        return installation_.read(project_directory + "/ReplayAccessLogs/" + scenario + "/config/" +
                                  name);
    }

    // The empty text for a file that must not be there. Expected files name the installation's
    // place by a placeholder.
    std::string expected(const std::string& path) const {
        return replaced(installation_.read(source_path("examples/" + path)), "@ZV_WDIR@",
                        installation_.root());
    }

    // `original`: the scenario whose results are expected.
    void expect_results(const std::string& scenario, const RunResult& run,
                        const std::string& original) const {
        SCOPED_TRACE(scenario);
        const std::string directory = "expected/" + original + "/";
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.output, expected(directory + "stdout"));
        for (const char* name : {"complete_url.list", "hosts.list", "url.list", "query_url.list"}) {
            EXPECT_EQ(result(scenario, name),
                      replaced(expected(directory + name), "replay_profiles/" + original + "/",
                               "replay_profiles/" + scenario + "/"))
                << name;
        }
    }

    TestInstallation installation_;
};

TEST_F(SampleInstallation, GivesTheExpectedResultsAtEveryThreadCountAndDebugLevel) {
    for (const char* scenario : scenarios) {
        for (const Lines& words : {Lines{"-t", "1"}, {"-t2"}, {"-t4"}, {"-t2", "-d4"}}) {
            expect_results(scenario, run(scenario, words), scenario);
        }
    }
}

TEST_F(SampleInstallation, GivesTheSameResultsAtCacheLevelTwoWithoutTheLogs) {
    for (const char* scenario : scenarios) {
        run(scenario);
    }
    fs::remove_all(installation_.root() / "logs");
    installation_.write_checker(2);
    for (const char* scenario : scenarios) {
        expect_results(scenario, run(scenario), scenario);
    }
}

TEST_F(SampleInstallation, AppliesChangedPatternsAtCacheLevelTwo) {
    run("shop");
    for (const char* name : {"replay_url_patterns.dat", "replay_url_filter_patterns.dat"}) {
        fs::copy(source_path("examples/level2") / name,
                 installation_.root() / project_directory / "replay_profiles/shop",
                 fs::copy_options::overwrite_existing);
    }
    installation_.write_checker(2);
    EXPECT_EQ(run("shop").output, expected("level2/stdout"));
    EXPECT_EQ(result("shop", "url.list"), expected("level2/url.list"));
    EXPECT_EQ(result("shop", "complete_url.list"), expected("expected/shop/complete_url.list"));
}

// Eight: each scenario and a copy of it.
TEST_F(SampleInstallation, GivesTheExpectedResultsInRunsAtTheSameTime) {
    installation_.use_checker();
    installation_.prepare_process([] { raise(SIGSTOP); }); // until all have come so far
    const fs::path profiles = installation_.root() / project_directory / "replay_profiles";
    std::map<pid_t, std::array<std::string, 2>> runs; // scenario and original
    for (const std::string original : scenarios) {
        const std::string copy = original + "_copy";
        installation_.write(scenario_directory + "/" + copy + ".conf",
                            installation_.read(scenario_directory + "/" + original + ".conf"));
        fs::copy(profiles / original, profiles / copy);
        for (const std::string& scenario : {original, copy}) {
            const pid_t run = installation_.start({"-s", scenario});
            waitpid(run, nullptr, WUNTRACED);
            runs[run] = {scenario, original};
        }
    }
    for (const auto& [run, names] : runs) {
        kill(run, SIGCONT);
    }
    for (const auto& [run, names] : runs) {
        expect_results(names[0], installation_.finish(run), names[1]);
    }
}

} // namespace
