#include "tests/support/test_installation.h"

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace {

// Each log in its directory holds one line.
void write_instances(const TestInstallation& installation, const Lines& paths) {
    for (const std::string& path : paths) {
        installation.write(path, combined_line());
    }
    installation.name_logs(paths);
}

Lines separate_directories(int count) {
    Lines paths;
    for (int i = 0; i < count; ++i) {
        paths.push_back("d" + std::to_string(i) + "/access_log");
    }
    return paths;
}

TEST(Threads, ShareInstancesInOrder) {
    const std::tuple<Lines, std::string, std::vector<std::array<int, 2>>> rows[] = {
        // paths, threads, of each thread the first file and their number
        {separate_directories(10), "4", {{0, 3}, {3, 3}, {6, 3}, {9, 1}}},
        {separate_directories(5), "4", {{0, 2}, {2, 2}, {4, 1}}},
        {Lines{}, "8", {}},
        {{"l/b_2", "l/a_2", "l/b_1", "l/a_1", "l/a.1_0"}, "8", {{0, 1}, {1, 2}, {3, 2}}},
    };
    for (const auto& [paths, threads, files] : rows) {
        SCOPED_TRACE(testing::PrintToString(paths));
        TestInstallation installation;
        write_instances(installation, paths);
        const RunResult run = installation.run({"-t", threads, "-d", "3"});
        EXPECT_EQ(run.counter("Total"), static_cast<long>(paths.size()));
        Lines lines;
        for (const auto& [first, count] : files) {
            lines.push_back("Thread[" + std::to_string(lines.size()) +
                            "] created, seq_file_start_idx = " + std::to_string(first) +
                            ", num seq file = " + std::to_string(count) +
                            ", num_req = " + std::to_string(count) + " ");
        }
        EXPECT_EQ(installation.debug_lines_with("created, seq_file_start_idx"), lines);
    }
}

// Sessions, redirects and equal times run across the files of a thread and the threads.
std::string random_log(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](unsigned bound) { return std::to_string(random() % bound); };
    std::string log;
    for (int i = 0; i < 300; ++i) {
        log +=
            combined_line({.url = "/page" + below(7) + (random() % 2 == 0 ? "?q=" + below(9) : ""),
                           .method = random() % 3 == 0 ? "get" : "GET",
                           .client = random() % 9 == 0 ? "-" : "10.0.0." + below(9),
                           .time = "10:00:" + below(60),
                           .status = random() % 3 == 0 ? 302 : 200,
                           .more = "h" + below(3) + " /page" + below(7)});
        log += random() % 20 == 0 ? "broken\n" : "";
    }
    return log;
}

TEST(Threads, OfAnyNumberGiveTheSameResults) {
    TestInstallation installation;
    installation.add_settings("AL_FIELD HOST_HEADER 7\nAL_FIELD LOCATION 8\n"
                              "IGNORE_URL_QUERY_PARAM 1\n");
    const Lines paths = separate_directories(9);
    write_instances(installation, paths);
    for (size_t i = 0; i < paths.size(); ++i) {
        installation.write(paths[i], random_log(static_cast<unsigned>(i)));
    }
    Lines first;
    for (const char* thread_count : {"1", "2", "8"}) {
        const RunResult run = installation.run({"-t", thread_count});
        const Lines results = {run.output, installation.result("complete_url.list"),
                               installation.result("hosts.list"), installation.result("url.list"),
                               installation.result("query_url.list")};
        first = first.empty() ? results : first;
        EXPECT_EQ(results, first) << thread_count;
        EXPECT_GT(run.counter("Total"), 2700);
        EXPECT_GT(run.counter("Redirected"), 100);
    }
}

TEST(Threads, AFatalErrorEndsTheBusyOnes) {
    TestInstallation installation;
    std::string log;
    for (int i = 0; i < 20'000; ++i) {
        log += combined_line();
    }
    for (const char* path : {"a/log", "b/log", "c/log"}) {
        installation.write(path, log);
    }
    installation.name_logs({"gone/log", "a/log", "b/log", "c/log"}, "99999");
    const RunResult run = installation.run({"-t", "4", "-d", "4"});
    expect_failure(run, "Unable to open url file gone/log");
    EXPECT_FALSE(installation.has_result("complete_url.list"));
}

TEST(Threads, FailingTogetherReportOnce) {
    TestInstallation installation;
    installation.name_logs(separate_directories(8), "5");
    for (int attempt = 0; attempt < 25; ++attempt) {
        const RunResult run = installation.run({"-t", "8"});
        expect_some_failure(run);
        EXPECT_TRUE(run.output.starts_with("ZVR_GUI_ERROR:Unable to open url file d"));
    }
}

} // namespace
