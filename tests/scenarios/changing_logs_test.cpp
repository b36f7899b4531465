#include "tests/support/held_stream.h"
#include "tests/support/test_installation.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

// Logs that others change, exchange or keep while a run reads them: the run comes to its end, and
// says of the other logs what they hold.

namespace fs = std::filesystem;

namespace {

constexpr const char* log_name = "logs/access_0";

class ChangingLogs : public testing::Test {
  protected:
    Lines rows_with(const std::string& url) const {
        Lines rows = installation_.complete_url_rows();
        std::erase_if(rows, [&](const std::string& row) { return !row.ends_with("|" + url); });
        return rows;
    }

    // Starts a run that waits, its logs measured, until the progress is read no more.
    pid_t start_until_measured(HeldStream& progress) {
        installation_.prepare_process([&] { progress.replace(STDERR_FILENO); });
        const pid_t run = installation_.start({"-s", "web", "-t", "1", "-c"});
        std::string lines;
        while (lines.find("Start Counting") == std::string::npos) {
            lines = progress.take();
        }
        wait_until_idle(run);
        return run;
    }

    TestInstallation installation_;
    const fs::path log_ = installation_.path(log_name);
};

// Does something over and over while it lives.
class Meanwhile {
  public:
    template <typename Step>
    explicit Meanwhile(Step step)
        : thread_([this, step] {
              while (!is_over_) {
                  step();
              }
          }) {}
    ~Meanwhile() {
        is_over_ = true;
        thread_.join();
    }
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;

  private:
    std::atomic<bool> is_over_ = false;
    std::thread thread_;
};

// Waits until somebody has opened the file as often as this, or no more. Openings that follow each
// other at once may be told as one.
void wait_for_openings(int notifier, int count) {
    constexpr int longest_pause = 500; // milliseconds
    pollfd opened = {.fd = notifier, .events = POLLIN, .revents = 0};
    while (count > 0 && poll(&opened, 1, longest_pause) == 1) {
        alignas(inotify_event) char events[4096];
        count -= static_cast<int>(read(notifier, events, sizeof events) /
                                  static_cast<ssize_t>(sizeof(inotify_event)));
    }
}

std::string cookie_line(const std::string& url, const std::string& cookie,
                        const std::string& set_cookie = "-") {
    return combined_line({.url = url, .more = "\"" + cookie + "\" \"" + set_cookie + "\""});
}

// The log is read a second time for its first line, which is longer than the limit and comes in two
// pieces, so that the log would give one line too many. Requests get their session from the second
// half.
std::string log_that_is_read_twice() {
    std::string log = std::string(150'000, 'x') + "\n";
    for (int i = 0; i < 12'000; ++i) {
        log += cookie_line("/mine", "akaau=" + std::to_string(i));
    }
    for (int i = 0; i < 12'000; ++i) {
        const std::string secondary = "akaau=" + std::to_string(i);
        log += cookie_line("/mine", secondary, "JSESSIONID=s; " + secondary);
    }
    return log;
}

std::string log_with_and_without_sessions() {
    std::string log;
    for (int i = 0; i < 3000; ++i) {
        log += cookie_line("/other", i % 3 == 0 ? "-" : "JSESSIONID=t");
    }
    return log;
}

} // namespace

TEST_F(ChangingLogs, OneThatShrinksChangesNothingOfOthers) {
    installation_.add_settings("USER_SESSION_KEY cookie\nCOOKIE_NAME JSESSIONID\n"
                               "SECONDARY_COOKIE 1 akaau\n"
                               "AL_FIELD REQUEST_COOKIE 7\nAL_FIELD SET_COOKIE 8\n");
    const std::string text = log_that_is_read_twice();
    installation_.write_logs({text, log_with_and_without_sessions()});
    const auto other_requests = [&] { return rows_with("/other"); };
    ASSERT_EQ(installation_.run().status, 0);
    ASSERT_EQ(other_requests(), Lines{"GET|NA|2000|-1|/other"});
    for (int attempt = 0; attempt < 4; ++attempt) {
        installation_.write(log_name, text);
        const int notifier = inotify_init1(IN_CLOEXEC);
        inotify_add_watch(notifier, log_.c_str(), IN_OPEN);
        const pid_t run = installation_.start({"-s", "web"});
        wait_for_openings(notifier, 4); // looked at, read, counted, and to be read again
        fs::resize_file(log_, 0);
        const RunResult result = installation_.finish(run);
        close(notifier);
        if (result.status == 0) { // the log shrank sooner or later
            EXPECT_EQ(other_requests(), Lines{"GET|NA|2000|-1|/other"});
        } else {
            expect_some_failure(result);
        }
    }
}

// Whoever owns a log can lease it, and is given most of a minute to give the lease up.
TEST_F(ChangingLogs, OneThatIsLeasedIsRefusedSoon) {
    installation_.write_logs({combined_line()});
    std::signal(SIGIO, SIG_IGN);
    const int log = open(log_.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(fcntl(log, F_SETLEASE, F_WRLCK), 0);
    const time_t start = std::time(nullptr);
    expect_failure(installation_.run(), "Failed to calculate Number of records from file '" +
                                            std::string(log_name) + "'");
    EXPECT_LT(std::time(nullptr) - start, 10);
    close(log);
    EXPECT_EQ(installation_.run().status, 0);
}

// With a number of lines a pipe could have stood there, which would be waited for.
TEST_F(ChangingLogs, OneThatIsLeasedAfterItWasMissingIsRefusedSoon) {
    installation_.name_logs({log_name}, "1");
    HeldStream progress;
    const pid_t run = start_until_measured(progress);
    installation_.write(log_name, combined_line());
    std::signal(SIGIO, SIG_IGN);
    const int log = open(log_.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(fcntl(log, F_SETLEASE, F_WRLCK), 0);
    const time_t start = std::time(nullptr);
    progress.stop_reading();
    expect_failure(installation_.finish(run), "Unable to open url file logs/access_0");
    EXPECT_LT(std::time(nullptr) - start, 10);
    close(log);
}

// Its size was that of another file, and with it where reading ends.
TEST_F(ChangingLogs, OneThatIsExchangedAfterItWasMeasuredIsRefused) {
    installation_.write_logs({combined_line()});
    installation_.write("other", combined_line() + combined_line());
    HeldStream progress;
    const pid_t run = start_until_measured(progress);
    fs::rename(installation_.path("other"), log_);
    progress.stop_reading();
    expect_failure(installation_.finish(run),
                   "Failed to read file logs/access_0. Error = 'Stale file handle'");
}

TEST_F(ChangingLogs, AnExchangeForWhatNeverEndsIsRefused) {
    installation_.write_logs({combined_line(), combined_line()});
    const fs::path other = installation_.path("logs/other");
    for (const bool is_pipe : {true, false}) {
        fs::remove(other);
        if (is_pipe) {
            ASSERT_EQ(mkfifo(other.c_str(), 0600), 0);
        } else {
            fs::create_symlink("/dev/zero", other);
        }
        const Meanwhile exchange(
            [&] { renameat2(AT_FDCWD, other.c_str(), AT_FDCWD, log_.c_str(), RENAME_EXCHANGE); });
        for (int attempt = 0; attempt < 30; ++attempt) {
            alarm(60); // a run that hangs ends the test
            const bool counts_first = attempt % 2 == 0;
            const RunResult run = installation_.run({"-d", counts_first ? "2" : "0"});
            if (run.status == 0) {
                EXPECT_EQ(run.counter("Total"), 2);
            } else {
                expect_some_failure(run);
            }
        }
        alarm(0);
    }
}
