#include "tools/config/settings_file.h"

#include "base/logs.h"
#include "tests/properties/properties.h"
#include "tools/config/replay_settings.h"

#include <vector>

namespace {

using Lines = std::vector<std::string>;

// The messages that reading the settings has left in the debug log.
Lines messages_in(const std::string& debug_log) {
    constexpr std::string_view origin = "|read_replay_prof_setting|";
    Lines messages;
    for (size_t at = 0; (at = debug_log.find(origin, at)) != std::string::npos;) {
        at += origin.size();
        messages.push_back(debug_log.substr(at, debug_log.find('\n', at) - at));
    }
    return messages;
}

} // namespace

TEST(SettingsFile, IsRefusedWhenItCannotBeUsed) {
    const std::string no_cookie = "Cookie name not given in replay setting file";
    const std::string bad_time = "Invalid new user time in replay_setting.dat";
    const std::string piece(2047, '#'); // of a line, as they are read
    const struct {
        std::string oddity;
        std::string text;
        std::string message;
    } rows[] = {
        {"empty", "", no_cookie},
        {"keyword in a comment, keyword not at the line's start",
         "#USER_SESSION_KEY client_ip\n USER_SESSION_KEY client_ip\n", no_cookie},
        {"second one without a value", "USER_SESSION_KEY client_ip\nUSER_SESSION_KEY\n", no_cookie},
        {"time of two parts", "NEW_USER_TIME 00:30\n", bad_time},
        {"keyword that begins a piece", piece + "NEW_USER_TIME 00:30\n", bad_time},
        {"keyword inside a piece", piece.substr(1) + "NEW_USER_TIME 00:30\n", no_cookie},
    };
    const TemporaryDirectory directory;
    for (const auto& [oddity, text, message] : rows) {
        EXPECT_EQ(refusal_of_settings(directory.write("settings", text)), message) << oddity;
    }
    EXPECT_NE(refusal_of_settings(directory.path()), "") << "a directory";
}

TEST(SettingsFile, TakesItsValuesAndReportsThem) {
    const struct {
        std::string oddity;
        std::string text;
        Lines messages;
        std::string values; // host, redirects, secondary cookie on or off and its name
    } rows[] = {
        {"blanks before and a word after the value",
         "DEFAULT_HOST  h.example more\n",
         {"Default host = 'h.example'"},
         "h.example 1 1 akaau"},
        {"keyword that begins with another",
         "AUTO_REDIRECT_COUNT 5\n",
         {"AUTO_REDIRECT = 0"},
         "127.0.0.1 0 1 akaau"},
        {"twice, the second without a value",
         "AUTO_REDIRECT 5\nauto_redirect\n",
         {"AUTO_REDIRECT = 1", "AUTO_REDIRECT = 0"},
         "127.0.0.1 0 1 akaau"},
        {"tab between blanks, a third word",
         "SECONDARY_COOKIE 1 \t trk more\n",
         {"Secondary cookie enabled, name = trk"},
         "127.0.0.1 1 1 trk"},
        {"names of a cookie that is off",
         "SECONDARY_COOKIE 1\nSECONDARY_COOKIE 0 trk\nSECONDARY_COOKIE x trk\n",
         {},
         "127.0.0.1 1 0 akaau"},
    };
    const TemporaryDirectory directory;
    const std::string debug_log = "webapps/zivrano/logs/zivrano_replay_debug.log";
    directory.write(debug_log, "");
    for (const auto& [oddity, text, messages, values] : rows) {
        open_debug_log(directory.path().c_str(), 4);
        refusal_of_settings(directory.write("settings", text));
        close_debug_log();
        EXPECT_EQ(messages_in(directory.read(debug_log)), messages) << oddity;
        EXPECT_EQ(default_host + (" " + std::to_string(auto_redirect_flag)) + " " +
                      std::to_string(secondary_cookie_enable) + " " + secondary_cookie,
                  values)
            << oddity;
    }
}
