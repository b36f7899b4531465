#include "tests/checker/checker_fixture.h"
#include "tests/support/held_stream.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

// Whole runs that ask the real checker command.

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

// Its content may change while nothing that the system shows of it does.
TEST_F(Checker, ALogThatShowsNoSizeIsReadAgain) {
    installation_.name_logs({"/proc/version"});
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 1);
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
        remove(cache);
    }
}

TEST_F(Checker, OptionsThatChangeResultsPreventReuse) {
    run_in_full();
    for (const Lines& words : {Lines{"-sweb", "-t2"},
                               {"-sweb", "--num_thread=3"},
                               {"-sweb", "-q", "0"},
                               {"-sweb", "-q1", "-a"},
                               {"-sweb", "--dump=0"}}) {
        SCOPED_TRACE(words[1]);
        EXPECT_EQ(answer(words), 1);
        EXPECT_EQ(answer(words), 0);
    }
    EXPECT_EQ(answer({"-sweb"}, {{"TZ", "Asia/Tokyo"}}), 1);
    EXPECT_EQ(answer({"-sweb"}, {{"TZ", "Asia/Tokyo"}}), 0);
    EXPECT_EQ(answer({"-sweb"}, {{"TZ", ""}}), 1);
}

TEST_F(Checker, OneScenarioIsKnownUnderAllItsNames) {
    run_in_full();
    for (const Lines& words :
         {Lines{"-sweb.conf"},
          {"--scen", "web"},
          {"-d2", "-m", "gui", "-cs", "web", "-q7"},
          {"word", "-s", "other", "--scenario=/admin//default/default/default/web/more", "-t0"}}) {
        SCOPED_TRACE(words[0]);
        EXPECT_EQ(answer(words), 0);
        EXPECT_EQ(answer(words, {{"POSIXLY_CORRECT", ""}}), 0);
    }
    const std::string again = installation_.path("again");
    fs::create_directory_symlink(installation_.root(), again);
    for (const std::string& name : {again, again + "/"}) {
        EXPECT_EQ(answer({"-sweb"}, {{"ZV_WDIR", name}}), 2)
            << "paths of post-data files begin otherwise";
    }
}

TEST_F(Checker, AProfileOfTheSameContentIsOnlyClassifiedAgain) {
    run_in_full();
    fs::create_directories(installation_.path("replay_profiles/default/default"));
    fs::copy(installation_.path(profile_directory),
             installation_.path("replay_profiles/default/default/other"));
    EXPECT_EQ(answer({"-sweb", "-r", "other"}), 2);
    EXPECT_NE(installation_.result("url.list").find("/default/default/other/body.txt"),
              std::string::npos);
    EXPECT_EQ(answer({"-sweb", "--replay_profile", "default/default/other"}), 0);
}

TEST_F(Checker, ResultsThatAreNotThoseOfTheLastRunPreventReuse) {
    for (const std::string name : results) {
        const std::string path = config_directory + "/" + name;
        SCOPED_TRACE(name);
        const auto damage = [&](size_t size) { // which no state tells
            cut_end(path, size);
            seal_again();
        };
        const auto last_row_size = [&] {
            const std::string text = installation_.read(path);
            return text.size() - text.rfind('\n', text.size() - 2) - 1;
        };
        expect_read_again({
            [&] { remove(path); },
            [&] { append(path, ""); }, // rewritten by somebody
            [&] { damage(1); },
            [&] { damage(last_row_size()); },
        });
    }
    expect_read_again({
        [&] { // the summary has lost its last blank
            const std::string path = config_directory + "/url.list";
            std::string text = installation_.read(path);
            installation_.write(path, text.erase(text.find('\n') - 1, 1));
            append(cache_manifest, "");
        },
        [&] {
            installation_.write_filters("active|na|1|na|/a*\n");
            EXPECT_EQ(answer(), 2);
            EXPECT_EQ(answer(), 0);
            append(config_directory + "/complete_url.list", ""); // on which the others now rest
        },
    });
}

TEST_F(Checker, AnIncompleteCachePreventsReuse) {
    expect_read_again({
        [&] { remove(cache); },
        [&] { remove(cache_manifest); },
        [&] { cut_end(cache_manifest, 2); },
        [&] { append(cache + "web.conf", "\n"); },
        [&] { append(cache + "replay_url_patterns.dat", "\n"); },
        [&] {
            append(cache + "web.conf", "\n");
            installation_.write_filters("active|na|1|na|/a*\n");
        },
    });
}

TEST_F(Checker, ALogThatChangesDuringARunIsReadAgain) {
    installation_.write_checker_script(std::string(ZVR_CHECKER_PATH) +
                                       " \"$@\"; code=$?; "
                                       "echo >>logs/access_0; exit $code\n");
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 1);
}

// What the checker has looked at is another file than the one that the run reads.
TEST_F(Checker, ALogThatIsExchangedDuringARunAndPutBackIsReadAgain) {
    const auto link_log_to = [&](const std::string& name) {
        remove("logs/access_0");
        fs::create_symlink(name, installation_.path("logs/access_0"));
    };
    installation_.write("logs/true", installation_.read("logs/access_0"));
    installation_.write("logs/other", combined_line());
    link_log_to("true");
    installation_.write_checker_script(
        std::string(ZVR_CHECKER_PATH) +
        " \"$@\"; code=$?; /bin/ln -sfn other logs/access_0; exit $code\n");
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(last_run_.counter("Total"), 2);
    link_log_to("true");
    installation_.write_checker_script("exec " + std::string(ZVR_CHECKER_PATH) + " \"$@\"\n");
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(last_run_.counter("Total"), 3);
    EXPECT_EQ(answer(), 0);
}

// The same for a file of the installation, before the checker looks or after it.
TEST_F(Checker, AnInputThatIsExchangedDuringARunAndPutBackIsReadAgain) {
    const std::string checker = std::string(ZVR_CHECKER_PATH) + " \"$@\"";
    const std::string scenario = project_directory + "/scenarios/web.conf";
    const std::string text = installation_.read(scenario);
    std::string other = text; // names the first log twice
    other.replace(other.find("access_1"), 8, "access_0");
    const struct {
        std::string file;
        std::string right;
        std::string wrong;
        bool starts_right;
    } rows[] = {
        {"sys/replay_settings.default", "GMT_OFFSET +0000\n", "GMT_OFFSET -0900\n", false},
        {scenario, text, other, true},
    };
    for (const auto& [file, right, wrong, starts_right] : rows) {
        remove(cache);
        const std::string path = installation_.path(file);
        const auto link_to = [&](const std::string& target) {
            remove(file);
            fs::create_symlink(target, path);
        };
        installation_.write(file + ".right", right);
        installation_.write(file + ".wrong", wrong);
        link_to(path + (starts_right ? ".right" : ".wrong"));
        const std::string flip = "/bin/ln -sfn " + path;
        installation_.write_checker_script(
            starts_right ? checker + "; code=$?; " + flip + ".wrong " + path + "; exit $code\n"
                         : flip + ".right " + path + "; exec " + checker + "\n");
        EXPECT_EQ(answer(), 1) << file;
        link_to(path + ".right");
        installation_.write_checker_script("exec " + checker + "\n");
        EXPECT_EQ(answer(), 1) << file;
        EXPECT_EQ(last_run_.counter("Total"), 3) << file;
        EXPECT_EQ(answer(), 0) << file;
    }
}

// Whoever may make names in the directory of the results can let them look exchanged while they are
// read.
TEST_F(Checker, ANameMadeWhileTheListIsReadRefusesNoRun) {
    std::string log;
    for (int i = 0; i < 40'000; ++i) {
        log += combined_line({.url = "/" + std::to_string(i)});
    }
    installation_.write_logs({log});
    run_in_full();
    for (int opening = 1; opening <= 3; ++opening) {
        installation_.write_filters("active|na|1|na|/" + std::string(opening, 'a') + "\n");
        let_files_settle();
        const std::string list = installation_.path(config_directory + "/complete_url.list");
        const FileDescriptor notifier(inotify_init1(IN_CLOEXEC));
        inotify_add_watch(notifier.get(), list.c_str(), IN_OPEN);
        const pid_t run = installation_.start({"-s", "web"});
        pollfd opened = {.fd = notifier.get(), .events = POLLIN, .revents = 0};
        for (int i = 0; i < opening && poll(&opened, 1, 300) == 1; ++i) {
            inotify_event event;
            EXPECT_EQ(read(notifier.get(), &event, sizeof event), ssize_t{sizeof event});
        }
        installation_.write_result("name" + std::to_string(opening), "");
        EXPECT_EQ(installation_.finish(run).output, last_run_.output);
    }
}

TEST_F(Checker, InputsThatChangeAtTheStartOfARunAreNotRemembered) {
    installation_.prepare_process(
        [&] { append(profile_directory + "/replay_settings.dat", "# more\n"); });
    for (int i = 0; i < 8; ++i) { // at different times of a tick
        EXPECT_EQ(answer(), 1);
        EXPECT_FALSE(installation_.exists(cache_manifest));
    }
}

TEST_F(Checker, ARunThatFailsLeavesNothingToReuse) {
    run_in_full();
    const std::string url_list = installation_.result("url.list");
    const std::string path = config_directory + "/url.list";
    installation_.write_filters("active|na|1|na|/a*\n");
    remove(path);
    fs::create_directories(installation_.path(path + "/in the way"));
    expect_some_failure(installation_.run());
    EXPECT_FALSE(installation_.exists(cache_manifest));
    remove(path);
    installation_.write(path, url_list);
    EXPECT_EQ(answer(), 1);
}

TEST_F(Checker, ASecondLiveRunIsRefused) {
    run_in_full();
    fs::copy(installation_.path("workspace/admin"), installation_.path("workspace/w"),
             fs::copy_options::recursive);
    append("logs/access_1", "\n"); // to be read again
    HeldStream progress;
    installation_.prepare_process([&] { progress.replace(STDERR_FILENO); });
    const pid_t waiting = installation_.start({"--scen=web", "-c"});
    progress.take();
    progress.has_line(-1);
    installation_.prepare_process([] {});
    expect_failure(installation_.run(),
                   "Url list processing Tool is already running, first close that and run again");
    const std::string last_answer = installation_.read(cache_answer);
    EXPECT_EQ(installation_.run_words({"-s", "w/default/default/default/web"}).status, 0)
        << "though of the same name";
    EXPECT_EQ(installation_.read(cache_answer), last_answer);

    kill(waiting, SIGKILL);
    waitpid(waiting, nullptr, 0);
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 0);
    EXPECT_FALSE(fs::exists(backup_path(waiting)));
}
