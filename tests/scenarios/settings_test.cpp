#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

TEST(Settings, AreRefusedWhenTheyCannotBeUsed) {
    const std::string no_cookie = "Cookie name not given in replay setting file";
    const std::string bad_time = "Invalid new user time in replay_setting.dat";
    const struct {
        std::string text;
        std::string message;
    } rows[] = {
        {"", no_cookie},
        {"#USER_SESSION_KEY client_ip\n USER_SESSION_KEY client_ip\n", no_cookie},
        {"USER_SESSION_KEY client_ip\nUSER_SESSION_KEY\n", no_cookie},
        {"NEW_USER_TIME 00:30\n", bad_time},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        TestInstallation installation;
        installation.write_settings(row.text);
        expect_failure(installation.run(), row.message);
    }
}

TEST(Settings, ReportTheValuesTheyTook) {
    const struct {
        std::string text;
        Lines messages;
    } rows[] = {
        {"DEFAULT_HOST  h.example more\n", {"Default host = 'h.example'"}},
        {"AUTO_REDIRECT_COUNT 5\n", {"AUTO_REDIRECT = 0"}},
        {"AUTO_REDIRECT 5\nauto_redirect\n", {"AUTO_REDIRECT = 1", "AUTO_REDIRECT = 0"}},
        {"SECONDARY_COOKIE 1 \t trk more\n", {"Secondary cookie enabled, name = trk"}},
        {"SECONDARY_COOKIE 1\nSECONDARY_COOKIE 0 trk\nSECONDARY_COOKIE x trk\n", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        TestInstallation installation;
        installation.add_settings(row.text);
        installation.run({"-d", "4"});
        EXPECT_EQ(installation.debug_lines_with("read_replay_prof_setting|"), row.messages);
    }
}

// One request, at 13:55:36 UTC, accepted only when the period is read on the scale of the replay
// zone.
TEST(Settings, TheReplayZoneComesFromTheDefaultsFileOrTheProcess) {
    const struct {
        std::string defaults;
        std::string process_zone;
        std::string moment;
    } rows[] = {
        {"GMT_OFFSET +0530\n", "UTC", "19:25:36"},    {"GMT_OFFSET +0530\n", "EST5", "19:25:36"},
        {"gmt_offset\t-0800\n", "JST-9", "05:55:36"}, {"GMT_OFFSET - 08 15\n", "UTC", "05:40:36"},
        {" GMT_OFFSET +0530\n", "EST5", "08:55:36"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.defaults + row.process_zone);
        TestInstallation installation;
        installation.write("sys/replay_settings.default", row.defaults);
        installation.write_logs({combined_line()});
        const std::string scenario =
            installation.read(TestInstallation::scenario_directory() + "/web.conf");
        installation.write_scenario(scenario + "REPLAY_PERIOD START 10/10/2000 " + row.moment +
                                    "\nREPLAY_PERIOD END 10/10/2000 " + row.moment + "\n");
        EXPECT_EQ(installation.run({}, {{"TZ", row.process_zone}}).counter("TotalUrlPattern"), 1);
    }
}

} // namespace
