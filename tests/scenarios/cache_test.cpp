#include "tests/support/test_installation.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* counter_lines = "#TOTAL_URLS=9\n#REDIRECTED_URLS=1\n#TIME_FILTERED_URLS=2\n"
                                      "#BAD_URLS=3\n#NON_SESSION_URLS=4\n"
                                      "#NON_SESSION_URLS_WITH_SECONDARY_COOKIE=2\n"
                                      "#Method|Host|Count|Query_Offset|Url\n";

class Cache : public testing::Test {
  protected:
    Cache() { installation_.write_logs({combined_line()}); }

    std::string config_path(const std::string& name) const {
        return installation_.path(config_directory) + "//" + name;
    }

    TestInstallation installation_;
};

TEST_F(Cache, AnswersOtherThanTheKnownOnesRunFromTheStart) {
    installation_.write_result("url.list", "an old summary\n");
    installation_.prepare_process([] { std::signal(SIGCHLD, SIG_IGN); });
    for (const char* script : {"exit 1", "exit 3", "exit 254", "kill -9 $$",
                               "kill -PIPE $$; exit 255", "kill -XFSZ $$; exit 255"}) {
        SCOPED_TRACE(script);
        installation_.write_checker_script(script);
        const RunResult run = installation_.run();
        EXPECT_EQ(run.output, summary_line({.total = 1, .url_patterns = 1}));
        EXPECT_EQ(run.status, 0);
    }
    installation_.write_checker(0);
    fs::permissions(installation_.root() / "bin/zvr_al_gen_url_list_check", fs::perms::owner_read);
    EXPECT_EQ(installation_.run().output, summary_line({.total = 1, .url_patterns = 1}));
    installation_.write_checker(255);
    const RunResult second = installation_.run();
    expect_failure(second,
                   "Url list processing Tool is already running, first close that and run again");
    EXPECT_TRUE(second.left_backup_directory);
}

TEST_F(Cache, ShowsTheCheckerTheInputsOfThisRun) {
    const std::string name = "a b;$(x)`*'\"&"; // nothing but a name, whatever a shell makes of it
    const fs::path project = installation_.root() / project_directory;
    const std::string cache = project_directory + "/ReplayAccessLogs/" + name + "/.tmp";
    installation_.write_patterns("#patterns\n");
    fs::copy(project / "scenarios/web.conf", project / ("scenarios/" + name + ".conf"));
    fs::copy(project / "replay_profiles/web", project / "replay_profiles" / name);
    fs::create_directories(installation_.path(cache));
    installation_.write_checker_script("echo noise; echo noise >&2\n"
                                       "printf '%s\\n' \"$@\" > arguments\n"
                                       "/bin/cp -r /tmp/zvr_al_gen_url_list.backup.$2 seen\n"
                                       "exit 1\n");
    const RunResult run = installation_.run_words({"-s", name});
    EXPECT_EQ(run.output, summary_line({.total = 1, .url_patterns = 1}));
    EXPECT_EQ(run.errors, "");
    EXPECT_FALSE(run.left_backup_directory);
    const std::string process = run.backup_directory.substr(run.backup_directory.rfind('.') + 1);
    EXPECT_EQ(installation_.read("arguments"),
              "/default/default/" + name + ".conf\n" + process + "\n");

    const std::map<std::string, std::string> inputs = {
        {name + ".conf", installation_.read(scenario_directory + "/web.conf")},
        {"replay_settings.dat", installation_.read(profile_directory + "/replay_settings.dat")},
        {"replay_url_patterns.dat", "#patterns\n"},
        {"replay_url_filter_patterns.dat", ""}};
    EXPECT_EQ(installation_.files_of("seen"), inputs);
    EXPECT_EQ(installation_.files_of(cache), inputs);
}

TEST_F(Cache, LevelOnePrintsTheOldFirstLineAndTouchesNothing) {
    installation_.write_checker(0);
    expect_failure(installation_.run(), "Failed to open url.list file");
    installation_.write_result("url.list", "");
    EXPECT_EQ(installation_.run().output, summary_line({.total = 1, .url_patterns = 1}));
    installation_.write_result("url.list", "Total=7;TotalUrlPattern=3   \nthe rest\n");
    const auto results = installation_.files_of(config_directory);
    const RunResult run = installation_.run({"-d", "2"});
    EXPECT_EQ(run.output, "Total=7;TotalUrlPattern=3   \n");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.left_backup_directory);
    EXPECT_EQ(installation_.files_of(config_directory), results);
    EXPECT_EQ(installation_.debug_lines().back(), "main|Output will be given from cache.");
}

TEST_F(Cache, LevelTwoReadsTheOldListInsteadOfTheLogs) {
    const std::string method(17, 'M');
    installation_.write_result("complete_url.list",
                               counter_lines + std::string("GET|h2|2|-1|/a|b||c\n\n") + method +
                                   "|NA|0x10|45|/d?*\nget|h1|3|0|/e|\n");
    installation_.write_result("query_url.list", "old queries\n");
    installation_.write_result("akaau.trace", "old trace\n");
    installation_.write_scenario("REPLAY_LOG_FILE logs/nosuch x 0 HTTP\n");
    installation_.write_checker(2);
    const RunResult run = installation_.run({"-a"});
    EXPECT_EQ(run.output, "Total=9;Redirected=1;TimeBasedFiltered=2;BadRequest=3;"
                          "NonSessionRequest=4;NonSessionRequestWithSecondaryCookie=2;"
                          "InlineFilteredRequest=0;TotalUrlPattern=3\n");
    EXPECT_EQ(installation_.url_rows(),
              (Lines{"NO|MAIN|GET|/a&#124;b&#124;&#124;c|2|NA|h2|-1|NA|NA",
                     "NO|MAIN|" + method.substr(1) + "|/d?*|16|NA|NA|45|NA|NA",
                     "NO|MAIN|get|/e&#124;|3|NA|h1|0|NA|NA"}));
    EXPECT_EQ(installation_.result("hosts.list"), "NA\nh1\nh2\n");
    EXPECT_EQ(installation_.result("query_url.list"), "old queries\n");
    EXPECT_EQ(installation_.result("akaau.trace"), "old trace\n");
    EXPECT_FALSE(run.left_backup_directory);
}

TEST_F(Cache, LevelTwoRefusesADamagedList) {
    installation_.write_checker(2);
    expect_failure(installation_.run(),
                   "Failed to open cache file " + config_path("complete_url.list"));
    installation_.write_result("complete_url.list", "");
    expect_failure(installation_.run(),
                   "Failed to count number of lines from file " + config_path("complete_url.list"));
    for (const char* row : {"GET|h|1\n", "GET|h|1|-1\n", "GET|||-1|/a\n", "nothing\n"}) {
        installation_.write_result("complete_url.list", counter_lines + std::string(row));
        const RunResult run = installation_.run();
        expect_failure(run, "Invalid line in complete_url.list, remove cache, and try again");
        EXPECT_FALSE(installation_.has_result("url.list"));
    }
}

} // namespace
