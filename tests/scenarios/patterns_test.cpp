#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>

TEST(PatternFiles, AreRefusedAtTheLineThatIsWrong) {
    const std::string start = "active|main|na|x|Tx|na|x|NA";
    const std::string in_patterns =
        "in 'replay_url_patterns.dat' for profile 'default/default/web'";
    const std::string in_filters =
        "in 'replay_url_filter_patterns.dat' in profile 'default/default/web'";
    const std::string not_compiled = "Failed to compile url pattern given at line ";
    const std::string longest_comment(4095, '#');
    const std::string a_2047(2047, 'a'), stars_1023(1023, '*');
    const std::tuple<std::string, std::string, std::string> rows[] = {
        // patterns, filters, message
        {start + "|/a\n" + start + "\n", "", "Invalid entry at line '2' " + in_patterns},
        {start + "|/a\nstatus|type\n", "", "Invalid entry at line '2' " + in_patterns},
        {longest_comment + "\n" + longest_comment + "active\n", "",
         "Invalid entry at line '4' " + in_patterns},
        {"ACTIVE|Inline|na|x|Tx|na|x|NA|/a(\n", "", not_compiled + "'1' " + in_patterns},
        {start + "|" + a_2047 + "\n" + start + "|" + a_2047 + "a\n", "",
         not_compiled + "'2' " + in_patterns},
        {start + "|/" + stars_1023 + "\n" + start + "|/" + stars_1023 + "a\n", "",
         not_compiled + "'2' " + in_patterns},
        {start + "|/a{32768}\n", "", not_compiled + "'1' " + in_patterns},
        {"active|main|na|x|Tx|na|x|/no/such|/a\n", "",
         "Post data File '/no/such' not found for profile default/default/web"},
        {start + "|/a(\n", "active|na|x|na\n", "Invalid filter pattern at line '1' " + in_filters},
        {"", longest_comment + "\n" + longest_comment + "active\n",
         "Invalid filter pattern at line '4' " + in_filters},
        {start + "|/a(\n", "Status|x\nother|x|x|x|(\nactive|na|x|na|[\n",
         "Invalid url pattern at line '3' " + in_filters},
    };
    for (const auto& [patterns, filters, message] : rows) {
        TestInstallation installation;
        installation.write_patterns(patterns);
        installation.write_filters(filters);
        expect_failure(installation.run(), message);
    }
}

// Between many others: of patterns with one text, the first counts.
TEST(PatternFiles, LookForPostDataInTheProfile) {
    TestInstallation installation;
    const std::string path = installation.path(profile_directory + "/pay.dat");
    const std::string method(16, 'M'); // the greatest length
    std::string patterns = "active|main|na|x|Pay|na|x|pay.dat|/pay|more\n";
    for (int i = 0; i < 1500; ++i) {
        patterns += "active|main|na|x|Later" + std::to_string(i) + "|na|x|NA|/pay\n";
    }
    patterns += "active|main|" + method + "CUT|x|Long|na|x|NA|/long\n";
    installation.write_patterns(patterns);
    expect_failure(installation.run(),
                   "Post data File '" + path + "' not found for profile default/default/web");
    installation.write_profile("pay.dat", "x=1");
    installation.write_logs({combined_line({.url = "/pay", .method = "post"}) +
                             combined_line({.url = "/pay", .method = "PUT"}) +
                             combined_line({.url = "/pay", .method = "GET"}) +
                             combined_line({.url = "/long", .method = method + "off"})});
    EXPECT_EQ(installation.run().status, 0);
    EXPECT_EQ(installation.url_rows(), (Lines{"NO|MAIN|" + method + "|/long|1|Long|NA|-1|NA|/long",
                                              "NO|MAIN|GET|/pay|1|Pay|NA|-1|NA|/pay",
                                              "NO|MAIN|post|/pay|1|Pay|NA|-1|" + path + "|/pay",
                                              "NO|MAIN|PUT|/pay|1|Pay|NA|-1|" + path + "|/pay"}));
}
