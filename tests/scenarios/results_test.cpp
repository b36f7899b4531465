#include "tests/support/test_installation.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <tuple>

namespace {

// Texts of 16 characters whose std::hash is the same for all: the second half of each undoes what
// the first one did, which anybody can work out, as that hash has no secret.
std::string colliding_text(int number) {
    constexpr uint64_t multiplier = 0xc6a4a7935bd1e995;
    constexpr uint64_t inverse = 0x5f7a0ea7e59b19bd;
    static_assert(multiplier * inverse == 1);
    const auto fold = [](uint64_t word) { return word ^ word >> 47; };
    std::string text = std::to_string(10'000'000 + number);
    uint64_t word;
    std::memcpy(&word, text.data(), sizeof word);
    const uint64_t start = 0xc70f6907 ^ 2 * sizeof word * multiplier;
    word = inverse * fold(inverse * ((start ^ fold(word * multiplier) * multiplier) * multiplier));
    return text.append(reinterpret_cast<const char*>(&word), sizeof word);
}

// Seconds that a processor works on a run with these hosts.
double time_with_hosts(const TestInstallation& installation, const Lines& hosts) {
    std::string list = "#Method|Host|Count|Query_Offset|Url\n";
    for (const std::string& host : hosts) {
        list += "GET|" + host + "|1|-1|/a\n";
    }
    installation.write_result("complete_url.list", list);
    rusage before;
    rusage after;
    getrusage(RUSAGE_CHILDREN, &before);
    EXPECT_EQ(installation.run().counter("TotalUrlPattern"), static_cast<long>(hosts.size()));
    getrusage(RUSAGE_CHILDREN, &after);
    return static_cast<double>(after.ru_utime.tv_sec - before.ru_utime.tv_sec) +
           static_cast<double>(after.ru_utime.tv_usec - before.ru_utime.tv_usec) / 1e6;
}

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

TEST(Hosts, MadeToCollideCostNoMoreTimeThanOthers) {
    TestInstallation installation;
    installation.write_checker(2);
    Lines ordinary;
    Lines colliding;
    for (int i = 0; colliding.size() < 40'000; ++i) {
        const std::string text = colliding_text(i);
        ASSERT_EQ(std::hash<std::string>()(text), std::hash<std::string>()(colliding_text(0)));
        if (text.find_first_of(std::string("|\n\0", 3)) == text.npos) {
            colliding.push_back(text);
            ordinary.push_back(std::to_string(1'000'000'000'000'000 + i));
        }
    }
    const double ordinary_time = time_with_hosts(installation, ordinary);
    EXPECT_LT(time_with_hosts(installation, colliding), 10 * ordinary_time);
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
