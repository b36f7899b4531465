#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>

TEST(Settings, AreRefusedWhenTheyCannotBeUsed) {
    const std::string no_cookie = "Cookie name not given in replay setting file";
    const std::string bad_time = "Invalid new user time in replay_setting.dat";
    const std::pair<std::string, std::string> rows[] = {
        // text, message
        {"", no_cookie},
        {"#USER_SESSION_KEY client_ip\n USER_SESSION_KEY client_ip\n", no_cookie},
        {"USER_SESSION_KEY client_ip\nUSER_SESSION_KEY\n", no_cookie},
        {"NEW_USER_TIME 00:30\n", bad_time},
        {std::string(2047, '#') + "NEW_USER_TIME 00:30\n", bad_time},
        {std::string(2046, '#') + "NEW_USER_TIME 00:30\n", no_cookie},
    };
    for (const auto& [text, message] : rows) {
        SCOPED_TRACE(text);
        TestInstallation installation;
        installation.write_settings(text);
        expect_failure(installation.run(), message);
    }
}

TEST(Settings, ReportTheValuesTheyTook) {
    const std::pair<std::string, Lines> rows[] = {
        // text, messages
        {"DEFAULT_HOST  h.example more\n", {"Default host = 'h.example'"}},
        {"AUTO_REDIRECT_COUNT 5\n", {"AUTO_REDIRECT = 0"}},
        {"AUTO_REDIRECT 5\nauto_redirect\n", {"AUTO_REDIRECT = 1", "AUTO_REDIRECT = 0"}},
        {"SECONDARY_COOKIE 1 \t trk more\n", {"Secondary cookie enabled, name = trk"}},
        {"SECONDARY_COOKIE 1\nSECONDARY_COOKIE 0 trk\nSECONDARY_COOKIE x trk\n", {}},
    };
    for (const auto& [text, messages] : rows) {
        SCOPED_TRACE(text);
        TestInstallation installation;
        installation.add_settings(text);
        installation.run({"-d", "4"});
        EXPECT_EQ(installation.debug_lines_with("read_replay_prof_setting|"), messages);
    }
}

// One request, at 13:55:36 UTC, accepted only when the period is read on the scale of the replay
// zone.
TEST(Settings, TheReplayZoneComesFromTheDefaultsFileOrTheProcess) {
    const std::tuple<std::string, std::string, std::string> rows[] = {
        // defaults, process_zone, moment
        {"GMT_OFFSET +0530\n", "UTC", "19:25:36"},
        {"GMT_OFFSET +0530\n", "EST5", "19:25:36"},
        {"gmt_offset\t-0800\n", "JST-9", "05:55:36"},
        {"GMT_OFFSET - 08 15\n", "UTC", "05:40:36"},
        {" GMT_OFFSET +0530\n", "EST5", "08:55:36"},
        {std::string(4095, '#') + "GMT_OFFSET +0530\n", "UTC", "19:25:36"},
        {std::string(4094, '#') + "GMT_OFFSET +0530\n", "UTC", "13:55:36"},
    };
    for (const auto& [defaults, process_zone, moment] : rows) {
        SCOPED_TRACE(defaults + process_zone);
        TestInstallation installation;
        installation.write("sys/replay_settings.default", defaults);
        installation.write_logs({combined_line()});
        const std::string scenario = installation.read(scenario_directory + "/web.conf");
        installation.write_scenario(scenario + "REPLAY_PERIOD START 10/10/2000 " + moment +
                                    "\nREPLAY_PERIOD END 10/10/2000 " + moment + "\n");
        EXPECT_EQ(installation.run({}, {{"TZ", process_zone}}).counter("TotalUrlPattern"), 1);
    }
}
