#include "tests/support/test_installation.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>

namespace {

// The host column takes the pattern's host, then the URL's own.
TEST(Results, ShowTheHostThatApplies) {
    TestInstallation installation;
    installation.add_settings("AL_FIELD HOST_HEADER 7\n");
    installation.write_patterns("active|main|na|x|T|na|x|NA|/any\n"
                                "active|main|na|x|T|h1|x|NA|/one\n");
    installation.write_logs({combined_line({.url = "/any", .more = "h1"}) +
                             combined_line({.url = "/any", .more = "na"}) +
                             combined_line({.url = "/one", .more = "h1"}) +
                             combined_line({.url = "/two", .more = "na"}) +
                             combined_line({.url = "/two", .more = "-"})});
    installation.run();
    EXPECT_EQ(installation.url_rows(),
              (Lines{"NO|MAIN|GET|/any|1|T|h1|-1|NA|/any", "NO|MAIN|GET|/any|1|T|NA|-1|NA|/any",
                     "NO|MAIN|GET|/one|1|T|h1|-1|NA|/one", "NO|MAIN|GET|/two|1|NA|NA|-1|NA|NA",
                     "NO|MAIN|GET|/two|1|NA|na|-1|NA|NA"}));
    EXPECT_EQ(installation.result("hosts.list"), "NA\nh1\nna\n");
}

// Files that this process writes end at this size, as they would on a full disk.
void limit_file_size(rlim_t size) {
    const rlimit limit = {size, size};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);
}

class FullDisk : public testing::Test {
  protected:
    FullDisk() { write_lines("/a?q=", ""); }

    // Forty requests, each with its own number behind the URL.
    void write_lines(const std::string& url, const std::string& more) const {
        std::string log;
        for (int i = 100; i < 140; ++i) {
            log += combined_line({.url = url + std::to_string(i), .more = more});
        }
        installation_.write_logs({log});
    }

    void expect_no_room(rlim_t size, const Lines& words = {}) {
        EXPECT_EQ(installation_.run(words).status, 0);
        installation_.prepare_process([size] { limit_file_size(size); });
        expect_some_failure(installation_.run(words));
    }

    TestInstallation installation_;
};

TEST_F(FullDisk, StopsAtTheBackup) {
    installation_.write_scenario(std::string(2000, '#'));
    installation_.prepare_process([] { limit_file_size(1000); });
    const RunResult run = installation_.run();
    expect_failure(run, "Failed to run command 'cp " + installation_.path(scenario_directory) +
                            "/web.conf " + run.backup_directory + "'");
}

TEST_F(FullDisk, StopsAtTheQueries) {
    installation_.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
    write_lines("/a?q=" + std::string(50, 'q'), "");
    installation_.prepare_process([] { limit_file_size(2000); });
    expect_failure(installation_.run(), "Failed to write to query_url.list");
    EXPECT_FALSE(installation_.has_result("complete_url.list"));
}

TEST_F(FullDisk, StopsAtTheCompleteList) {
    expect_no_room(700);
    EXPECT_EQ(installation_.result("complete_url.list").size(), 700U);
}

TEST_F(FullDisk, StopsAtTheUrlList) {
    expect_no_room(1500);
    EXPECT_LT(installation_.result("complete_url.list").size(), 1500U);
    EXPECT_EQ(installation_.result("url.list").find("Total="), std::string::npos);
}

TEST_F(FullDisk, StopsAtTheHosts) {
    std::string list = "#Method|Host|Count|Query_Offset|Url\n";
    for (int i = 100; i < 140; ++i) {
        list += "GET|" + std::to_string(i) + std::string(50, 'h') + "|1|-1|/a\n";
    }
    installation_.write(config_directory + "/complete_url.list", list);
    installation_.write_checker(2);
    expect_no_room(1500);
    EXPECT_EQ(installation_.result("hosts.list").size(), 1500U);
}

TEST_F(FullDisk, StopsAtTheTrace) {
    installation_.add_settings("USER_SESSION_KEY cookie\nCOOKIE_NAME J\n"
                               "AL_FIELD REQUEST_COOKIE 7\nIGNORE_URL_QUERY_PARAM 1\n"
                               "DUMP_QUERY_STRING_URL 0\n");
    write_lines("/a?q=", "akaau=K");
    expect_no_room(2500, {"-a"});
    EXPECT_EQ(installation_.result("akaau.trace").size(), 2500U);
}

} // namespace
