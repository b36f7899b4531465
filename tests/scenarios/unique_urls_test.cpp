#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>

TEST(UniqueUrls, AreWithoutTheFollowUpsOfRedirects) {
    const std::tuple<std::string, std::string, std::string, std::string, long> rows[] = {
        // settings, URL, its location, URL of the next request, redirected
        {"", "/a", "http://h/b", "/b", 1},          {"", "/a", "HTTPS://H/B?x", "/b?X", 1},
        {"", "/x/y/a?/z", "../b", "/x/b", 1},       {"", "/x/a", "../../b", "/b", 0},
        {"AUTO_REDIRECT 0\n", "/a", "/b", "/b", 0},
    };
    for (const auto& [settings, url, location, next_url, redirected] : rows) {
        TestInstallation installation;
        installation.add_settings("AL_FIELD HOST_HEADER 7\nAL_FIELD LOCATION 8\n" + settings);
        installation.write_logs(
            {combined_line({.url = url, .status = 302, .more = "h " + location}) +
             combined_line({.url = next_url, .more = "h -"})});
        EXPECT_EQ(installation.run().counter("Redirected"), redirected) << url << " " << location;
    }
}
