#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>

namespace {

const std::string cookie_layout = "USER_SESSION_KEY cookie\nCOOKIE_NAME JSESSIONID\n"
                                  "AL_FIELD REQUEST_COOKIE 7\nAL_FIELD SET_COOKIE 8\n";

std::string cookie_line(const std::string& url, const std::string& cookie,
                        const std::string& set_cookie = "-") {
    return combined_line(
        {.url = url, .client = "-", .more = "\"" + cookie + "\" \"" + set_cookie + "\""});
}

class Sessions : public testing::Test {
  protected:
    Sessions() { installation_.add_settings(cookie_layout); }

    RunResult run(const Lines& logs, const Lines& words = {"-t", "1"}) const {
        installation_.write_logs(logs);
        return installation_.run(words);
    }

    std::string trace() const { return installation_.result("akaau.trace"); }

    TestInstallation installation_;
};

TEST_F(Sessions, TakeTheirIdsFromCookieAndSetCookie) {
    const std::string long_value(63, 'v');
    const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
        // cookie, set_cookie, secondary_id, session_id
        {"akaau=K1; JSESSIONID=S1", "JSESSIONID=S2", "=K1", "S2"},
        {"akaau=K1", "XJSESSIONID=S3; Path=/; JSESSIONID=S4", "=K1", "S3"},
        {"akaau=K1", "akaau=K2; JSESSIONID=S1; Path=/", "=K2", "S1"},
        {"Xakaau:K1;akaau=K2", "JSESSIONID S1;", ":K1", "S1"},
        {"akaau=K1", "JSESSIONID", "=K1", ""},
        {"akaau=K1", "a=1; JSESSIONID=A B=C ; JSESSIONID=D", "=K1", "A B=C "},
        {"akaau=K1", "JSESSIONID;x=1", "=K1", "x=1"},
        {"akaau=K1", "JSESSIONID=" + long_value + "v", "=K1", long_value},
        {"akaau=K1", "JSESSIONID=" + std::string(90'000, 'v') + ";x", "=K1", long_value},
        {"akaau=" + long_value, "JSESSIONID=S1", "=" + long_value.substr(1), "S1"},
    };
    for (const auto& [cookie, set_cookie, secondary_id, session_id] : rows) {
        run({cookie_line("/a", cookie, set_cookie)}, {"-a"});
        EXPECT_EQ(trace(), "Akaau='" + secondary_id + "' matched with JSESSIONID='" + session_id +
                               "' [thread[0], file name-logs/access_0, line_number-1]\n")
            << cookie << " | " << set_cookie;
    }
}

TEST_F(Sessions, RequestsWithoutOneAreCountedAndLeftOut) {
    const Lines logs = {cookie_line("/a", "JSESSIONID=S1") + cookie_line("/b", "JSESSIONID=") +
                        cookie_line("/c", "jsessionid=S1") + cookie_line("/d", "akaau=K1") +
                        cookie_line("/e", "", "akaau=K1")};
    EXPECT_EQ(run(logs).output, summary_line({.total = 5, .non_session = 4, .url_patterns = 1}));
    EXPECT_EQ(run(logs, {"-a"}).output,
              "Total=5;Redirected=0;TimeBasedFiltered=0;BadRequest=0;NonSessionRequest=4;"
              "NonSessionRequestWithSecondaryCookie=2;InlineFilteredRequest=0;TotalUrlPattern=1\n");
    installation_.add_settings(cookie_layout + "IGNORE_NON_SESSION_URLS 0\n");
    EXPECT_EQ(run(logs, {"-a"}).output, summary_line({.total = 5, .url_patterns = 5}));
    EXPECT_EQ(lines_of(installation_.result("complete_url.list"))[4], "#NON_SESSION_URLS=4");
    installation_.add_settings(cookie_layout + "SECONDARY_COOKIE 0\n");
    EXPECT_EQ(run(logs, {"-a"}).counter("NonSessionRequestWithSecondaryCookie"), 0);
    installation_.add_settings(cookie_layout + "SECONDARY_COOKIE 1 K\n");
    EXPECT_EQ(run(logs, {"-a"}).counter("NonSessionRequestWithSecondaryCookie"), 2);
}

TEST_F(Sessions, ALaterSessionFillsEarlierRequestsOfItsSecondaryCookie) {
    const RunResult filled =
        run({cookie_line("/a", "akaau=K1") + cookie_line("/b", "akaau=K2") +
                 cookie_line("/c", "akaau=K1"),
             cookie_line("/d", "akaau=K1", "JSESSIONID=S1") + cookie_line("/e", "akaau=K1")},
            {"-a", "-t", "1"});
    EXPECT_EQ(trace(),
              "Akaau='=K1' added [thread[0], file name-logs/access_0, line number-1]\n"
              "Akaau='=K2' added [thread[0], file name-logs/access_0, line number-2]\n"
              "Akaau='=K1' added [thread[0], file name-logs/access_0, line number-3]\n"
              "Akaau='=K1' matched with JSESSIONID='S1' [thread[0], file name-logs/access_1, "
              "line_number-1]\n"
              "Akaau='=K1' updated [thread[0], file name-logs/access_0, line number-1]\n"
              "Akaau='=K1' updated [thread[0], file name-logs/access_0, line number-3]\n"
              "Akaau='=K1' added [thread[0], file name-logs/access_1, line number-2]\n");
    EXPECT_EQ(filled.counter("NonSessionRequest"), 2);
    EXPECT_EQ(filled.counter("NonSessionRequestWithSecondaryCookie"), 2);
    EXPECT_EQ(installation_.complete_url_rows(),
              (Lines{"GET|NA|1|-1|/a", "GET|NA|1|-1|/c", "GET|NA|1|-1|/d"}));
}

TEST_F(Sessions, AreNotMatchedAcrossThreads) {
    installation_.write("logs/one/log", cookie_line("/a", "akaau=K1"));
    installation_.write("logs/two/log", cookie_line("/b", "akaau=K1", "JSESSIONID=S1"));
    installation_.name_logs({"logs/two/log", "logs/one/log"});
    EXPECT_EQ(installation_.run({"-t", "1"}).counter("NonSessionRequest"), 0);
    EXPECT_EQ(installation_.run({"-t", "2"}).counter("NonSessionRequest"), 1);
}

// The thread ends at the request that finds no room, and takes neither it nor another file.
TEST_F(Sessions, AThreadKeepsAQuarterMillionRequestsWithoutASession) {
    std::string log;
    for (int i = 0; i < 250'000; ++i) {
        log += "- - - [1/Oct/2000:1:1:1 +0] \"GET /w 1\" 200 akaau=K -\n";
    }
    log += cookie_line("/with", "JSESSIONID=S1") + cookie_line("/full", "akaau=K2") +
           cookie_line("/later", "JSESSIONID=S1");
    const RunResult full =
        run({log, cookie_line("/next", "JSESSIONID=S1")}, {"-t", "1", "-d", "1", "-a"});
    EXPECT_EQ(full.counter("Total"), 250'002);
    EXPECT_EQ(full.counter("NonSessionRequestWithSecondaryCookie"), 250'000);
    EXPECT_EQ(installation_.complete_url_rows(), Lines{"GET|NA|1|-1|/with"});
    EXPECT_EQ(
        installation_.debug_lines(),
        (Lines{"load_url_info|Max unaccounted URL limit reached. No new request will be processed.",
               "process_url_files_t|Max unaccounted urls reached, No more new files will be "
               "processed"}));
    EXPECT_EQ(lines_of(trace()).back(), "Maximum unaccounted url limit(250000) reached, no new "
                                        "request will be processed");
}

} // namespace
