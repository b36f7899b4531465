#include "tests/support/held_stream.h"
#include "tests/support/test_installation.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

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
        for (const std::string& path : paths) {
            installation.write(path, combined_line());
        }
        installation.name_logs(paths);
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

// All but the first thread, which is busy with a log that only comes to be, fail. The one that
// reports waits for its reader, so that the others come to the same point, and then for the first
// thread, which keeps it from ending the process as long as nobody takes its line of progress. The
// first thread may also come after the failure, and then takes no log.
TEST(Threads, FailingTogetherReportOnce) {
    TestInstallation installation;
    const Lines paths = separate_directories(8);
    installation.name_logs(paths, "5");
    const std::string first_log = installation.write(paths[0], "");
    fs::remove(first_log);
    ASSERT_EQ(mkfifo(first_log.c_str(), 0666), 0);
    HeldStream output;
    HeldStream errors;
    installation.prepare_process([&] {
        output.replace(STDOUT_FILENO);
        errors.replace(STDERR_FILENO);
    });
    const pid_t run = installation.start({"-s", "web", "-t", "8", "-c"});
    constexpr size_t lines_before_threads = 4;
    errors.take(lines_before_threads + paths.size());
    wait_until_idle(run);
    close(open(first_log.c_str(), O_WRONLY | O_NONBLOCK));
    wait_until_idle(run);
    EXPECT_EQ(output.take(2).find("\nZVR_GUI_ERROR:Unable to open url file d"), 0U);
    wait_until_idle(run);
    EXPECT_FALSE(output.has_line());
    output.stop_reading();
    errors.stop_reading();
    EXPECT_EQ(installation.finish(run).status, 255);
}

} // namespace
