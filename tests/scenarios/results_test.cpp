#include "tests/support/test_installation.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>

namespace {

// The error line of a run whose files may have this size holds this text.
void expect_no_room(TestInstallation& installation, size_t size, const std::string& text) {
    installation.prepare_process([size] { limit_file_size(size); });
    const RunResult run = installation.run({"-a"});
    expect_some_failure(run);
    EXPECT_NE(run.output.find(text), std::string::npos) << run.output;
    EXPECT_EQ(installation.result("url.list").find("Total="), std::string::npos);
}

TEST(FullDisk, StopsTheRunAtTheFileThatHasNoRoom) {
    const std::string cut = "IGNORE_URL_QUERY_PARAM 1\n";
    const std::string cookies = "USER_SESSION_KEY cookie\nCOOKIE_NAME J\n"
                                "AL_FIELD REQUEST_COOKIE 7\nDUMP_QUERY_STRING_URL 0\n";
    const std::tuple<size_t, std::string, std::string> rows[] = {
        // size, settings, text of the error line
        {1000, std::string(2000, '#'), "Failed to run command 'cp "},
        {1500, cut, "Failed to write to query_url.list\n"},
        {1500, "", "/complete_url.list\n"},
        {3500, "", "/url.list\n"},
        {2500, cut + cookies, "Failed to write to akaau.trace file\n"},
    };
    std::string log;
    for (int i = 100; i < 140; ++i) {
        log += combined_line(
            {.url = "/a?" + std::string(50, 'q') + std::to_string(i), .more = "akaau=K"});
    }
    for (const auto& [size, settings, text] : rows) {
        SCOPED_TRACE(text);
        TestInstallation installation;
        installation.add_settings(settings);
        installation.write_logs({log});
        expect_no_room(installation, size, text);
    }
}

TEST(FullDisk, StopsTheRunAtTheHosts) {
    TestInstallation installation;
    std::string list = "#Method|Host|Count|Query_Offset|Url\n";
    for (int i = 100; i < 140; ++i) {
        list += "GET|" + std::to_string(i) + std::string(50, 'h') + "|1|-1|/a\n";
    }
    installation.write_result("complete_url.list", list);
    installation.write_checker(2);
    expect_no_room(installation, 1500, "/hosts.list\n");
}

} // namespace
