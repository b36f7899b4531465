#include "tests/support/test_installation.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

class Paths : public testing::Test {
  protected:
    Paths() { installation_.write_logs({combined_line()}); }

    std::string path(const std::string& name) const { return installation_.path(name); }

    RunResult run_scenario(const std::string& name) const {
        return installation_.run_words({"-s", name});
    }

    TestInstallation installation_;
};

TEST_F(Paths, TakesAScenarioWithWorkspaceProfileAndProject) {
    fs::create_directories(path("workspace/w1/p1/quarvel/proj"));
    fs::rename(path(project_directory), path("workspace/w1/p1/quarvel/proj/sub"));
    for (const char* name :
         {"w1/p1/proj/sub/web", "/w1//p1/proj/sub/web.conf", "w1/p1/proj/sub/web.config/more"}) {
        fs::remove_all(path("workspace/w1/p1/quarvel/proj/sub/ReplayAccessLogs/web/config"));
        EXPECT_EQ(run_scenario(name).output, summary_line({.total = 1, .url_patterns = 1}));
        EXPECT_TRUE(installation_.exists(
            "workspace/w1/p1/quarvel/proj/sub/ReplayAccessLogs/web/config/url.list"));
    }
}

TEST_F(Paths, RefusesAScenarioWithFewerThanFiveParts) {
    for (const char* name : {"a/b/c", "a//b/c/d", "/web", "a/b/c/d/"}) {
        expect_failure(run_scenario(name), "Invalid format of Scenario name");
    }
}

TEST_F(Paths, NamesTheFileThatIsMissing) {
    const std::string profile = path(profile_directory);
    fs::remove(profile + "/replay_url_patterns.dat");
    const RunResult run = run_scenario("web");
    expect_failure(run, "Failed to run command 'cp " + profile + "/replay_settings.dat " + profile +
                            "/replay_url_patterns.dat " + profile +
                            "/replay_url_filter_patterns.dat " + run.backup_directory + "'");
    EXPECT_TRUE(run.left_backup_directory);
    expect_failure(run_scenario("nosuch"),
                   "Scenario file " + path(scenario_directory) + "/nosuch.conf does not exist.");
    fs::remove(profile + "/replay_settings.dat");
    expect_failure(run_scenario("web"), "'replay_settings.dat' file not found in replay profile "
                                        "'default/default/web'");
    fs::remove_all(profile);
    expect_failure(run_scenario("web"),
                   "Replay profile not found for scenario - 'default/default/web' at '" + profile +
                       "'");
}

TEST_F(Paths, MakesWritableDirectoriesAndPrivateFilesUnderAStrictMask) {
    const std::string logs = project_directory + "/ReplayAccessLogs";
    fs::remove_all(path(logs));
    installation_.prepare_process([] { umask(077); });
    const RunResult run = installation_.run();
    EXPECT_EQ(run.output, summary_line({.total = 1, .url_patterns = 1}) +
                              RunResult::error_line("Failed to copy to cache"));
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(run.left_backup_directory);
    for (const std::string& directory : {logs, logs + "/web", logs + "/web/config"}) {
        EXPECT_EQ(fs::status(path(directory)).permissions(), fs::perms::all) << directory;
    }
    EXPECT_EQ(fs::status(path(logs + "/web/config/url.list")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

} // namespace
