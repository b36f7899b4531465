#include "tests/companions/doctor/doctor_runs.h"

#include <gtest/gtest.h>

namespace {

const std::string cookie_settings = "USER_SESSION_KEY cookie\nCOOKIE_NAME SESSION\n"
                                    "AL_FIELD REQUEST_COOKIE 7\nAL_FIELD SET_COOKIE 8\n";

std::string repeated(const std::string& lines, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += lines;
    }
    return text;
}

class LogChecks : public testing::Test {
  protected:
    // The finding of this kind, of which there has to be one.
    nlohmann::json the(const std::string& id) const {
        const nlohmann::json found = check(installation_).of(id);
        EXPECT_EQ(found.size(), 1U) << id << " " << found;
        return found.empty() ? nlohmann::json() : found[0];
    }

    static std::string meaning(const nlohmann::json& finding) { return finding["meaning"]; }

    TestInstallation installation_;
};

TEST_F(LogChecks, AGoodLogHasANoteOfWhatItHolds) {
    installation_.write_logs({"#comment\n\n" + combined_line() +
                              combined_line({.time = "14:00:00"}) +
                              combined_line({.client = "-"})});
    EXPECT_EQ(check(installation_).status, 0);
    const nlohmann::json note = the("log-sample");
    EXPECT_EQ(note["file"], "logs/access_0");
    EXPECT_EQ(note["value"], "2000-10-10 13:55:36 UTC to 2000-10-10 14:00:00 UTC");
    EXPECT_EQ(note["meaning"], "3 of 3 (100 %) requests are accepted, 0 outside the replay period, "
                               "0 bad; 2 of 3 (66.7 %) of the accepted have a client address.");
}

TEST_F(LogChecks, ALogOfAnotherLayoutIsShownAsItsFields) {
    installation_.write_logs(
        {"# from here on\n" + repeated("10.0.0.1 - - \"GET /a HTTP/1.1\"\n", 3)});
    const nlohmann::json error = the("log-lines-rejected");
    EXPECT_EQ(error["severity"], "error");
    EXPECT_EQ(error["line"], 2);
    EXPECT_EQ(error["value"], "10.0.0.1 - - \"GET /a HTTP/1.1\"");
    EXPECT_EQ(meaning(error),
              "3 of 3 (100 %) requests in the sample are bad, too-few-fields: fewer fields than "
              "the field layout names. Its fields: 1 CLIENT_IP '10.0.0.1', 2 '-', 3 '-', 4 "
              "DATE_AND_TIME 'GET /a HTTP/1.1'; missing: 5 REQUEST_LINE, 6 STATUS_CODE. Also line "
              "3: 10.0.0.1 - - \"GET /a HTTP/1.1\"");
    EXPECT_NE(error["cure"], "");
}

TEST_F(LogChecks, FewBadLinesAreANoteAndManyAWarning) {
    const std::string good = repeated(combined_line(), 99);
    installation_.write_logs({good + "x\n", good + "x\n"});
    const nlohmann::json note = the("log-lines-rejected"); // of the first log that has some
    EXPECT_EQ(note["severity"], "note");
    EXPECT_EQ(note["line"], 100);
    installation_.write_logs({good + repeated("x\n", 11)});
    EXPECT_EQ(the("log-lines-rejected")["severity"], "warning");
}

// One that is cut off at its end, and one at a NUL byte.
TEST_F(LogChecks, LinesWithoutFields) {
    using namespace std::string_literals;
    installation_.write_logs({"10.0.0.1 [open\n" + "a\0b c\n"s});
    const nlohmann::json found = check(installation_).of("log-lines-rejected");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_NE(meaning(found[0]).find("It has no fields"), std::string::npos);
    EXPECT_NE(meaning(found[1]).find("1 CLIENT_IP 'a'; missing: 4"), std::string::npos);
}

TEST_F(LogChecks, ALogOutsideThePeriodIsAWarningAndAllOfThemAnError) {
    const std::string other = combined_line({.time = "20:00:00"});
    installation_.write_logs({combined_line(), other});
    const std::string logs = installation_.read(scenario_directory + "/web.conf");
    installation_.write_scenario("REPLAY_PERIOD START 10/10/2000 19:00:00\n" + logs);
    const nlohmann::json warning = the("log-outside-period");
    EXPECT_EQ(warning["severity"], "warning");
    EXPECT_EQ(warning["file"], "logs/access_0");
    EXPECT_NE(
        meaning(warning).find("from 2000-10-10 19:00:00 UTC to any time: 1 before, 0 after it"),
        std::string::npos)
        << warning;
    installation_.write_scenario("REPLAY_PERIOD END 10/09/2000 19:00:00\n" + logs);
    const CheckRun all = check(installation_);
    EXPECT_EQ(all.status, 2);
    const nlohmann::json error = the("log-outside-period");
    EXPECT_EQ(error["severity"], "error");
    EXPECT_EQ(error["file"], installation_.path(scenario_directory + "/web.conf"));
    EXPECT_EQ(error["line"], 1);
    EXPECT_EQ(error["value"], "2000-10-10 13:55:36 UTC to 2000-10-10 20:00:00 UTC");
    EXPECT_NE(meaning(error).find("0 before, 2 after it"), std::string::npos) << error;
    installation_.write("sys/replay_settings.default", "#\nGMT_OFFSET -0100\n");
    EXPECT_NE(the("log-outside-period")["cure"].get<std::string>().find(
                  "GMT_OFFSET in line 2 of " + installation_.path("sys/replay_settings.default")),
              std::string::npos);
}

TEST_F(LogChecks, AWrongSessionCookieIsNamedWithTheCookiesThatAreThere) {
    installation_.add_settings(cookie_settings);
    installation_.write_logs({repeated(combined_line({.more = "\"Session=1; lang=en\" -"}), 3) +
                              combined_line({.more = "\"lang=de\" \"theme=\x1b[2J; Path=/\""}) +
                              combined_line({.more = "- -"})});
    const nlohmann::json error = the("session-cookie-missing");
    EXPECT_EQ(error["severity"], "error");
    EXPECT_EQ(error["value"], "SESSION");
    EXPECT_EQ(error["file"], installation_.path(profile_directory + "/replay_settings.dat"));
    const Lines settings = lines_of(installation_.read(profile_directory + "/replay_settings.dat"));
    EXPECT_EQ(settings.at(error["line"].get<size_t>() - 1), "COOKIE_NAME SESSION");
    EXPECT_EQ(meaning(error),
              "5 of 5 (100 %) requests in the samples have no session cookie and do not count, "
              "unless a later response gives them their session. The cookies that they carry "
              "instead: lang in 80 %, Session in 60 %, theme in 20 %.");
    EXPECT_NE(std::string(error["cure"]).find("COOKIE_NAME Session;"), std::string::npos);
}

TEST_F(LogChecks, SessionsThatNoRequestHas) {
    installation_.add_settings(cookie_settings);
    const std::string with = combined_line({.more = "SESSION=1 -"});
    const std::string without = combined_line({.more = "- -"});
    installation_.write_logs({with + without});
    EXPECT_EQ(check(installation_).of("session-cookie-missing").size(), 0U);
    installation_.write_logs({with + without + without});
    const nlohmann::json warning = the("session-cookie-missing");
    EXPECT_EQ(warning["severity"], "warning");
    EXPECT_NE(meaning(warning).find("They carry no cookies."), std::string::npos);
    installation_.add_settings("");
    installation_.write_logs({combined_line({.client = "-"})});
    EXPECT_EQ(the("client-address-missing")["severity"], "error");
}

TEST_F(LogChecks, HostsThatTheLogsDoNotHold) {
    installation_.add_settings("AL_FIELD HOST_HEADER 7\n");
    const std::string line = combined_line({.more = "www.example.com"});
    installation_.write_logs({line, line});
    installation_.write_patterns("active|main|na|-|A|www.exmaple.com|-|na|/a\n"
                                 "active|main|na|-|B|www.example.com|-|na|/b\n");
    const nlohmann::json warning = the("unknown-host");
    EXPECT_EQ(warning["severity"], "warning");
    EXPECT_EQ(warning["line"], 1);
    EXPECT_EQ(warning["cure"], "Write www.example.com if that is meant, or na for any host.");
    installation_.write_logs({repeated(line, 50'000)}); // more than is sampled
    EXPECT_EQ(the("unknown-host")["severity"], "note");
}

TEST_F(LogChecks, ALargeLogIsSampledAtItsBeginningMiddleAndEnd) {
    const std::string line = combined_line({.url = "/" + std::string(900, 'x')});
    const std::string part = repeated(line, 3000); // about 3 MB
    installation_.write_logs({"first\n" + part + "not read\n" + part + "middle\n" + part +
                              "neither\n" + part + "last\n"});
    const nlohmann::json note = the("log-lines-rejected");
    EXPECT_EQ(note["value"], "first");
    EXPECT_EQ(note["line"], 1);
    EXPECT_EQ(meaning(note).substr(0, 5), "3 of ");
    EXPECT_EQ(meaning(note).find("Also middle"), std::string::npos) << note; // of a few, one line
    const std::string text = run_doctor(installation_, "check").output;
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST_F(LogChecks, WhatHoldsNoRequestsIsNoSample) {
    installation_.write_logs({"#Fields: a\n\n", "\x1f\x8b\x08packed\n", combined_line()});
    const CheckRun run = check(installation_);
    ASSERT_EQ(run.of("log-without-requests").size(), 1U);
    EXPECT_EQ(run.of("log-without-requests")[0]["file"], "logs/access_0");
    EXPECT_EQ(run.of("log-sample").size(), 1U);
    installation_.add_settings("AL_FIELD URL 5\n"); // two fields in one place
    EXPECT_EQ(check(installation_).of("log-sample").size(), 0U);
}

} // namespace
