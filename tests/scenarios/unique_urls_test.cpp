#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Rows = std::vector<std::string>;

class UniqueUrls : public testing::Test {
  protected:
    UniqueUrls() { use(""); }

    void use(const std::string& settings) const {
        installation_.add_settings("AL_FIELD HOST_HEADER 7\nAL_FIELD LOCATION 8\n" + settings);
    }

    RunResult run(const std::string& log) const {
        installation_.write_logs({log});
        return installation_.run();
    }

    TestInstallation installation_;
};

std::string host_line(const std::string& url, const std::string& method = "GET",
                      const std::string& host = "h") {
    return combined_line({.url = url, .method = method, .more = host + " -"});
}

std::string redirect_line(const std::string& url, const std::string& location, int status = 302) {
    return combined_line({.url = url, .status = status, .more = "h " + location});
}

const std::string query_log = host_line("/b;s=1?x") + host_line("/a?x=1") + host_line("/a") +
                              host_line("/c#t") + host_line("/a?") + host_line("/a?x=1;y") +
                              host_line("/a?z", "GET", "g") + host_line("?q");

TEST_F(UniqueUrls, AreCutAtTheirQueryWhoseTextsAreListed) {
    use("IGNORE_URL_QUERY_PARAM 1\n");
    EXPECT_EQ(run(query_log).output, summary_line({.total = 8, .url_patterns = 6}));
    EXPECT_EQ(installation_.complete_url_rows(),
              (Rows{"GET|h|1|-1|/a", "GET|g|1|0|/a?*", "GET|h|3|5|/a?*", "GET|h|1|25|/b;*",
                    "GET|h|1|34|/c#*", "GET|h|1|39|?*"}));
    EXPECT_EQ(installation_.result("query_url.list"),
              "/a?z\n/a?x=1\n/a?\n/a?x=1;y\n/b;s=1?x\n/c#t\n?q\n");
}

TEST_F(UniqueUrls, DifferByUrlMethodAndHost) {
    run(host_line("/b") + host_line("/a?x") + host_line("/a", "get") + host_line("/a", "GET") +
        host_line("/a", "POST", "g") + host_line("/a", "GET", "H") + host_line("/a", "Get") +
        host_line("/A") + host_line("/a", "GET", "-"));
    EXPECT_EQ(installation_.complete_url_rows(),
              (Rows{"GET|h|1|-1|/A", "GET|H|1|-1|/a", "GET|NA|1|-1|/a", "get|h|3|-1|/a",
                    "POST|g|1|-1|/a", "GET|h|1|-1|/a?x", "GET|h|1|-1|/b"}));
    EXPECT_EQ(installation_.result("hosts.list"), "H\nNA\ng\nh\n");
}

// Each log names the requests that are dropped because a redirect before them led there.
TEST_F(UniqueUrls, AreWithoutTheFollowUpsOfRedirects) {
    const struct {
        std::string log;
        long redirected;
    } rows[] = {
        {redirect_line("/a", "http://h/b") + host_line("/b"), 1},
        {redirect_line("/a", "HTTP://H/B?x") + host_line("/b?X"), 1},
        {redirect_line("/a", "https://h/b") + host_line("/b") + host_line("/b"), 1},
        {redirect_line("/a", "http://g/b") + host_line("/b"), 0},
        {redirect_line("/a", "/b") + host_line("/b", "GET", "g"), 1},
        {redirect_line("/x/y/a?/z", "../b") + host_line("/x/b"), 1},
        {redirect_line("/x/a", "../../b") + host_line("/b"), 0},
        {redirect_line("/a", "/b", 307) + host_line("/b"), 1},
        {redirect_line("/a", "/b", 303) + host_line("/b"), 0},
        {redirect_line("/a", "/b") + redirect_line("/b", "/c") + host_line("/c"), 2},
        {redirect_line("/a", "/a") + redirect_line("/a", "/a") + host_line("/a"), 2},
        {redirect_line("/a", "/b") + redirect_line("/a", "/b") + host_line("/b") + host_line("/b"),
         2},
        {combined_line({.url = "/b", .time = "13:55:37", .more = "h -"}) +
             redirect_line("/a", "/b"),
         1},
        {redirect_line("/a", "/b") +
             combined_line({.url = "/b", .client = "10.0.0.2", .more = "h -"}),
         0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(run(row.log).counter("Redirected"), row.redirected) << row.log;
    }
    use("AUTO_REDIRECT 0\n");
    EXPECT_EQ(run(rows[0].log).counter("Redirected"), 0);
}

TEST_F(UniqueUrls, RememberSixteenRedirectsOfASession) {
    std::string log;
    for (int i = 1; i <= 18; ++i) {
        log += redirect_line("/from", "/to" + std::to_string(i));
    }
    for (int i = 1; i <= 18; ++i) {
        log += host_line("/to" + std::to_string(i));
    }
    EXPECT_EQ(run(log).counter("Redirected"), 16);
    EXPECT_EQ(installation_.complete_url_rows(),
              (Rows{"GET|h|18|-1|/from", "GET|h|1|-1|/to1", "GET|h|1|-1|/to17"}));
}

} // namespace
