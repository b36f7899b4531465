#include "tests/checker/checker_fixture.h"
#include "tools/config/settings_file.h"

#include <map>
#include <string_view>

namespace {

constexpr const char* first_settings =
    "USER_SESSION_KEY cookie\nCOOKIE_NAME S\nAL_FIELD CLIENT_IP 1\nAL_FIELD DATE_AND_TIME 4\n"
    "AL_FIELD REQUEST_LINE 5\nAL_FIELD STATUS_CODE 6\nAL_FIELD REQUEST_COOKIE 7\n"
    "AL_FIELD SET_COOKIE 8\nAL_FIELD LOCATION 9\nAL_FIELD RESPONSE_TIME 10\n"
    "IGNORE_URL_QUERY_PARAM 1\nINLINE_OBJECT_MODE skip\n";

// A line for each keyword that says something else than the first settings and what holds without.
const std::map<std::string_view, std::string> other_lines = {
    {"DEFAULT_HOST", "other"},
    {"IGNORE_URL_QUERY_PARAM", "0"},
    {"AUTO_REDIRECT", "0"},
    {"INLINE_OBJECT_MODE", "asperlog"},
    {"USER_SESSION_KEY", "client_ip"},
    {"COOKIE_NAME", "T"},
    {"IGNORE_NON_SESSION_URLS", "0"},
    {"AL_FIELD", "STATUS_CODE 2"},
    {"ACCESS_LOG_TYPE", "IIS"},
    {"NEW_USER_TIME", "00:30:00"},
    {"DUMP_QUERY_STRING_URL", "0"},
    {"NUM_THREAD", "2"},
    {"SECONDARY_COOKIE", "0"},
    {"CONSIDER_RESPONSE_TIME", "1"},
};

std::string request(const std::string& url, const std::string& cookie, int status = 200,
                    const std::string& location = "-") {
    return combined_line(
        {.url = url, .status = status, .more = "\"" + cookie + "\" - " + location + " 3000"});
}

// All that a run gives; nothing when it fails.
struct Outcome {
    std::string output;
    std::map<std::string, std::string> results;

    bool operator==(const Outcome&) const = default;
};

class SettingKeywords : public Checker {
  protected:
    SettingKeywords() {
        installation_.write_logs({request("/a?x=1", "S=1; T=1") +
                                  request("/go", "S=1", 302, "/to") + request("/to", "S=1") +
                                  request("/b.gif", "S=1") + request("/n", "akaau=1")});
        append(scenario_directory + "/web.conf", "REPLAY_PERIOD START 10/10/2000 13:55:34\n");
        installation_.write_patterns("active|inline|GET|1|na|na|d|na|/b*\n");
    }

    // `status`: what the checker has answered.
    Outcome run(const std::string& more_settings, int& status) const {
        installation_.write_settings(first_settings + more_settings);
        remove(cache_answer);
        usleep(25'000);
        const RunResult result = installation_.run({"-a", "-t", "1"});
        status = std::atoi(installation_.read(cache_answer).c_str());
        return result.status == 0 ? Outcome{result.output, installation_.files_of(config_directory)}
                                  : Outcome{};
    }

    Outcome run_in_full_with(const std::string& more_settings) const {
        remove(cache);
        remove(config_directory);
        int status;
        Outcome outcome = run(more_settings, status);
        EXPECT_EQ(status, 1);
        return outcome;
    }
};

} // namespace

TEST_F(SettingKeywords, DecideWhatTheirTableSays) {
    for (const SettingKeyword& setting : all_setting_keywords()) {
        SCOPED_TRACE(setting.keyword);
        const auto other = other_lines.find(setting.keyword);
        ASSERT_NE(other, other_lines.end()) << "there is no line for it here";
        const std::string line = std::string(setting.keyword) + " " + other->second + "\n";
        const Outcome first = run_in_full_with("");

        int status;
        const Outcome outcome = run(line, status);
        EXPECT_EQ(status, setting.effect == SettingEffect::loading ? 1 : 2);
        EXPECT_TRUE(outcome == run_in_full_with(line));
        EXPECT_EQ(outcome != first,
                  setting.effect != SettingEffect::none && setting.keyword != "NUM_THREAD");
    }
}
