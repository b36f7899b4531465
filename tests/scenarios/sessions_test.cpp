#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

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

    RunResult run(const std::vector<std::string>& logs,
                  const std::vector<std::string>& words = {"-t", "1"}) const {
        installation_.write_logs(logs);
        return installation_.run(words);
    }

    std::string trace() const { return installation_.result("akaau.trace"); }

    TestInstallation installation_;
};

TEST_F(Sessions, TakeTheirIdsFromCookieAndSetCookie) {
    const std::string long_value(63, 'v');
    const struct {
        std::string cookie;
        std::string set_cookie;
        std::string secondary_id;
        std::string session_id;
    } rows[] = {
        {"akaau=K1; JSESSIONID=S1", "JSESSIONID=S2", "=K1", "S2"},
        {"akaau=K1", "XJSESSIONID=S3; Path=/; JSESSIONID=S4", "=K1", "S3"},
        {"akaau=K1", "akaau=K2; JSESSIONID=S1; Path=/", "=K2", "S1"},
        {"Xakaau:K1;akaau=K2", "JSESSIONID S1;", ":K1", "S1"},
        {"akaau=K1", "JSESSIONID", "=K1", ""},
        {"akaau=K1", "JSESSIONID=" + long_value + "v", "=K1", long_value},
        {"akaau=" + long_value, "JSESSIONID=S1", "=" + long_value.substr(1), "S1"},
    };
    for (const auto& row : rows) {
        run({cookie_line("/a", row.cookie, row.set_cookie)}, {"-a"});
        EXPECT_EQ(trace(), "Akaau='" + row.secondary_id + "' matched with JSESSIONID='" +
                               row.session_id +
                               "' [thread[0], file name-logs/access_0, line_number-1]\n")
            << row.cookie << " | " << row.set_cookie;
    }
}

TEST_F(Sessions, RequestsWithoutOneAreCountedAndLeftOut) {
    const std::vector<std::string> logs = {
        cookie_line("/a", "JSESSIONID=S1") + cookie_line("/b", "JSESSIONID=") +
        cookie_line("/c", "-") + cookie_line("/d", "akaau=K1") + cookie_line("/e", "", "akaau=K1")};
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
              (std::vector<std::string>{"GET|NA|1|-1|/a", "GET|NA|1|-1|/c", "GET|NA|1|-1|/d"}));
}

TEST_F(Sessions, AreNotMatchedAcrossThreads) {
    installation_.write("logs/one/log", cookie_line("/a", "akaau=K1"));
    installation_.write("logs/two/log", cookie_line("/b", "akaau=K1", "JSESSIONID=S1"));
    installation_.write_scenario("REPLAY_LOG_FILE logs/two/log x 0 HTTP\n"
                                 "REPLAY_LOG_FILE logs/one/log x 0 HTTP\n");
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
    EXPECT_EQ(installation_.complete_url_rows(), std::vector<std::string>{"GET|NA|1|-1|/with"});
    EXPECT_EQ(
        installation_.debug_lines(),
        (std::vector<std::string>{
            "load_url_info|Max unaccounted URL limit reached. No new request will be processed.",
            "process_url_files_t|Max unaccounted urls reached, No more new files will be "
            "processed"}));
    EXPECT_EQ(lines_of(trace()).back(), "Maximum unaccounted url limit(250000) reached, no new "
                                        "request will be processed");
}

} // namespace
