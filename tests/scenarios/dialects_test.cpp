#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

// Log lines and what becomes of each: its row in the complete list, or a counter of the summary.
void expect_outcomes(const std::string& settings,
                     const std::vector<std::pair<std::string, std::string>>& cases) {
    TestInstallation installation;
    installation.write_settings("USER_SESSION_KEY client_ip\n" + settings);
    for (const auto& [line, outcome] : cases) {
        SCOPED_TRACE(line);
        installation.write_logs({line + "\n"});
        Summary summary = {.total = 1};
        summary.bad = outcome == "BadRequest";
        summary.non_session = outcome == "NonSessionRequest";
        summary.url_patterns = 1 - summary.bad - summary.non_session;
        EXPECT_EQ(installation.run().output, summary_line(summary));
        EXPECT_EQ(installation.complete_url_rows(),
                  summary.url_patterns == 1 ? Lines{outcome} : Lines{});
    }
}

TEST(Dialects, ApacheLines) {
    const std::string date = "[10/Oct/2000:13:55:36 +0000]";
    const std::string rest = " - - - - - h.example -";
    const std::string request = "10.0.0.1 - - " + date + " - \"GET /a?x=1 HTTP/1.1\" 200 1";
    expect_outcomes(
        "",
        {
            {" \t" + request + "\t- - - - - - - 16 17 18 19 20 21 22 23 24 25 \"more",
             "GET|NA|1|-1|/a?x=1"},
            {request + " - - - - \"\" \"a host\" -", "GET|a host|1|-1|/a?x=1"},
            {request + " - - - - - h.example", "BadRequest"},
            {"1.2.3.4:80 - - " + date + " - \"AVERYVERYLONGMETHOD /b x y z u v\" x 1" + rest,
             "AVERYVERYLONGMET|h.example|1|-1|/b"},
            {"- - - " + date + " - \"GET /a HTTP/1.1\" 200 1" + rest, "NonSessionRequest"},
            {"300.1.1.1 - - " + date + " - \"GET /a HTTP/1.1\" 200 1" + rest, "BadRequest"},
            {"10.0.0.1 - - " + date + " - \"GET /a\" 200 1" + rest, "BadRequest"},
            {"10.0.0.1 - - [31/Dec/1969:23:59:58 +0000] - \"GET /a 1\" 200 1" + rest,
             "GET|h.example|1|-1|/a"},
            {"10.0.0.1 - - [31/Dec/1969:23:59:59 +0000] - \"GET /a 1\" 200 1" + rest, "BadRequest"},
            {"10.0.0.1 - - [10/Oct/2000:13:55:36] - \"GET /a HTTP/1.1\" 200 1" + rest,
             "BadRequest"},
        });
}

TEST(Dialects, IisLines) {
    const std::string start = "10.0.0.1 2000-10-10 20:55:36 ";
    const std::string rest = " HTTP/1.1 200 - - - - - h.example -";
    expect_outcomes("ACCESS_LOG_TYPE IIS\n",
                    {{start + "GET /a -" + rest, "GET|h.example|1|-1|/a"},
                     {start + "GET /a x=1&y=2" + rest, "GET|h.example|1|-1|/a?x=1&y=2"},
                     {start + "GET /a - HTTP/1.1 200 - - - - - h.example", "BadRequest"},
                     {"- 2000-10-10 20:55:36 GET /a -" + rest, "NonSessionRequest"},
                     {"10.0.0.1 2000-10-10 20:55 GET /a -" + rest, "BadRequest"}});
}

TEST(Dialects, OtherLines) {
    const std::string start = "10.0.0.1 2000-10-10 20:55:36 GET ";
    expect_outcomes(
        "ACCESS_LOG_TYPE custom\n",
        {{start + "/unused /a?x=1 200 - - - - - h.example -", "GET|h.example|1|-1|/a?x=1"}});
    expect_outcomes("ACCESS_LOG_TYPE WebLogic\nAL_FIELD CLIENT_IP 1\nAL_FIELD DATE 2\n"
                    "AL_FIELD TIME 3\nAL_FIELD METHOD 4\nAL_FIELD STATUS_CODE 7\n"
                    "AL_FIELD URL_QUERY 6\nAL_FIELD URL 5\n",
                    {{start + "/a /b?x 200", "GET|NA|1|-1|/b?x"},
                     {"1.1.1.1 - 20:55:36 GET /a /b 200", "BadRequest"}});
}

// The period begins and ends at 13:55:36 UTC; the request takes two seconds, less than a third.
TEST(Dialects, KeepTheBoundsOfThePeriodAfterTheResponseTime) {
    const std::string apache = "AL_FIELD DATE_AND_TIME 2\nAL_FIELD REQUEST_LINE 3\n";
    const std::string iis = "ACCESS_LOG_TYPE IIS\nAL_FIELD DATE 2\nAL_FIELD TIME 3\n"
                            "AL_FIELD METHOD 4\nAL_FIELD URL_QUERY 5\n";
    const std::tuple<std::string, std::string, long> rows[] = {
        // settings, line, accepted
        {apache, "[10/Oct/2000:13:55:38 +0000] \"GET /a 1\" - -", 1},
        {apache, "[10/Oct/2000:13:55:37 +0000] \"GET /a 1\" - -", 0},
        {apache, "[10/Oct/2000:13:55:39 +0000] \"GET /a 1\" - -", 0},
        {iis, "2000-10-10 13:55:38 GET /a", 1},
        {iis, "2000-10-10 13:55:39 GET /a", 0},
    };
    for (const auto& [settings, line, accepted] : rows) {
        TestInstallation installation;
        installation.write_settings("USER_SESSION_KEY client_ip\nCONSIDER_RESPONSE_TIME 1\n"
                                    "AL_FIELD CLIENT_IP 1\nAL_FIELD STATUS_CODE 6\n"
                                    "AL_FIELD RESPONSE_TIME_USEC 8\nAL_FIELD RESPONSE_TIME 7\n" +
                                    settings);
        installation.write("logs/access_0", "1.1.1.1 " + line + " 200 99 2999999\n");
        installation.write_scenario("REPLAY_LOG_FILE logs/access_0 x 0 HTTP\n"
                                    "REPLAY_PERIOD START 10/10/2000 13:55:36\n"
                                    "REPLAY_PERIOD END 10/10/2000 13:55:36\n");
        EXPECT_EQ(
            installation.run().output,
            summary_line({.total = 1, .time_filtered = 1 - accepted, .url_patterns = accepted}))
            << line;
    }
}

// Lines are read in pieces of 102,399 characters, line feed included; every piece uses up one line
// of the file's budget.
TEST(Dialects, LinesEndInTheirManyWaysAndLongOnesAreReadInPieces) {
    const std::string request = combined_line();
    const std::string bare = request.substr(0, request.size() - 1);
    const auto long_request = [&](size_t length) {
        return bare + " " + std::string(length - bare.size() - 1, 'x') + "\n" +
               combined_line({.url = "/b"});
    };
    const std::tuple<std::string, std::string, Summary> rows[] = {
        // text, budget, summary
        {bare + "\r\n\r\n\n#" + request, "0", {.total = 1, .url_patterns = 1}},
        {request + "\n#Fields: x\n" + request, "3", {.total = 1, .url_patterns = 1}},
        {request + bare, "0", {.total = 1, .url_patterns = 1}},
        {request + bare, "2", {.total = 2, .url_patterns = 1}},
        {"\r\r\n" + request, "0", {.total = 2, .bad = 1, .url_patterns = 1}},
        {long_request(102'398), "0", {.total = 2, .url_patterns = 2}},
        {long_request(102'399), "0", {.total = 1, .url_patterns = 1}},
        {long_request(102'399), "3", {.total = 2, .url_patterns = 2}},
        {long_request(102'400), "3", {.total = 3, .bad = 1, .url_patterns = 2}},
    };
    for (const auto& [text, budget, summary] : rows) {
        TestInstallation installation;
        installation.write("log", text);
        installation.name_logs({"log"}, budget);
        EXPECT_EQ(installation.run().output, summary_line(summary)) << text.substr(0, 300);
    }
}

} // namespace
