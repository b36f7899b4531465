#include "tests/support/test_installation.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr const char* log_path = "webapps/zivrano/logs/zivrano_replay_debug.log";

TEST(DebugLog, HoldsTheLinesUpToItsLevel) {
    const Lines texts = {// one of each level
                         "main|Access logs field position not given , setting default values.",
                         "parse_al_line|Invalid line at line 1 in file 'logs/access_0'",
                         "main|0 uniq hosts added in hosts.list", "main|Total url pattern - 0"};
    for (size_t level = 0; level <= texts.size(); ++level) {
        SCOPED_TRACE(level);
        TestInstallation installation;
        installation.write_settings("USER_SESSION_KEY client_ip\n");
        installation.write_logs({"not a request\n"});
        EXPECT_EQ(installation.run({"-d", std::to_string(level)}).status, 0);
        for (size_t i = 0; i < texts.size(); ++i) {
            EXPECT_NE(installation.debug_lines_with(texts[i]).empty(), i < level) << texts[i];
        }
        EXPECT_EQ(installation.read(log_path).empty(), level == 0);
    }
}

TEST(DebugLog, ReplacesTheLogOfTheLastRunOnlyWhenAskedFor) {
    TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.write(log_path, "an old line\n");
    installation.run();
    EXPECT_EQ(installation.read(log_path), "an old line\n");
    installation.run({"-d", "4", "-d", "0"});
    EXPECT_EQ(installation.read(log_path), "");
}

TEST(DebugLog, AMissingDirectoryTurnsDebuggingOff) {
    TestInstallation installation;
    installation.write_logs({combined_line()});
    fs::remove_all(installation.root() / "webapps");
    const RunResult run = installation.run({"-d", "4"});
    EXPECT_EQ(run.output,
              RunResult::error_line("Failed to open debug log file, debug will be off.") +
                  summary_line({.total = 1, .url_patterns = 1}));
    EXPECT_EQ(run.status, 0);
}

// That the argument is looked at leaves no line.
TEST(DebugLog, TellsTheMemoryThatAProfileArgumentTakes) {
    TestInstallation installation;
    const std::string replay_profiles = installation.path("replay_profiles/");
    const std::pair<std::string, std::string> rows[] = {
        // argument, profile
        {"web", "default/default/web"}, {"//web/", "default/default/web"},
        {"/", "default/default/"},      {"p/s/web", "p/s/web"},
        {"/p//", "default/default/p"},  {"/p//s/", "/p//s/"},
    };
    for (const auto& [argument, profile] : rows) {
        const std::string directory = replay_profiles + profile;
        expect_failure(installation.run_words({"-d4", "-r", argument}),
                       "Replay profile - '" + profile + "' not found at '" + directory + "'");
        Lines lines = {"main|Allocating memory for replay_profile. size = " +
                           std::to_string(profile.size() + 1),
                       "main|Allocating memory for replay_profile_dir. size = " +
                           std::to_string(directory.size() + 1)};
        lines.erase(lines.begin(), lines.begin() + (profile == argument));
        EXPECT_EQ(installation.debug_lines(), lines);
    }
}

TEST(DebugLog, FollowsATinyRunLineByLine) {
    TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.run({"-d", "3", "-t", "1"});
    Lines lines = installation.debug_lines();

    // The first thread's own lines may come before or after the line about its start.
    const std::string start = "process_url_files|Thread[0] created, seq_file_start_idx = 0, "
                              "num seq file = 1, num_req = 1 ";
    EXPECT_EQ(std::erase(lines, start), 1U);

    const Lines expected = {
        "main|Allocating memory for replay_profile. size = 20",
        "main|Allocating memory for replay_profile_dir. size = " +
            std::to_string(installation.path(profile_directory).size() + 1),
        "main|cache test failed, data will process from starting",
        "read_scenario_file|Allocating memory for input_file. size = 14",
        "process_input_file_list2|New instance added for file = logs/access_0, base length = 4, "
        "prefix len = 6",
        "process_url_files|Counting total number of request.",
        "zvr_get_total_lines_in_file|Method called. File = logs/access_0",
        "zvr_run_cmd_and_get_last_line|Method called. Command = wc -l logs/access_0 | awk '{print "
        "$1}'",
        "zvr_get_total_lines_in_file|Total number of lines in file logs/access_0 is 1",
        "process_url_files|File name = logs/access_0, cumlative total_request = 1",
        "process_url_files|All access logs counted, total number of request = 1 ",
        "process_url_files|Allocating memory for Thread Arguments. size = 40",
        "process_url_files|Allocating memory for al_info_array. size = 256",
        "process_url_files|Allocating memory for thread counter. size = 24",
        "process_url_files_t|Allocating memory for unaccounted array. size = 2000000",
        "process_url_files_t|url_file_path = logs/access_0",
        "load_url_info|Method called, access log file = logs/access_0",
        "parse_al_line|Allocating memory for url. size = 4",
        "process_url_files_t|Thread[0] Processing of Url file - 'logs/access_0' completed, 1 "
        "request processed",
        "process_url_files|Thread[0] competed successfully, Total files parsed = 1",
        "process_url_files|Processing of URL files completed, total valid requests are = 1",
        "process_url_files|Allocating memory for al_info_array. size = 256",
        "process_url_files|Url table copied to new table, total valid urls count = 1",
        "make_url_pattern_list|Method called",
        "make_url_pattern_list|New url found , adding in url pattern list",
        "main|Start dumping complete url list to complete_url.list file",
        "main|Dumped complete url list.",
        "main|Allocating memory for hosts list. size = 4",
        "main|Adding hosts in hosts.list",
        "main|1 uniq hosts added in hosts.list",
    };
    EXPECT_EQ(lines, expected);
}

} // namespace
