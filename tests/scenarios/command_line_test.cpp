#include "tests/support/test_installation.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

const std::string usage =
    "Usage: " + TestInstallation::program_name() +
    " --scenario <scenarioName> [--mode <gui/cli>] [--debug <1-4>]"
    "Where:\n\t--scenario is used to specify scenario name with workspace, profile, project, "
    "subproject(p,s are optional).\n\t--mode can be either gui or cli \n"
    "\t--debug is to specify debug level from 1-4.\n";

TEST(CommandLine, NeedsTheInstallationBeforeAnythingElse) {
    TestInstallation installation;
    installation.prepare_process([] { unsetenv("ZV_WDIR"); });
    expect_failure(installation.run({"-t", "-1"}),
                   "Environment variable \"ZV_WDIR\" not set, Exiting.");
}

TEST(CommandLine, AnswersAMissingScenarioWithTheUsageText) {
    TestInstallation installation;
    const RunResult run = installation.run_words({"-t", "1"});
    expect_failure(run, "--scenario argument missing");
    EXPECT_EQ(run.errors, usage);

    const RunResult without_value = installation.run_words({"-s"});
    EXPECT_EQ(without_value.output, RunResult::error_line("Invalid argument ?") +
                                        RunResult::error_line("--scenario argument missing"));
    EXPECT_EQ(without_value.status, 255);
    EXPECT_TRUE(without_value.errors.ends_with(usage)) << without_value.errors;
}

TEST(CommandLine, AcceptsEveryFormOfItsOptionsAndPassesOverOthers) {
    const Words forms[] = {
        {"-sweb", "--mode", "cli", "-m", "gui"},
        {"--scenario=web", "--mode=other", "--num_thread=1", "--commentry"},
        {"stray", "-s", "nosuch", "-s", "web.conf", "-t", "0"},
    };
    for (const Words& words : forms) {
        SCOPED_TRACE(testing::PrintToString(words));
        TestInstallation installation;
        installation.write_logs({combined_line()});
        EXPECT_EQ(installation.run_words(words).output,
                  summary_line({.total = 1, .url_patterns = 1}));
    }
    TestInstallation installation;
    const RunResult run = installation.run({"-z"});
    EXPECT_EQ(run.output, RunResult::error_line("Invalid argument ?") + summary_line({}));
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLine, RefusesANegativeThreadCountWhereItIsGiven) {
    const std::string message = "Number of thread can not be negative";
    TestInstallation installation;
    expect_failure(installation.run_words({"-t", "-1"}), message);
    installation.add_settings("NUM_THREAD -2\n");
    expect_failure(installation.run({"-t", "1"}), message);
}

TEST(CommandLine, WritesQueriesUnlessTheLastWordIsAgainstIt) {
    TestInstallation installation;
    installation.write_logs({combined_line({.url = "/a?x=1"})});
    installation.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    installation.run();
    EXPECT_EQ(installation.result("query_url.list"), "/a?x=1\n");
    installation.run({"-q", "0"});
    EXPECT_FALSE(installation.has_result("query_url.list"));
    installation.add_settings("IGNORE_URL_QUERY_PARAM 1\nDUMP_QUERY_STRING_URL 5\n");
    installation.run({"-q", "0"});
    EXPECT_TRUE(installation.has_result("query_url.list"));
}

std::string without_times(const std::string& text) {
    const std::regex date("[0-9]{2}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}");
    const std::regex seconds("(taken ?[:=] )[0-9]+");
    return std::regex_replace(std::regex_replace(text, date, "<now>"), seconds, "$1<n>");
}

TEST(CommandLine, WritesProgressLinesAroundEachPhase) {
    TestInstallation installation;
    installation.write_logs({combined_line()});
    EXPECT_EQ(without_times(installation.run({"-c", "-t", "1"}).errors),
              "Start processing access log files at <now>\n"
              "\tStart Counting total number of request from log files at <now>\n"
              "\tEnd Counting total number of request from log files at <now>\n"
              "\tTotal time taken : <n>\n"
              "\tThread[0] started at <now>\n"
              "\t\tThread[0] start processing file 'logs/access_0' at <now>\n"
              "\t\tThread[0] end processeding file 'logs/access_0' at <now>\n"
              "\tThread[0] ended at <now> , total time taken = <n>(sec)\n"
              "End processing access log files at <now>\n,Total Time taken : <n>(sec) \n"
              "Start sorting of request table at <now>\n"
              "End sorting of request table at <now>\n Total time taken: <n>(sec)\n"
              "Start creating unique pattern of urls at <now>\n"
              "End creating unique pattern of urls at <now>\n Total time taken: <n>(sec) \n"
              "Start dumping complete url list to complete_url.list at <now>\n"
              "End dumping complete url list to complete_url.list at <now>\n"
              "Time taken = <n>(sec)\n"
              "Start filling pattern type index at <now>\n"
              "End filling pattern type index at <now>\n Total time taken = <n>(sec) \n"
              "Start dumping url pattern at  <now>\n"
              "End dumping url pattern at  <now>\nTotal time taken : <n>\n");
}

} // namespace
