#include "tests/support/held_stream.h"
#include "tests/support/test_installation.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

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

// All but the first thread, which is busy with a log that only comes to be, fail. The one that
// reports waits for its reader, so that the others come to the same point, and then for the first
// thread, which keeps it from ending the process as long as nobody takes its line of progress.
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
    close(open(first_log.c_str(), O_WRONLY));
    wait_until_idle(run);
    EXPECT_EQ(output.take(2).find("\nZVR_GUI_ERROR:Unable to open url file d"), 0U);
    wait_until_idle(run);
    EXPECT_FALSE(output.has_line());
    output.stop_reading();
    errors.stop_reading();
    EXPECT_EQ(installation.finish(run).status, 255);
}

TEST(ConcurrentRuns, OfEightScenariosGiveWhatEachGivesAlone) {
    TestInstallation installation;
    installation.use_checker();
    const std::string logs_directory = project_directory + "/ReplayAccessLogs/";
    const auto outcome = [&](const std::string& name, const RunResult& run) {
        auto files = installation.files_of(logs_directory + name + "/config");
        files["output"] = run.output;
        return files;
    };
    std::map<std::string, std::map<std::string, std::string>> alone;
    for (const std::string name : {"s0", "s1", "s2", "s3", "s4", "s5", "s6", "s7"}) {
        installation.write(name + "/log", random_log(static_cast<unsigned>(name[1])));
        installation.write(scenario_directory + "/" + name + ".conf",
                           "REPLAY_LOG_FILE " + name + "/log x 0 HTTP\n");
        fs::copy(installation.path(profile_directory),
                 installation.path(profile_directory + "/../" + name));
        alone[name] = outcome(name, installation.run_words({"-s", name}));
        fs::remove_all(installation.path(logs_directory + name));
    }
    installation.prepare_process([] { raise(SIGSTOP); }); // until all have come so far
    std::map<std::string, pid_t> runs;
    for (const auto& [name, files] : alone) {
        runs[name] = installation.start({"-s", name});
        waitpid(runs[name], nullptr, WUNTRACED);
    }
    for (const auto& [name, run] : runs) {
        kill(run, SIGCONT);
    }
    for (const auto& [name, run] : runs) {
        EXPECT_EQ(outcome(name, installation.finish(run)), alone[name]) << name;
    }
}

} // namespace
