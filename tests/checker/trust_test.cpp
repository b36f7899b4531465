#include "tests/checker/checker_fixture.h"
#include "tests/support/held_stream.h"

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>

namespace fs = std::filesystem;

// What may be used again, and what must not, as it is not what the last run has left.

namespace {

const std::string url_list = config_directory + "/url.list";

class CheckerTrust : public Checker {
  protected:
    // A checker that waits or reads for ever ends with its run.
    CheckerTrust() {
        installation_.prepare_process([] {
            const rlimit two_seconds = {2, 2};
            setrlimit(RLIMIT_CPU, &two_seconds);
            alarm(30);
        });
    }

    void move_away(const std::string& name) const {
        fs::remove(installation_.path("kept"));
        fs::rename(installation_.path(name), installation_.path("kept"));
    }

    void plant_link(const std::string& name, const std::string& target) const {
        move_away(name);
        fs::create_symlink(target, installation_.path(name));
    }

    void plant_pipe(const std::string& name) const {
        move_away(name);
        EXPECT_EQ(mkfifo(installation_.path(name).c_str(), 0666), 0);
    }

    void give_away(const std::string& name) const {
        EXPECT_EQ(chown(installation_.path(name).c_str(), 65534, 65534), 0);
    }

    // A log of one request, with these texts as they stand.
    void log_request(const std::string& method, const std::string& host) const {
        installation_.write_settings("USER_SESSION_KEY client_ip\nACCESS_LOG_TYPE custom\n"
                                     "AL_FIELD CLIENT_IP 1\nAL_FIELD DATE 2\nAL_FIELD TIME 3\n"
                                     "AL_FIELD METHOD 4\nAL_FIELD URL_QUERY 5\n"
                                     "AL_FIELD STATUS_CODE 6\nAL_FIELD HOST_HEADER 7\n");
        installation_.write_logs(
            {"10.0.0.1 2000-10-10 20:55:36 \"" + method + "\" /a 200 \"" + host + "\"\n"});
    }
};

TEST_F(CheckerTrust, OnlyRegularFilesOfTheUserAreBelieved) {
    const std::string kept = installation_.path("kept");
    const std::tuple<std::string, bool, std::function<void()>> rows[] = {
        // reason, whether only the superuser can make the fault, fault
        {"the record of the last run is no", false, [&] { plant_pipe(cache_manifest); }},
        {"the record of the last run is no", false, [&] { plant_link(cache_manifest, kept); }},
        {"the record of the last run is no", false,
         [&] { plant_link(cache_manifest, "/dev/zero"); }},
        {"the record of the last run is not whole", false,
         [&] { fs::resize_file(installation_.path(cache_manifest), size_t{1} << 40); }},
        {"the record of the last run is no", true,
         [&] {
             give_away(cache_manifest);
             append(cache_manifest, "");
         }},
        {"url.list is no regular file", false, [&] { plant_pipe(url_list); }},
        {"url.list is no regular file", false,
         [&] {
             plant_link(url_list, kept);
             seal_again();
         }},
        {"url.list is no regular file", true,
         [&] {
             give_away(url_list);
             seal_again();
         }},
        {"the scenario is not that", false, [&] { plant_link(cache + "web.conf", kept); }},
        {"the scenario is not that", true, [&] { give_away(cache + "web.conf"); }},
    };
    for (const auto& [reason, by_superuser, fault] : rows) {
        if (by_superuser && geteuid() != 0) {
            continue;
        }
        EXPECT_EQ(answer_after(fault), 1) << reason << &fault - &std::get<2>(rows[0]);
        EXPECT_TRUE(installation_.read(cache_answer).starts_with("1: " + reason))
            << installation_.read(cache_answer);
        fs::remove_all(installation_.path(cache));
    }
}

TEST_F(CheckerTrust, AnyChangeAfterTheRunPreventsReuse) {
    const std::string manifest = installation_.path(cache_manifest);
    const fs::path scenario = installation_.path(project_directory + "/ReplayAccessLogs/web");
    const auto change_mode_of_all = [&] {
        for (const char* directory : {"config", ".tmp"}) { // the manifest last
            for (const auto& entry : fs::directory_iterator(scenario / directory)) {
                fs::permissions(entry, fs::perms::others_read, fs::perm_options::remove);
            }
        }
    };
    const auto touch = [](const fs::path& file) {
        fs::last_write_time(file, fs::last_write_time(file));
    };
    const std::string format = "cache manifest 2";
    expect_read_again({
        [&] {
            append(url_list, "");
            change_mode_of_all();
        },
        change_mode_of_all,
        [&] { touch(manifest); },
        [&] { touch(installation_.path(url_list)); },
        [&] {
            append(config_directory + "/complete_url.list", "");
            append(cache_manifest, "");
        },
        [&] { // a copy of everything, with its times
            const fs::path copy = installation_.path("copy");
            EXPECT_EQ(
                std::system(("/bin/cp -a " + scenario.string() + " " + copy.string()).c_str()), 0);
            fs::remove_all(scenario);
            fs::rename(copy, scenario);
        },
        [&] { // never sealed
            const std::string text = installation_.read(cache_manifest);
            installation_.write(cache_manifest, text.substr(0, text.find("sealed ")));
        },
        [&] { // of an earlier version
            const std::string text = installation_.read(cache_manifest);
            installation_.write(cache_manifest, "zvr_al_gen_url_list cache manifest 1" +
                                                    text.substr(text.find('\n')));
        },
    });
}

TEST_F(CheckerTrust, AResultThatChangesBeforeTheEndOfItsRunIsWrittenAgain) {
    HeldStream progress;
    installation_.prepare_process([&] { progress.replace(STDERR_FILENO); });
    const pid_t run = installation_.start({"-s", "web", "-c"});
    while (progress.take().find("End dumping complete url list") == std::string::npos) {
    }
    append(config_directory + "/complete_url.list", "");
    progress.stop_reading();
    EXPECT_EQ(installation_.finish(run).status, 0);
    installation_.prepare_process([] {});
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 0);
}

TEST_F(CheckerTrust, OnlyAListThatCanBeReadBackIsUsedAgain) {
    const std::tuple<std::string, std::string, bool> rows[] = {
        // method, host, whether its row can be read back
        {"#BAD_URLS=1", "h", false}, {"#GET", "h", false}, {"G|h|1|-1|/a", "h", false},
        {"GET", "a|7", false},       {"", "|", false},     {"", "h", true},
        {"GET", "", true},           {"", "", true},       {"G#", "#h", true},
    };
    for (const auto& [method, host, is_used] : rows) {
        SCOPED_TRACE(method + " " + host);
        log_request(method, host);
        installation_.write_filters("");
        EXPECT_EQ(answer(), 1);
        const Lines row = {"NO|MAIN|" + method + "|/a|1|NA|" + host + "|-1|NA|NA"};
        EXPECT_EQ(installation_.url_rows(), row);
        EXPECT_EQ(installation_.exists(cache_manifest), is_used);
        EXPECT_EQ(answer(), is_used ? 0 : 1);
        installation_.write_filters("active|na|1|na|/b\n");
        EXPECT_EQ(answer(), is_used ? 2 : 1);
        EXPECT_EQ(installation_.url_rows(), row);
    }
}

TEST_F(CheckerTrust, WhatAllUsersMayWriteIsNotUsedAgain) {
    installation_.prepare_process([] { umask(0); });
    run_in_full();
    const fs::perms of_manifest = fs::status(installation_.path(cache_manifest)).permissions();
    EXPECT_EQ(of_manifest & (fs::perms::group_write | fs::perms::others_write), fs::perms::none);
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(installation_.read(cache_answer),
              "1: complete_url.list may be written by all users of the machine\n");
    installation_.prepare_process([] { umask(022); });
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(answer(), 0);
}

} // namespace
