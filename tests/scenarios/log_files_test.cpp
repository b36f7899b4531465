#include "base/file_descriptor.h"
#include "tests/support/held_stream.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_installation.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

// Logs that are no regular files, or whose line counts in the scenario are not theirs.

namespace {

constexpr unsigned int ever = 60;  // seconds after which a run that waits or counts is ended
const std::string no_limit = "-1"; // as many lines as there can be
constexpr int more_than_the_first_room = 20'000;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool takes_little_memory = false;
#else
constexpr bool takes_little_memory = true;
#endif

void limit_memory(size_t size) {
    const rlimit limit = {size, size};
    setrlimit(RLIMIT_AS, &limit);
}

// Requests that wait with a secondary cookie. The last ten give a session to one in ten of them.
std::string waiting_requests(int count) {
    const auto line = [](int i, const std::string& set_cookie) {
        return combined_line({.url = "/" + std::to_string(i % 50),
                              .more = "akaau=K" + std::to_string(i % 100) + " " + set_cookie});
    };
    std::string log;
    for (int i = 0; i < count; ++i) {
        log += line(i, i < count - 10 ? "-" : "J=S" + std::to_string(i));
    }
    return log;
}

void make_pipe(const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
}

class LogFiles : public testing::Test {
  protected:
    LogFiles() {
        installation_.prepare_process([] { alarm(ever); });
    }

    void make_log(const std::string& name, const std::string& kind) const {
        const std::string path = installation_.path(name);
        if (kind == "pipe") {
            make_pipe(path);
        } else if (kind == "directory") {
            fs::create_directories(path);
        } else if (kind != "missing") {
            installation_.write(name, kind == "empty"         ? ""
                                      : kind == "no line end" ? "x"
                                                              : combined_line());
        }
        if (kind == "endless") {
            fs::resize_file(path, uintmax_t{1} << 40);
        }
    }

    // A run whose pipe gets this text while it is read.
    RunResult run_with_pipe(const std::string& name, const std::string& text,
                            const Lines& words) const {
        const std::string path = installation_.path(name);
        fs::remove(path);
        make_pipe(path);
        std::signal(SIGPIPE, SIG_IGN); // it may not be read to its end
        Lines all = {"-s", "web"};
        all.insert(all.end(), words.begin(), words.end());
        const pid_t run = installation_.start(all);
        std::thread writer([&] { std::ofstream(path) << text; });
        RunResult result = installation_.finish(run);
        close(open(path.c_str(), O_RDONLY | O_NONBLOCK)); // a writer that nobody has read from
        writer.join();
        return result;
    }

    TestInstallation installation_;
};

TEST_F(LogFiles, TheFirstThatCannotBeCountedIsNamedBeforeAllAreCounted) {
    const std::pair<Lines, size_t> rows[] = {
        // kinds, the one named
        {{"pipe"}, 0},
        {{"lines", "directory", "pipe"}, 1},
        {{"missing", "endless"}, 0},
        {{"empty", "pipe", "endless"}, 0},
        {{"lines", "no line end", "missing", "endless"}, 1},
    };
    for (const auto& [kinds, named] : rows) {
        fs::remove_all(installation_.path("logs"));
        Lines paths;
        for (const std::string& kind : kinds) {
            paths.push_back("logs/" + std::to_string(paths.size()));
            make_log(paths.back(), kind);
        }
        installation_.name_logs(paths);
        for (const Lines& words : {Lines{}, Lines{"-t4"}, Lines{"-d2"}}) {
            expect_failure(installation_.run(words),
                           "Failed to calculate Number of records from file '" + paths[named] +
                               "'");
        }
    }
}

TEST_F(LogFiles, APipeWithALineCountIsReadLikeAFile) {
    const Lines paths = {"a/log", "b/log", "c/log"};
    const Lines texts = {waiting_requests(2000), waiting_requests(more_than_the_first_room),
                         waiting_requests(1000)};
    installation_.add_settings("USER_SESSION_KEY cookie\nCOOKIE_NAME J\nAL_FIELD REQUEST_COOKIE 7\n"
                               "AL_FIELD SET_COOKIE 8\n");
    installation_.name_logs(paths, no_limit);
    for (const std::string words : {"-t1", "-t2", "-t3"}) {
        for (size_t i = 0; i < paths.size(); ++i) {
            installation_.write(paths[i], texts[i]);
        }
        const std::string summary = installation_.run({words}).output;
        const auto results = installation_.files_of(config_directory);
        EXPECT_EQ(installation_.complete_url_rows().size(), 10U) << summary;
        for (size_t i = 0; i < paths.size(); ++i) {
            EXPECT_EQ(run_with_pipe(paths[i], texts[i], {words}).output, summary);
            EXPECT_EQ(installation_.files_of(config_directory), results) << paths[i] << words;
            fs::remove(installation_.path(paths[i]));
            installation_.write(paths[i], texts[i]);
        }
    }
    installation_.name_logs(paths, "700");
    EXPECT_EQ(run_with_pipe(paths[0], texts[0], {}).counter("Total"), 2100);
}

// Lines are all that would end a log whose writer is faster than the run.
TEST_F(LogFiles, EndWhereTheyEndedWhenMeasuredHoweverManyLinesAreWanted) {
    installation_.write_logs({combined_line()});
    installation_.name_logs({"logs/access_0"}, no_limit);
    HeldStream errors;
    installation_.prepare_process([&] { errors.replace(STDERR_FILENO); });
    const pid_t run = installation_.start({"-s", "web", "-c"});
    errors.take(4);      // up to the end of counting
    errors.has_line(-1); // of the thread's start
    std::ofstream(installation_.path("logs/access_0"), std::ios::app)
        << combined_line() << combined_line();
    errors.stop_reading();
    EXPECT_EQ(installation_.finish(run).output, summary_line({.total = 1, .url_patterns = 1}));
}

// One line is all that is wanted of each; a file system in memory holds the greatest sizes, too.
TEST_F(LogFiles, GiveTheLinesThatAreWantedWhateverTheirSize) {
    if (!fs::is_directory("/dev/shm")) {
        GTEST_SKIP() << "there is no file system in memory";
    }
    const TemporaryDirectory in_memory("/dev/shm");
    constexpr off_t greatest = std::numeric_limits<off_t>::max();
    Lines paths;
    for (const off_t size : {greatest, greatest - 1, off_t{1} << 62, off_t{1} << 40}) {
        paths.push_back(in_memory.write(std::to_string(size), combined_line()));
        ASSERT_EQ(truncate(paths.back().c_str(), size), 0);
    }
    installation_.name_logs(paths, "1");
    EXPECT_EQ(installation_.run().output, summary_line({.total = 4, .url_patterns = 1}));
}

// A run that leads a session, as cron starts it, would take an open terminal for its own.
TEST_F(LogFiles, ATerminalDoesNotInterruptTheRun) {
    const FileDescriptor terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_EQ(grantpt(terminal.get()), 0);
    ASSERT_EQ(unlockpt(terminal.get()), 0);
    fs::create_directories(installation_.path("logs"));
    fs::create_symlink(ptsname(terminal.get()), installation_.path("logs/terminal"));
    installation_.name_logs({"logs/terminal"}, "2");
    HeldStream errors;
    installation_.prepare_process([&] {
        setsid();
        errors.replace(STDERR_FILENO);
    });
    const pid_t run = installation_.start({"-s", "web", "-c"});
    EXPECT_NE(errors.take(6).find("start processing file"), std::string::npos);
    errors.stop_reading();
    const std::string text = "\x03" + combined_line() + combined_line();
    EXPECT_EQ(write(terminal.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    EXPECT_EQ(installation_.finish(run).output, summary_line({.total = 2, .url_patterns = 1}));
}

TEST_F(LogFiles, TakeTheMemoryOfTheirRequestsWhateverTheirSize) {
    if (!takes_little_memory) {
        GTEST_SKIP() << "the sanitizers reserve more than the limit";
    }
    const std::string long_field(90'000, 'x');
    std::string log;
    for (int i = 0; i < 100; ++i) {
        log += combined_line({.more = long_field});
    }
    std::string short_lines;
    for (int i = 0; i < 1'000'000; ++i) {
        short_lines += "- - - [1/Oct/2000:1:1:1 +0] \"GET /w 1\" 200\n";
    }
    installation_.write_logs({log});
    installation_.name_logs({"logs/access_0"}, no_limit);
    installation_.prepare_process([] { limit_memory(size_t{64} << 20); });
    EXPECT_EQ(installation_.run().output, summary_line({.total = 100, .url_patterns = 1}));
    EXPECT_EQ(run_with_pipe("logs/access_0", log, {}).output,
              summary_line({.total = 100, .url_patterns = 1}));
    installation_.write("logs/access_1", short_lines);
    installation_.name_logs({"logs/access_1"}, no_limit);
    installation_.prepare_process([] { limit_memory(size_t{48} << 20); });
    const RunResult run = installation_.run();
    expect_some_failure(run);
    EXPECT_TRUE(run.output.starts_with("ZVR_GUI_ERROR:Out of Memory: ")) << run.output;
}

} // namespace
