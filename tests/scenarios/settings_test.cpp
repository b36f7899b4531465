#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>

TEST(Settings, AreRefusedBeforeTheScenarioIsRead) {
    const struct {
        std::string oddity;
        std::string settings;
        std::string message;
    } rows[] = {
        {"settings", "NEW_USER_TIME 00:30\nAL_FIELD STATUS_CODE 26\n",
         "Invalid new user time in replay_setting.dat"},
        {"layout", "USER_SESSION_KEY client_ip\nAL_FIELD STATUS_CODE 26\n",
         "Field position for STATUS_CODE is more than max access log fields 25"},
    };
    for (const auto& [oddity, settings, message] : rows) {
        SCOPED_TRACE(oddity);
        TestInstallation installation;
        installation.write_settings(settings);
        installation.write_scenario("REPLAY_LOG_FILE no_more_words\n");
        expect_failure(installation.run(), message);
    }
}

// One request, at 13:55:36 UTC, accepted only when the period is read on the scale of the replay
// zone.
TEST(Settings, TheReplayZoneComesFromTheDefaultsFileOrTheProcess) {
    const struct {
        std::string oddity;
        std::string defaults;
        std::string process_zone;
        std::string moment;
    } rows[] = {
        {"both, the process at zero", "GMT_OFFSET +0530\n", "UTC", "19:25:36"},
        {"both, west of the process", "gmt_offset\t-0800\n", "JST-9", "05:55:36"},
        {"the process alone", " GMT_OFFSET +0530\n", "EST5", "08:55:36"},
    };
    for (const auto& [oddity, defaults, process_zone, moment] : rows) {
        SCOPED_TRACE(oddity);
        TestInstallation installation;
        installation.write("sys/replay_settings.default", defaults);
        installation.write_logs({combined_line()});
        const std::string scenario = installation.read(scenario_directory + "/web.conf");
        installation.write_scenario(scenario + "REPLAY_PERIOD START 10/10/2000 " + moment +
                                    "\nREPLAY_PERIOD END 10/10/2000 " + moment + "\n");
        EXPECT_EQ(installation.run({}, {{"TZ", process_zone}}).counter("TotalUrlPattern"), 1);
    }
}
