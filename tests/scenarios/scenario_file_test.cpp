#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>

namespace {

class ScenarioFile : public testing::Test {
  protected:
    ScenarioFile() {
        installation_.write("logs/access_0", combined_line({.time = "10:00:00"}) +
                                                 combined_line({.time = "11:00:00"}) +
                                                 combined_line({.time = "12:00:00"}));
    }

    RunResult run(const std::string& scenario) const {
        installation_.write_scenario(scenario);
        return installation_.run();
    }

    TestInstallation installation_;
};

TEST_F(ScenarioFile, NamesTheLinesThatItCannotRead) {
    const std::string path = installation_.path(scenario_directory + "/web.conf");
    const auto invalid_entry = [&path](int line) {
        return "Invalid entry in scenario file '" + path + "' at line " + std::to_string(line);
    };
    const auto invalid_date = [&path](int line) {
        return "Invalid format of date in REPLAY_PERIOD keyword in scenario file - '" + path +
               "' at line - " + std::to_string(line);
    };
    const std::string longest_comment(2047, '#');
    std::string many_logs;
    for (int i = 0; i < 1001; ++i) {
        many_logs += "REPLAY_LOG_FILE logs/access_0 x 0 HTTP\n";
    }
    const std::pair<std::string, std::string> rows[] = {
        // text, message
        {"REPLAY_LOG_FILE", invalid_entry(1)},
        {"# comment\n\nOTHER x\nreplay_log_file logs/access_0 x 0\n", invalid_entry(4)},
        {"\nREPLAY_PERIOD START 2000-10-10 10:00:00\n", invalid_date(2)},
        {"REPLAY_PERIOD  start \t \n", invalid_date(1)},
        {longest_comment + "\n" + longest_comment + "REPLAY_LOG_FILE\n", invalid_entry(4)},
        {many_logs, "More than 1000 log files in scenario file '" + path + "' at line 1001"},
    };
    for (const auto& [text, message] : rows) {
        SCOPED_TRACE(text);
        expect_failure(run(text), message);
    }
}

TEST_F(ScenarioFile, SetsThePeriodThatTheLastLinesGive) {
    const std::string eleven = "10/10/2000 11:00:00\n";
    const std::pair<std::string, long> rows[] = {
        // period, time_filtered
        {" REPLAY_PERIOD START x\nREPLAY_PERIOD x\n", 0},
        {"replay_period= \t END " + eleven, 1},
        {"REPLAY_PERIOD START " + eleven + "REPLAY_PERIOD END " + eleven, 2},
        {"REPLAY_PERIOD START 10/10/2000 12:00:01\nREPLAY_PERIOD START " + eleven, 1},
        {"REPLAY_PERIOD START 10/10/2000 12:00:01\nREPLAY_PERIOD START NA\n", 3},
    };
    for (const auto& [period, time_filtered] : rows) {
        const RunResult result = run(period + "REPLAY_LOG_FILE logs/access_0 x 0 HTTP more\n");
        EXPECT_EQ(result.counter("TimeBasedFiltered"), time_filtered) << period;
    }
}

// Both hours are there twice. The date before each, half a year off, must not matter.
TEST_F(ScenarioFile, SetsAPeriodInARepeatedHourAsTheSystemDoesFirst) {
    const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
        // process_zone, before, date, time_stamp
        {"CET-1CEST,M3.5.0,M10.5.0/3", "04/27/2024", "10/27/2024 02:30:00", "1729992600"},
        {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "10/07/2024", "04/07/2024 01:45:00", "1712416500"},
    };
    for (const auto& [process_zone, before, date, time_stamp] : rows) {
        SCOPED_TRACE(process_zone);
        installation_.write_scenario("REPLAY_PERIOD START " + before +
                                     " 12:00:00\nREPLAY_PERIOD END " + date + "\n");
        installation_.run({"-d", "3"}, {{"TZ", process_zone}});
        EXPECT_EQ(installation_.debug_lines_with("End time stamp").back(),
                  "End time stamp - " + time_stamp);
    }
}

TEST_F(ScenarioFile, TakesAsManyLinesAsItSaysFromAllButPostFiles) {
    const std::pair<std::string, long> rows[] = {
        // budget and type, total
        {"0 HTTP", 3},   {"2 x", 2},      {"99 x", 3},           {"0x2 x", 2},
        {"01 HTTPS", 1}, {"all post", 3}, {"0 POSTED", 3},       {"2 POST", 0},
        {"2 POST\r", 0}, {"-1 x", 3},     {"1000000000000 x", 3}};
    for (const auto& [text, total] : rows) {
        EXPECT_EQ(run("REPLAY_LOG_FILE logs/access_0 x " + text).counter("Total"), total) << text;
    }
    installation_.run({"-d2"});
    const std::string allocation = "Allocating memory for al_info_array. size = ";
    EXPECT_EQ(installation_.debug_lines_with(allocation),
              (Lines{allocation + "256000000000000", allocation + "768"}));
}

} // namespace
