#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

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

std::string host_line(const std::string& url, const std::string& host = "h") {
    return combined_line({.url = url, .more = host + " -"});
}

std::string redirect_line(const std::string& url, const std::string& location, int status = 302) {
    return combined_line({.url = url, .status = status, .more = "h " + location});
}

// Each log names the requests that are dropped because a redirect before them led there.
TEST_F(UniqueUrls, AreWithoutTheFollowUpsOfRedirects) {
    const std::pair<std::string, long> rows[] = {
        // log, redirected
        {redirect_line("/a", "http://h/b") + host_line("/b"), 1},
        {redirect_line("/a", "HTTP://H/B?x") + host_line("/b?X"), 1},
        {redirect_line("/a", "https://h/b") + host_line("/b") + host_line("/b"), 1},
        {redirect_line("/a", "http://g/b") + host_line("/b"), 0},
        {redirect_line("/a", "/b") + host_line("/b", "g"), 1},
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
    for (const auto& [log, redirected] : rows) {
        EXPECT_EQ(run(log).counter("Redirected"), redirected) << log;
    }
    use("AUTO_REDIRECT 0\n");
    EXPECT_EQ(run(rows[0].first).counter("Redirected"), 0);
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
              (Lines{"GET|h|18|-1|/from", "GET|h|1|-1|/to1", "GET|h|1|-1|/to17"}));
}

} // namespace
