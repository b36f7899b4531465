#include "tests/support/test_installation.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

// Whole runs that ask the real checker command.

namespace {

constexpr const char* checker = "bin/zvr_al_gen_url_list_check";
constexpr const char* main_pattern = "active|main|POST|1|Order|na|d|body.txt|/order\n";
constexpr const char* results[] = {"complete_url.list", "hosts.list", "url.list", "query_url.list"};

std::string backup_path(pid_t pid) {
    return "/tmp/zvr_al_gen_url_list.backup." + std::to_string(pid);
}

class Checker : public testing::Test {
  protected:
    Checker() {
        fs::create_symlink(ZVR_CHECKER_PATH, installation_.root() / checker);
        write_logs();
        installation_.add_settings("IGNORE_URL_QUERY_PARAM 1\nINLINE_OBJECT_MODE skip\n");
        installation_.write_patterns(main_pattern);
        installation_.write_profile("body.txt", "order=1");
        remove(cache_path(""));
    }

    void write_logs() const {
        installation_.write_logs({combined_line({.url = "/a?x=1"}) + combined_line({.url = "/a?y"}),
                                  combined_line({.url = "/order", .method = "POST"})});
    }

    // Makes a run and returns what the checker answered it, -1 when it did not.
    int answer(const Lines& words = {}, const Environment& environment = {}) const {
        return answer_to([&] { last_run_ = installation_.run(words, environment); });
    }

    int answer_to(const std::function<void()>& run) const {
        remove(cache_path("cache_answer.txt"));
        run();
        EXPECT_EQ(last_run_.status, 0) << last_run_.output;
        const std::string text = installation_.read(cache_path("cache_answer.txt"));
        return text.empty() ? -1 : std::atoi(text.c_str());
    }

    // A run that reads the logs, and time enough for later changes to have later times.
    void run_in_full() const {
        ASSERT_EQ(answer(), 1);
        usleep(20'000);
    }

    // Answer to a second run, with a change made after a full one.
    int answer_after(const std::function<void()>& change) const {
        run_in_full();
        change();
        return answer();
    }

    static std::string cache_path(const std::string& name) {
        return project_directory + "/ReplayAccessLogs/web/.tmp/" + name;
    }

    static std::string result_path(const std::string& name) {
        return config_directory + "/" + name;
    }

    bool has_manifest() const { return installation_.exists(cache_path("cache_manifest.txt")); }

    void remove(const std::string& path) const { fs::remove_all(installation_.path(path)); }

    // Expects each change to the cache or the results to prevent their reuse.
    void expect_read_again(const std::vector<std::function<void()>>& changes) const {
        for (size_t i = 0; i < changes.size(); ++i) {
            EXPECT_EQ(answer_after(changes[i]), 1) << i;
            remove(cache_path(""));
        }
    }

    static std::string in_other_workspace(const std::string& path) {
        return "workspace/w" + path.substr(std::string("workspace/admin").size());
    }

    // Copies the scenario to a workspace of its own, and returns the words for a run there.
    Lines copy_to_other_workspace() const {
        fs::copy(installation_.path("workspace/admin"), installation_.path("workspace/w"),
                 fs::copy_options::recursive);
        return {"-s", "w/default/default/default/web"};
    }

    void append(const std::string& path, const std::string& text) const {
        installation_.write(path, installation_.read(path) + text);
    }

    void cut_end(const std::string& path, size_t count) const {
        const fs::path file = installation_.root() / path;
        fs::resize_file(file, fs::file_size(file) - count);
    }

    // Makes a change that leaves a file its time of modification, but for some nanoseconds.
    void keep_time(const std::string& path, long nanoseconds,
                   const std::function<void()>& change) const {
        const std::string file = installation_.path(path);
        struct stat status = {};
        stat(file.c_str(), &status);
        change();
        timespec time = status.st_mtim;
        time.tv_nsec += time.tv_nsec == 999'999'999 ? -nanoseconds : nanoseconds;
        const timespec times[] = {time, time};
        utimensat(AT_FDCWD, file.c_str(), times, 0);
    }

    TestInstallation installation_;
    mutable RunResult last_run_;
};

// A run that waits for what a pipe in place of its second log will bring, until it is killed.
class WaitingRun {
  public:
    explicit WaitingRun(const TestInstallation& installation)
        : pipe_(installation.path("logs/access_1")) {
        fs::remove(pipe_);
        mkfifo(pipe_.c_str(), 0666);
        pid_ = installation.start({"--scen=web"});
        while ((pipe_end_ = open(pipe_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) == -1 &&
               waitpid(pid_, nullptr, WNOHANG) == 0) {
            usleep(1000);
        }
    }

    ~WaitingRun() {
        end();
        fs::remove_all(backup_path(pid_));
    }

    void end() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        close(pipe_end_);
        fs::remove(pipe_);
    }

    pid_t pid() const { return pid_; }

  private:
    fs::path pipe_;
    pid_t pid_;
    int pipe_end_ = -1;
};

} // namespace

TEST_F(Checker, TheFirstRunPreparesTheCacheOfTheSecond) {
    EXPECT_EQ(answer(), 1);
    const std::string summary = last_run_.output;
    const auto first_results = installation_.files_of(config_directory);
    EXPECT_EQ(answer(), 0);
    EXPECT_EQ(last_run_.output, lines_of(installation_.result("url.list"))[0] + "\n");
    EXPECT_TRUE(last_run_.output.starts_with(summary.substr(0, summary.size() - 1)));
    EXPECT_EQ(answer(), 0);
    EXPECT_EQ(installation_.files_of(config_directory), first_results);
}

TEST_F(Checker, EveryChangeOfAnInputHasItsAnswer) {
    const std::string settings = profile_directory + "/replay_settings.dat";
    const std::string scenario = scenario_directory + "/web.conf";
    const std::string defaults = "sys/replay_settings.default";
    const std::string log = "logs/access_0";
    const auto change_in_place = [&] {
        installation_.write(log, combined_line({.url = "/b?x=1"}) + combined_line({.url = "/a?y"}));
    };
    const auto replace_by_copy = [&] {
        fs::copy_file(installation_.path(log), installation_.path("copy"));
        fs::rename(installation_.path("copy"), installation_.path(log));
    };
    const std::tuple<const char*, int, std::function<void()>> cases[] = {
        {"scenario", 1, [&] { append(scenario, "# more\n"); }},
        {"scenario written again", 0, [&] { append(scenario, ""); }},
        {"setting of loading", 1, [&] { append(settings, "AUTO_REDIRECT 0\n"); }},
        {"thread count", 1, [&] { append(settings, "NUM_THREAD 2\n"); }},
        {"unknown setting", 1, [&] { append(settings, "AUTO_REDIRECTS\n"); }},
        {"field position", 1, [&] { append(settings, "AL_FIELD REFERER 8\n"); }},
        {"inline mode", 2, [&] { append(settings, "inline_object_mode asperlog\n"); }},
        {"default host", 2, [&] { append(settings, "DEFAULT_HOST h\n"); }},
        {"new user time", 2, [&] { append(settings, "NEW_USER_TIME 01:00:00\n"); }},
        {"comment in settings", 2, [&] { append(settings, "# more\n"); }},
        {"patterns", 2, [&] { installation_.write_patterns(""); }},
        {"filters", 2, [&] { installation_.write_filters("active|na|1|na|/a*\n"); }},
        {"post-data file", 2, [&] { installation_.write_profile("body.txt", "order=2"); }},
        {"log grown", 1, [&] { append(log, "\n"); }},
        {"log changed in place", 1, [&] { keep_time(log, 0, change_in_place); }},
        {"log modified a nanosecond later", 1, [&] { keep_time(log, 1, [] {}); }},
        {"log replaced by a copy", 1, [&] { keep_time(log, 0, replace_by_copy); }},
        {"default zone", 1, [&] { installation_.write(defaults, "GMT_OFFSET +0100\n"); }},
        {"other default", 0, [&] { append(defaults, "OTHER 1\n"); }},
        {"defaults missing", 1, [&] { remove(defaults); }},
    };
    const std::string original_settings = installation_.read(settings);
    for (const auto& [what, expected, change] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(answer_after(change), expected);
        if (expected != 1) {
            EXPECT_EQ(answer(), 0) << "after the change was taken up";
        }
        installation_.write(settings, original_settings);
        installation_.write(defaults, "GMT_OFFSET +0000\n");
        installation_.write_patterns(main_pattern);
        write_logs();
        remove(cache_path(""));
    }
}

TEST_F(Checker, OptionsThatChangeResultsPreventReuse) {
    run_in_full();
    for (const Lines& words :
         {Lines{"-t", "2"}, {"--num_thread=3"}, {"-q", "0"}, {"-q1", "-a"}, {"--dump=0"}}) {
        SCOPED_TRACE(words[0]);
        EXPECT_EQ(answer(words), 1);
        EXPECT_EQ(answer(words), 0);
    }
    EXPECT_EQ(answer({}, {{"TZ", "Asia/Tokyo"}}), 1);
    EXPECT_EQ(answer({}, {{"TZ", "Asia/Tokyo"}}), 0);
    EXPECT_EQ(answer({}, {{"TZ", ""}}), 1);
}

TEST_F(Checker, OneScenarioIsKnownUnderAllItsNames) {
    run_in_full();
    for (const Lines& words :
         {Lines{"-sweb.conf"},
          {"--scen", "web"},
          {"-d2", "-m", "gui", "-cs", "web", "-q7"},
          {"word", "-s", "other", "--scenario=/admin//default/default/default/web/more", "-t0"}}) {
        SCOPED_TRACE(words[0]);
        EXPECT_EQ(answer_to([&] { last_run_ = installation_.run_words(words); }), 0);
    }
    const std::string again = installation_.path("again");
    fs::create_directory_symlink(installation_.root(), again);
    for (const std::string& name : {again, again + "/"}) {
        EXPECT_EQ(answer({}, {{"ZV_WDIR", name}}), 2) << "paths of post-data files begin otherwise";
    }
}

TEST_F(Checker, AProfileOfTheSameContentIsOnlyClassifiedAgain) {
    run_in_full();
    fs::create_directories(installation_.path("replay_profiles/default/default"));
    fs::copy(installation_.path(profile_directory),
             installation_.path("replay_profiles/default/default/other"));
    EXPECT_EQ(answer({"-r", "other"}), 2);
    EXPECT_NE(installation_.result("url.list").find("/default/default/other/body.txt"),
              std::string::npos);
    EXPECT_EQ(answer({"--replay_profile", "default/default/other"}), 0);
}

TEST_F(Checker, ScenariosOfOneNameInTwoWorkspacesAreApart) {
    run_in_full();
    const Lines words = copy_to_other_workspace();
    EXPECT_EQ(installation_.run_words(words).status, 0);
    EXPECT_EQ(answer(), 0);
    const std::string other_answer = in_other_workspace(cache_path("cache_answer.txt"));
    EXPECT_EQ(installation_.read(other_answer).substr(0, 2), "1:");
}

TEST_F(Checker, ResultsThatAreNotWholePreventReuse) {
    for (const std::string name : results) {
        const std::string path = result_path(name);
        SCOPED_TRACE(name);
        expect_read_again({[&] { remove(path); }, [&] { installation_.write(path, ""); },
                           [&] { cut_end(path, 1); },
                           [&] { append(path, ""); }}); // rewritten by somebody
    }
}

// Times do not tell a result that is damaged in the very moment in which the run ends.
TEST_F(Checker, DamageIsFoundWhateverTheTimesSay) {
    for (const std::string name : results) {
        SCOPED_TRACE(name);
        ASSERT_EQ(answer(), 1);
        const std::string text = installation_.result(name);
        cut_end(result_path(name), text.size() - text.rfind('\n', text.size() - 2) - 1);
        append(cache_path("cache_manifest.txt"), "");
        EXPECT_EQ(answer(), 1);
        remove(cache_path(""));
    }
}

TEST_F(Checker, AnIncompleteCachePreventsReuse) {
    expect_read_again({
        [&] { remove(cache_path("")); },
        [&] { remove(cache_path("cache_manifest.txt")); },
        [&] { cut_end(cache_path("cache_manifest.txt"), 2); },
        [&] { append(cache_path("web.conf"), "\n"); },
        [&] { append(cache_path("replay_url_patterns.dat"), "\n"); },
        [&] {
            append(cache_path("web.conf"), "\n");
            installation_.write_filters("active|na|1|na|/a*\n");
        },
    });
}

TEST_F(Checker, LevelTwoGivesTheBytesOfAFullRun) {
    run_in_full();
    installation_.write_patterns("active|inline|na|1|na|na|d|na|/a*\n"
                                 "active|main|na|1|T|na|d|body.txt|/order\n");
    EXPECT_EQ(answer(), 2);
    const std::string summary = last_run_.output;
    const auto level_two = installation_.files_of(config_directory);
    EXPECT_EQ(answer(), 0);
    append("logs/access_0", "");
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(last_run_.output, summary);
    EXPECT_EQ(installation_.files_of(config_directory), level_two);
}

TEST_F(Checker, ResultsOfALevelTwoRunRestOnTheListThatItKept) {
    run_in_full();
    installation_.write_filters("active|na|1|na|/a*\n");
    EXPECT_EQ(answer(), 2);
    append(result_path("complete_url.list"), "");
    EXPECT_EQ(answer(), 1);
}

TEST_F(Checker, ALogThatChangesDuringARunIsReadAgain) {
    installation_.write_checker_script(std::string(ZVR_CHECKER_PATH) +
                                       " \"$@\"; code=$?; "
                                       "echo >>logs/access_0; exit $code\n");
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 1);
}

TEST_F(Checker, InputsThatChangeDuringARunAreNotRemembered) {
    installation_.write_checker_script("while [ ! -e go ]; do read line </proc/uptime; done; " +
                                       std::string("echo '# more' >>") + profile_directory +
                                       "/replay_settings.dat; " + ZVR_CHECKER_PATH + " \"$@\"\n");
    installation_.prepare_process([&] { // long enough for the change to come after the start
        if (fork() == 0) {
            usleep(50'000);
            installation_.write("go", "");
            _exit(0);
        }
    });
    EXPECT_EQ(answer(), 1);
    EXPECT_FALSE(has_manifest());
}

TEST_F(Checker, ARunThatFailsLeavesNothingToReuse) {
    run_in_full();
    const std::string url_list = installation_.result("url.list");
    const std::string path = result_path("url.list");
    installation_.write_filters("active|na|1|na|/a*\n");
    remove(path);
    fs::create_directories(installation_.path(path + "/in the way"));
    expect_some_failure(installation_.run());
    EXPECT_FALSE(has_manifest());
    remove(path);
    installation_.write(path, url_list);
    EXPECT_EQ(answer(), 1);
}

TEST_F(Checker, ASecondLiveRunIsRefused) {
    run_in_full();
    WaitingRun waiting(installation_);
    ASSERT_TRUE(fs::exists(backup_path(waiting.pid())));
    expect_failure(installation_.run(),
                   "Url list processing Tool is already running, first close that and run again");
    const Lines words = copy_to_other_workspace();
    installation_.write(in_other_workspace(scenario_directory) + "/web.conf", "");
    EXPECT_EQ(installation_.run_words(words).status, 0) << "another scenario of the same name";

    waiting.end();
    ASSERT_TRUE(fs::exists(backup_path(waiting.pid())));
    installation_.write("logs/access_1", combined_line());
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 0);
}

TEST_F(Checker, ABackupWhoseNumberBelongsToAnotherProgramDoesNotCount) {
    run_in_full();
    fs::copy(installation_.path(cache_path("")), backup_path(getpid()));
    EXPECT_EQ(answer(), 0);
    fs::remove_all(backup_path(getpid()));
}

TEST_F(Checker, OldBackupsOfRunsThatAreGoneAreRemoved) {
    const pid_t no_process = 2'000'000'000; // above every process id
    const auto day = std::chrono::hours(24);
    const std::string old = backup_path(no_process);
    const std::string young = backup_path(no_process + 1);
    const std::string link = backup_path(no_process + 2);
    for (const std::string& path : {old, young}) {
        fs::create_directory(path);
        fs::copy(installation_.root() / "logs", path + "/logs");
    }
    fs::create_directory_symlink(installation_.root() / "logs", link);
    fs::last_write_time(old, fs::file_time_type::clock::now() - day - std::chrono::minutes(1));
    fs::last_write_time(young, fs::file_time_type::clock::now() - day + std::chrono::minutes(5));
    EXPECT_EQ(answer(), 1);
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(young + "/logs/access_0"));
    EXPECT_TRUE(fs::exists(link));
    fs::remove_all(young);
    fs::remove(link);
}
