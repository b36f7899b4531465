#include "tests/support/test_installation.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

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
    installation.prepare_process([] {});
    for (const std::string work_dir : {"", ".", "workspace/.."}) {
        expect_failure(installation.run({"-t", "-1"}, {{"ZV_WDIR", work_dir}}),
                       "ZV_WDIR is not an absolute path: '" + work_dir + "'");
    }
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
    const Lines forms[] = {
        {"-sweb", "--mode", "cli", "-m", "gui"},
        {"--scenario=web", "--mode=other", "--num_thread=1", "--commentry"},
        {"stray", "-s", "nosuch", "-s", "web.conf", "-t", "0"},
        {"-sweb", "-", "--", "-s", "nosuch", "-z"},
    };
    for (const Lines& words : forms) {
        SCOPED_TRACE(testing::PrintToString(words));
        TestInstallation installation;
        installation.write_logs({combined_line()});
        for (const Environment& environment : {Environment{}, {{"POSIXLY_CORRECT", ""}}}) {
            EXPECT_EQ(installation.run_words(words, environment).output,
                      summary_line({.total = 1, .url_patterns = 1}));
        }
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

TEST(CommandLine, WritesProgressLinesAroundEachPhaseWhenAskedFor) {
    TestInstallation installation;
    installation.write_logs({combined_line()});
    EXPECT_EQ(installation.run().errors, "");
    const std::string errors = installation.run({"-c"}).errors;
    for (const std::string phase :
         {"processing access log files", "Counting total number of request from log files",
          "sorting of request table", "creating unique pattern of urls",
          "dumping complete url list to complete_url.list", "filling pattern type index",
          "dumping url pattern"}) {
        const size_t start = errors.find("Start " + phase + " at ");
        const size_t end = errors.find("\n", errors.find("End " + phase + " at "));
        EXPECT_LT(start, end) << phase;
        EXPECT_NE(end, std::string::npos) << phase;
    }
    EXPECT_EQ(lines_of(errors).size(), 25U) << errors;
}

} // namespace
