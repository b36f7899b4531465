#include "companions/doctor/check_settings.h"
#include "companions/doctor/check_zone.h"
#include "tests/companions/doctor/doctor_runs.h"
#include "tools/config/settings_file.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <map>

namespace {

namespace fs = std::filesystem;

// Every file and folder with the time of its last change.
std::map<std::string, fs::file_time_type> states_of(const TestInstallation& installation) {
    std::map<std::string, fs::file_time_type> states;
    for (const auto& entry : fs::recursive_directory_iterator(installation.root())) {
        const bool is_of_test = entry.path().parent_path() == installation.root();
        if (!is_of_test) { // where runs leave their output
            states[entry.path()] = entry.last_write_time();
        }
    }
    return states;
}

std::string meaning_of(const CheckRun& run, const std::string& id) {
    const nlohmann::json found = run.of(id);
    return found.size() == 1 ? found[0]["meaning"].get<std::string>() : "";
}

} // namespace

TEST(Check, ChangesNothing) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    fs::remove_all(installation.path(config_directory + "/.."));
    fs::remove_all(installation.path("webapps"));
    const auto before = states_of(installation);
    EXPECT_EQ(run_doctor(installation, "check").status, 0);
    EXPECT_EQ(states_of(installation), before);
}

TEST(Check, ShowsEachBoundInTheReplayZoneAndInUtc) {
    const TestInstallation installation;
    std::string line = combined_line();
    line.replace(line.find("10/Oct/2000"), 11, "10/Mar/2026"); // within the period
    installation.write_logs({line});
    installation.write("sys/replay_settings.default", "GMT_OFFSET +0530\n");
    installation.write_scenario(installation.read(scenario_directory + "/web.conf") +
                                "REPLAY_PERIOD START 3/10/2026 10:00:00\n"
                                "REPLAY_PERIOD END 3/11/2026 03:30:00\n");
    for (const char* zone : {"UTC", "America/New_York", "Asia/Tokyo"}) {
        const CheckRun run = check(installation, {}, {{"TZ", zone}});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(meaning_of(run, "period-start"), "The period starts with 2026-03-10 10:00:00 "
                                                   "+0530 (2026-03-10 04:30:00 UTC).");
        EXPECT_EQ(meaning_of(run, "period-end"), "The period ends with 2026-03-11 03:30:00 +0530 "
                                                 "(2026-03-10 22:00:00 UTC).");
    }
}

TEST(Check, KnowsZonesByTheirNamesAndRules) {
    for (const char* zone : {"UTC", ":Europe/Rome", "Asia/Kolkata", "CET-1CEST,M3.5.0,M10.5.0/3",
                             "<+0530>-5:30", "EST5EDT"}) {
        EXPECT_TRUE(is_known_zone(zone)) << zone;
    }
    for (const char* zone : {"Europe/Roma", "IST", "+0530", "Asia/Calcuta", "5", "Europe"}) {
        EXPECT_FALSE(is_known_zone(zone)) << zone;
    }
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    const CheckRun run = check(installation, {}, {{"TZ", "Europe/Roma"}});
    EXPECT_EQ(run.of("unknown-zone")[0]["value"], "TZ=Europe/Roma");
}

TEST(Check, TellsHowLogsAreSharedOut) {
    const TestInstallation installation;
    for (const char* name : {"a/x_1", "a/x_2", "a/y_1", "b/x_1"}) {
        installation.write(name, combined_line());
    }
    installation.name_logs({"a/x_2", "b/x_1", "a/x_1", "a/y_1"});
    const CheckRun run = check(installation, {"-t", "8"});
    const nlohmann::json instances = run.of("instances");
    ASSERT_EQ(instances.size(), 1U);
    EXPECT_EQ(instances[0]["value"], "4 logs in 3 instances");
    const std::string meaning = instances[0]["meaning"];
    EXPECT_NE(meaning.find("a/x_1, a/x_2; a/y_1; b/x_1"), std::string::npos) << meaning;
    EXPECT_NE(meaning.find("with 4 threads"), std::string::npos) << meaning;
    installation.name_logs({"a/x_1"});
    EXPECT_EQ(check(installation).of("instances").size(), 0U);
    EXPECT_EQ(check(installation, {"-t", "8"}).of("instances").size(), 1U); // has a cure
    installation.name_logs({"a/x_1", "a/y_1"});
    installation.add_settings("NUM_THREAD 2\n");
    EXPECT_NE(meaning_of(check(installation), "instances").find("with 2 threads"),
              std::string::npos);
}

TEST(Check, ExplainsEveryKeyword) {
    std::vector<std::string> keywords;
    for (const SettingKeyword& setting : all_setting_keywords()) {
        keywords.emplace_back(setting.keyword);
    }
    std::sort(keywords.begin(), keywords.end());
    EXPECT_EQ(explained_keywords(), keywords);
}

TEST(Check, PassesOverKeywordsOfOtherPrograms) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.write_scenario("TNAME a\n#x\nSGRP b\n" +
                                installation.read(scenario_directory + "/web.conf"));
    const CheckRun run = check(installation);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.of("other-keywords")[0]["value"], "TNAME");
}

TEST(Check, TellsOfSettingsThatLaterLinesSetAgain) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    installation.add_settings("NUM_THREAD 1\nNUM_THREAD 2 # two\nAUTO_REDIRECT 0\nAUTO_REDIRECT 0\n"
                              "INLINE_OBJECT_MODE auto\nINLINE_OBJECT_MODE never\n");
    const CheckRun run = check(installation);
    ASSERT_EQ(run.of("setting-twice").size(), 1U);
    EXPECT_EQ(run.of("setting-twice")[0]["line"], 6);
    EXPECT_EQ(run.of("unknown-value").size(), 1U);
    EXPECT_EQ(run.of("rest-ignored")[0]["severity"], "note"); // a comment
}

TEST(Check, TellsOfFieldsThatALongerNameUnsets) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    const std::string settings =
        "ACCESS_LOG_TYPE IIS\nUSER_SESSION_KEY client_ip\nAL_FIELD CLIENT_IP 1\n"
        "AL_FIELD DATE 2\nAL_FIELD DATE_AND_TIME 9\nAL_FIELD TIME 3\nAL_FIELD METHOD 4\n"
        "AL_FIELD URL_QUERY 5\nAL_FIELD STATUS_CODE 6\n";
    installation.write_settings(settings);
    const CheckRun run = check(installation);
    EXPECT_EQ(run.of("field-missing")[0]["value"], "DATE");
    ASSERT_EQ(run.of("field-unset").size(), 1U);
    EXPECT_EQ(run.of("field-unset")[0]["line"], 4);
    EXPECT_EQ(run.of("field-unset")[0]["severity"], "warning");
    installation.write_settings(settings + "AL_FIELD DATE 2\n");
    EXPECT_EQ(check(installation).of("field-unset").size(), 0U);
}

TEST(Check, WritesNothingThatSteersATerminal) {
    const TestInstallation installation;
    const std::string bad = "\x1b]0;owned\x07\xc2\x9b"
                            "31m\xff\xe2\x80\xae";
    installation.write("logs/" + bad, "x");
    installation.add_settings(bad + "\nCOOKIE_NAME " + bad + "\r\nAL_FIELD " + bad + "\n");
    installation.write_patterns("active|main|" + bad + "|-|" + bad + "|" + bad + "|-|na|" + bad +
                                "(\n" + bad + "|a|a|a|a|a|a|a|a\n");
    installation.write_filters("active|na|-|" + bad + "|" + bad + "?q=*\n");
    installation.write_scenario("REPLAY_PERIOD START " + bad + "\nREPLAY_LOG_FILE logs/" + bad +
                                " x " + bad + " " + bad + "\n" + bad + "\n");
    installation.write_result("hosts.list", bad + "1\n");
    const RunResult run = run_doctor(installation, "check");
    EXPECT_EQ(run.status, 2);
    for (const char* piece : {"\x1b", "\x07", "\xc2\x9b", "\xff", "\xe2\x80\xae"}) {
        EXPECT_EQ(run.output.find(piece), std::string::npos);
    }
    const RunResult json = run_doctor(installation, "check", {"--json"});
    EXPECT_TRUE(std::all_of(json.output.begin(), json.output.end(),
                            [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
    EXPECT_GT(nlohmann::json::parse(json.output)["findings"].size(), 8U);
}

TEST(Check, TakesNoLongerForLargeLogs) {
    const TestInstallation installation;
    Lines names;
    for (int i = 0; i < 16; ++i) {
        names.push_back("logs/access_" + std::to_string(i));
        installation.write(names.back(), combined_line());
        fs::resize_file(installation.path(names.back()), uintmax_t{1} << 30); // without its blocks
    }
    installation.name_logs(names);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(check(installation).of("log-no-line-feed").size(), names.size());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(Check, OfManyFindingsOfAKindShowsTheFirst) {
    const TestInstallation installation;
    installation.write_logs({combined_line()});
    std::string lines;
    for (int i = 0; i < 80; ++i) {
        lines += "NOTHING" + std::to_string(i) + "\n";
    }
    installation.add_settings(lines);
    const std::string output = run_doctor(installation, "check").output;
    EXPECT_NE(output.find("30 more [unknown-keyword]; --json lists all."), std::string::npos);
    EXPECT_EQ(output.find("NOTHING79"), std::string::npos);
    EXPECT_EQ(check(installation).of("unknown-keyword").size(), 80U);
}
