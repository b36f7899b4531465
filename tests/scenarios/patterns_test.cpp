#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Rows = std::vector<std::string>;

const std::string profile = "profile 'default/default/web'";

TEST(PatternFiles, AreRefusedAtTheLineThatIsWrong) {
    const std::string main_line = "active|main|na|x|Tx|na|x|NA|/a\n";
    const struct {
        std::string patterns;
        std::string message;
    } rows[] = {
        {main_line + "active|main|na|x|Tx|na|x|NA\n",
         "Invalid entry at line '2' in 'replay_url_patterns.dat' for " + profile},
        {main_line + "status|type\n",
         "Invalid entry at line '2' in 'replay_url_patterns.dat' for " + profile},
        {"ACTIVE|Inline|na|x|Tx|na|x|NA|/a(\n",
         "Failed to compile url pattern given at line '1' in 'replay_url_patterns.dat' for " +
             profile},
        {"active|main|na|x|Tx|na|x|NA|" + std::string(2048, 'a') + "\n",
         "Failed to compile url pattern given at line '1' in 'replay_url_patterns.dat' for " +
             profile},
        {"active|main|na|x|Tx|na|x|/no/such|/a\n",
         "Post data File '/no/such' not found for profile default/default/web"},
    };
    for (const auto& row : rows) {
        TestInstallation installation;
        installation.write_patterns(row.patterns);
        expect_failure(installation.run(), row.message);
        installation.write_filters("active|na|x|na\n");
        expect_failure(installation.run(), "Invalid filter pattern at line '1' in "
                                           "'replay_url_filter_patterns.dat' in " +
                                               profile);
        installation.write_filters("Status|x\nother|x|x|x|(\nactive|na|x|na|[\n");
        expect_failure(installation.run(), "Invalid url pattern at line '3' in "
                                           "'replay_url_filter_patterns.dat' in " +
                                               profile);
    }
}

TEST(PatternFiles, LookForPostDataInTheProfile) {
    TestInstallation installation;
    const std::string path =
        (installation.root() / TestInstallation::profile_directory() / "pay.dat").string();
    installation.write_patterns("active|main|na|x|Pay|na|x|pay.dat|/pay\n");
    expect_failure(installation.run(),
                   "Post data File '" + path + "' not found for profile default/default/web");
    installation.write(TestInstallation::profile_directory() + "/pay.dat", "x=1");
    installation.write_logs({combined_line({.url = "/pay", .method = "post"}) +
                             combined_line({.url = "/pay", .method = "PUT"}) +
                             combined_line({.url = "/pay", .method = "GET"})});
    EXPECT_EQ(installation.run().status, 0);
    EXPECT_EQ(installation.url_rows(), (Rows{"NO|MAIN|GET|/pay|1|Pay|NA|-1|NA|/pay",
                                             "NO|MAIN|post|/pay|1|Pay|NA|-1|" + path + "|/pay",
                                             "NO|MAIN|PUT|/pay|1|Pay|NA|-1|" + path + "|/pay"}));
}

// The pattern whose text sorts first wins; of one text, the first line whose method and host fit.
TEST(Patterns, MatchTheirMethodAndHost) {
    TestInstallation installation;
    installation.add_settings("AL_FIELD HOST_HEADER 7\n");
    installation.write_patterns(
        "active|main|POST|x|Post|na|x|NA|/p*\nactive|main|na|x|H1|h1|x|NA|/p*\n"
        "active|main|Na|x|Any|nA|x|NA|/p*\nactive|main|na|x|Dot|na|x|NA|/.r\n");
    installation.write_logs(
        {combined_line({.url = "/p", .method = "post", .more = "h1"}) +
         combined_line({.url = "/pq", .more = "h1"}) + combined_line({.url = "/pq", .more = "H1"}) +
         combined_line({.url = "/p", .more = "H1"}) + combined_line({.url = "/pr", .more = "h1"}) +
         combined_line({.url = "/a/p", .more = "h1"})});
    installation.run();
    EXPECT_EQ(installation.url_rows(),
              (Rows{"NO|MAIN|GET|/a/p|1|NA|h1|-1|NA|NA", "NO|MAIN|GET|/p|1|Any|H1|-1|NA|/p*",
                    "NO|MAIN|post|/p|1|Post|h1|-1|NA|/p*", "NO|MAIN|GET|/pq|1|Any|H1|-1|NA|/p*",
                    "NO|MAIN|GET|/pq|1|H1|h1|-1|NA|/p*", "NO|MAIN|GET|/pr|1|Dot|h1|-1|NA|/.r"}));
}

TEST(Patterns, TheFirstTableThatMatchesDecides) {
    TestInstallation installation;
    installation.write_patterns("active|main|na|x|Home|na|x|NA|/\n"
                                "active|main|na|x|All|na|x|NA|/shop*\n"
                                "active|inline|na|x|x|na|x|x|*.gif\n"
                                "active|MAIN_WITHOUT_TX|na|x|x|na|x|x|/ping\n"
                                "active|main_without_tx|na|x|x|na|x|x|/shop*\n");
    installation.write_filters("status|method|x|host|pattern\nactive|POST|x|NA|/shop/f*\n");
    installation.write_logs({combined_line({.url = "/ping"}) + combined_line({.url = "/"}) +
                             combined_line({.url = "/z.gif"}) + combined_line({.url = "/z.gif"}) +
                             combined_line({.url = "/shop/f.gif", .method = "POST"}) +
                             combined_line({.url = "/shop/f.gif"}) +
                             combined_line({.url = "/shop/g"}) + combined_line({.url = "/zz"})});
    const Rows main_rows = {
        "NO|MAIN|GET|/|1|Home|NA|-1|NA|/", "YES|MAIN|POST|/shop/f.gif|1|NA|NA|-1|NA|/shop/f*",
        "NO|MAIN|GET|/shop/g|1|All|NA|-1|NA|/shop*", "NO|MAIN|GET|/zz|1|NA|NA|-1|NA|NA",
        "NO|MAIN_WITHOUT_TX|GET|/ping|1|NA|NA|-1|NA|/ping"};
    Rows all_rows = main_rows;
    all_rows.insert(all_rows.end(), {"NO|INLINE|GET|/shop/f.gif|1|NA|NA|-1|NA|*.gif",
                                     "NO|INLINE|GET|/z.gif|2|NA|NA|-1|NA|*.gif"});
    for (const char* mode : {"skip", "auto", "x", "AsPerLog"}) {
        const bool shows_inline = mode[0] == 'A';
        installation.add_settings("INLINE_OBJECT_MODE " + std::string(mode) + "\n");
        EXPECT_EQ(installation.run().output, summary_line({.total = 8,
                                                           .inline_filtered = shows_inline ? 0 : 3,
                                                           .url_patterns = shows_inline ? 7 : 5}));
        EXPECT_EQ(installation.url_rows(), shows_inline ? all_rows : main_rows);
    }
    EXPECT_EQ(installation.complete_url_rows().size(), 7U);
}

} // namespace
