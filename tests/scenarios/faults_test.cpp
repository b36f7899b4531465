#include "tests/support/held_stream.h"
#include "tests/support/permissions.h"
#include "tests/support/test_installation.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

// Runs into faults of files, of streams and of the machine.

namespace {

const std::string log_name = "logs/access_0";
const std::string cache_directory = config_directory + "/../.tmp";

void hide_shell() {
    leave_file_system();
    require(mount("/dev/null", "/bin/sh", nullptr, MS_BIND, nullptr) == 0);
}

void protect_tmp() {
    constexpr unsigned long flags = MS_REMOUNT | MS_BIND | MS_RDONLY | MS_NOSUID | MS_NODEV;
    leave_file_system();
    require(mount("/tmp", "/tmp", nullptr, MS_BIND | MS_REC, nullptr) == 0);
    require(mount("none", "/tmp", nullptr, flags, nullptr) == 0);
}

// The checker of this directory becomes the one of the machine.
void install_checker(const std::string& directory) {
    leave_file_system();
    require(mount(directory.c_str(), "/usr/local/bin", nullptr, MS_BIND, nullptr) == 0);
}

std::string backup_of_this_process() {
    return "/tmp/zvr_al_gen_url_list.backup." + std::to_string(getpid());
}

class Faults : public testing::Test {
  protected:
    Faults() {
        installation_.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
        write_log(3);
    }

    // Requests of different URLs.
    void write_log(int count) const {
        std::string log;
        for (int i = 0; i < count; ++i) {
            log += combined_line({.url = "/a" + std::to_string(i) + "?q"});
        }
        installation_.write_logs({log});
    }

    std::map<std::string, std::string> results() const {
        return installation_.files_of(config_directory);
    }

    TestInstallation installation_;
    const fs::path log_ = installation_.path(log_name);
};

// What becomes of a log after its lines were counted has the effect that it has when the scenario
// tells their number, but that another file under its name is not what was counted.
TEST_F(Faults, ALogGivesAtMostTheLinesCountedOrIsNamed) {
    const auto cannot_read = [](const std::string& error) {
        return RunResult::error_line("Failed to read file " + log_name + ". Error = '" + error +
                                     "'");
    };
    const std::string cannot_open = RunResult::error_line("Unable to open url file " + log_name);
    const std::string is_another = cannot_read("Stale file handle");
    const fs::path earlier_log = installation_.path("logs/earlier");
    const auto exchange = [&] { fs::rename(log_, earlier_log); };
    const auto three_requests = summary_line({.total = 3, .url_patterns = 3});
    const struct {
        std::function<void()> change;
        long line_count; // that can be counted then
        std::string outcome;
        std::string outcome_with_number = outcome;
    } rows[] = {
        {[&] {
             exchange();
             fs::create_symlink("nowhere", log_);
         },
         0, cannot_open},
        {[&] {
             exchange();
             fs::create_directory(log_);
         },
         0, is_another, cannot_read("Is a directory")},
        {[&] {
             exchange();
             write_log(5000);
         },
         5000, is_another, three_requests},
        {[&] { fs::permissions(log_, fs::perms::none); }, 0, cannot_open},
        {[&] { write_log(0); }, 0, summary_line({})},
        {[&] { write_log(2); }, 2, summary_line({.total = 2, .url_patterns = 2})},
        {[&] { write_log(5000); }, 5000, three_requests},
    };
    for (const auto& [change, line_count, outcome, outcome_with_number] : rows) {
        fs::remove_all(log_);
        write_log(3);
        HeldStream errors;
        installation_.prepare_process([&] {
            obey_permissions();
            errors.replace(STDERR_FILENO);
        });
        const pid_t counting = installation_.start({"-s", "web", "-c"});
        errors.take(3);      // up to the start of counting
        errors.has_line(-1); // of its end
        change();
        errors.stop_reading();
        const RunResult counted = installation_.finish(counting);
        if (counted.status == not_permitted) {
            GTEST_SKIP() << "the superuser's rights can not be given up";
        }
        EXPECT_EQ(counted.output, outcome);

        installation_.prepare_process(obey_permissions);
        installation_.name_logs({log_name}, "3");
        EXPECT_EQ(installation_.run().output, outcome_with_number);
        installation_.name_logs({log_name});
        EXPECT_EQ(installation_.run().output,
                  line_count == 0
                      ? RunResult::error_line("Failed to calculate Number of records from file '" +
                                              log_name + "'")
                      : summary_line({.total = line_count, .url_patterns = line_count}));
    }
}

TEST_F(Faults, LinesThatNobodyGetsCostNoResult) {
    installation_.run({"-d3"});
    const size_t debug_line_count = installation_.debug_lines().size();
    const auto good_results = results();
    const std::function<void(int)> faults[] = {
        [](int stream) { close(stream); },
        [](int stream) { dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), stream); },
        [](int stream) { HeldStream().replace(stream); }, // without reader
    };
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        for (const auto& fault : faults) {
            SCOPED_TRACE(testing::Message() << "stream " << stream << " fault " << &fault - faults);
            fs::remove_all(installation_.path(config_directory));
            installation_.prepare_process([&] { fault(stream); });
            const RunResult run = installation_.run({stream == STDOUT_FILENO ? "-d3" : "-c"});
            EXPECT_EQ(run.status, stream == STDOUT_FILENO ? 255 : 0);
            EXPECT_EQ(installation_.debug_lines().size(), debug_line_count);
            EXPECT_EQ(results(), good_results);
        }
    }
}

// Each run that is killed is followed by one with its inputs or with those of the run before.
TEST_F(Faults, AKilledRunLeavesNothingForGood) {
    installation_.use_checker();
    installation_.write("logs/access_1", combined_line());
    const std::tuple<char, size_t, std::function<void(bool)>> rows[] = {
        // checker's answer, lines of progress, change of the inputs
        {'1', 18,
         [&](bool other) { installation_.name_logs({other ? "logs/access_1" : log_name}); }},
        {'2', 6,
         [&](bool other) { installation_.write_filters(other ? "active|na|1|na|/a1*\n" : ""); }},
    };
    for (const auto& [answer, line_count, change] : rows) {
        std::map<std::string, std::string> expected[2];
        const auto run_again = [&, &change = change](bool other) {
            installation_.prepare_process([] {});
            change(other);
            let_files_settle();
            EXPECT_EQ(installation_.run().status, 0);
        };
        for (const bool other : {true, false}) {
            run_again(other);
            expected[other] = results();
        }
        for (size_t stop = 0; stop < 2 * (line_count - 1); ++stop) {
            SCOPED_TRACE(stop);
            const int signal = stop % 2 == 0 ? SIGTERM : SIGKILL;
            change(true);
            let_files_settle();
            HeldStream errors;
            installation_.prepare_process([&] { errors.replace(STDERR_FILENO); });
            const pid_t run = installation_.start({"-s", "web", "-c"});
            errors.take(stop / 2 + 1);
            errors.has_line(-1);
            wait_until_idle(run);
            kill(run, signal);
            EXPECT_EQ(installation_.finish(run).status, 128 + signal);
            EXPECT_EQ(installation_.read(cache_directory + "/cache_answer.txt")[0], answer);
            for (const bool other : {signal == SIGTERM, false}) {
                run_again(other);
                EXPECT_EQ(results(), expected[other]);
            }
        }
    }
}

TEST_F(Faults, ARunNeedsABackupOfItsOwnButNoShell) {
    const std::pair<std::function<void()>, bool> rows[] = {
        // fault, whether it stops the run
        {[] { fs::create_directory(backup_of_this_process()); }, true},
        {[&] { fs::create_symlink(installation_.path("sys"), backup_of_this_process()); }, true},
        {protect_tmp, true},
        {hide_shell, false},
    };
    for (const auto& [fault, is_fatal] : rows) {
        installation_.prepare_process(fault);
        const RunResult run = installation_.run({"-t0"}, {{"PATH", ""}});
        if (run.status == not_permitted) {
            GTEST_SKIP() << "no process may have its own view of the file system";
        }
        const std::string error = "Failed to run command 'mkdir " + run.backup_directory + "'";
        EXPECT_EQ(run.output, is_fatal ? RunResult::error_line(error)
                                       : summary_line({.total = 3, .url_patterns = 3}));
        EXPECT_EQ(run.status, is_fatal ? 255 : 0);
        EXPECT_EQ(installation_.files_of("sys").size(), 1U);
        EXPECT_EQ(installation_.files_of(cache_directory).size(), is_fatal ? 0U : 4U);
    }
}

TEST_F(Faults, ARunWithoutCommandPathFindsTheCheckerWhereAShellDoes) {
    installation_.write_result("url.list", "an old summary\n");
    installation_.write_checker(0);
    installation_.prepare_process([&] {
        install_checker(installation_.path("bin"));
        unsetenv("PATH");
    });
    const RunResult run = installation_.run();
    if (run.status == not_permitted) {
        GTEST_SKIP() << "no process may have its own view of the file system";
    }
    EXPECT_EQ(run.output, "an old summary\n");
}

} // namespace
