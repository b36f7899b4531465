#include "tests/support/held_stream.h"
#include "tests/support/permissions.h"
#include "tests/support/test_installation.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

// The directories of results are open to all users of the machine: what these plant there must not
// make a run write, read or wait elsewhere.

namespace {

constexpr const char* secret = "a file of the user who runs\n";
constexpr uid_t other_user = 65534;
const std::string scenario = project_directory + "/ReplayAccessLogs/web";
const std::string cache_directory = scenario + "/.tmp";

class PlantedFiles : public testing::Test {
  protected:
    PlantedFiles() {
        installation_.add_settings("IGNORE_URL_QUERY_PARAM 1\n");
        installation_.write_logs({combined_line({.url = "/a?q"})});
        installation_.write("victim", secret);
    }

    // Ends a run that waits for ever.
    static void limit_time() { alarm(30); }

    std::string path(const std::string& name) const { return installation_.path(name); }

    void plant_link(const std::string& name, const std::string& target) const {
        fs::remove_all(path(name));
        fs::create_symlink(path(target), path(name));
    }

    void plant_pipe(const std::string& name) const {
        fs::remove_all(path(name));
        EXPECT_EQ(mkfifo(path(name).c_str(), 0666), 0);
    }

    void give_away(const std::string& name) const {
        EXPECT_EQ(lchown(path(name).c_str(), other_user, other_user), 0);
    }

    // Lets files and directories that are made in a directory get another group.
    void pass_group_on(const std::string& directory) const {
        EXPECT_EQ(chown(path(directory).c_str(), 0, other_user), 0);
        EXPECT_EQ(chmod(path(directory).c_str(), 02777), 0);
    }

    // A run that can neither remove nor make a result or its debug log.
    RunResult run_in_closed_directories(const Lines& options) {
        const fs::path directories[] = {path(config_directory), path("webapps/zivrano/logs")};
        for (const fs::path& directory : directories) {
            fs::permissions(directory, fs::perms::owner_read | fs::perms::owner_exec);
        }
        installation_.prepare_process(obey_permissions);
        RunResult result = installation_.run(options);
        for (const fs::path& directory : directories) {
            fs::permissions(directory, fs::perms::all);
        }
        return result;
    }

    void expect_whole_result(const RunResult& run) const {
        EXPECT_EQ(run.output, summary_line({.total = 1, .url_patterns = 1}));
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(installation_.read("victim"), secret);
    }

    TestInstallation installation_;
};

TEST_F(PlantedFiles, SomebodyWhoKeepsPlantingLinksGetsNothingOverwritten) {
    constexpr int runs = 12;
    const std::string names[] = {"config/hosts.list",      "config/url.list",
                                 "config/akaau.trace",     "config/complete_url.list",
                                 "config/query_url.list",  ".tmp/cache_answer.txt",
                                 ".tmp/cache_manifest.txt"};
    installation_.use_checker();
    EXPECT_EQ(installation_.run().status, 0);
    for (const std::string& name : names) {
        const std::string file = path(scenario + "/" + name);
        const pid_t planter = fork();
        while (planter == 0) {
            unlink(file.c_str());
            (void)!symlink(path("victim").c_str(), file.c_str());
        }
        for (int i = 0; i < runs; ++i) {
            installation_.run({"-a"}); // which may give up
            EXPECT_EQ(installation_.read("victim"), secret) << name;
        }
        kill(planter, SIGKILL);
        waitpid(planter, nullptr, 0);
        fs::remove(file);
    }
    fs::remove_all(path(cache_directory));
    expect_whole_result(installation_.run());
}

TEST_F(PlantedFiles, TheInputCacheTakesNoFileForItsOwn) {
    const std::string copy = cache_directory + "/web.conf";
    const std::function<void()> plants[] = {
        [&] { plant_link(copy, "victim"); },
        [&] { plant_link(copy, "nowhere"); },
        [&] { plant_pipe(copy); },
    };
    for (const auto& plant : plants) {
        plant();
        installation_.prepare_process(limit_time);
        expect_whole_result(installation_.run());
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path(copy))));
        EXPECT_FALSE(installation_.exists("nowhere"));
    }
}

TEST_F(PlantedFiles, ARunReadsBackOnlyItsOwnUsersFiles) {
    EXPECT_EQ(installation_.run().status, 0);
    const std::tuple<int, std::string, std::string> rows[] = {
        {0, "url.list", "Failed to open url.list file"},
        {2, "complete_url.list",
         "Failed to open cache file " + path(config_directory) + "//complete_url.list"},
    };
    for (const auto& [answer, name, message] : rows) {
        const std::string file = config_directory + "/" + name;
        const std::string content = installation_.read(file);
        installation_.write_checker(answer);
        installation_.prepare_process(limit_time);
        plant_pipe(file);
        expect_failure(installation_.run(), message);
        fs::remove(path(file));
        installation_.write("kept", content);
        plant_link(file, "kept");
        EXPECT_EQ(installation_.run().status, 0) << "by a link of the user's own";
        if (geteuid() != 0) {
            continue; // others' files are the superuser's to make
        }
        fs::rename(path("kept"), path("elsewhere"));
        plant_link("kept", "elsewhere");
        give_away("kept");
        expect_failure(installation_.run(), message);
        fs::remove(path("kept"));
        give_away(file);
        expect_failure(installation_.run(), message);
        fs::remove(path(file));
        installation_.write(file, content);
        give_away(file);
        expect_failure(installation_.run(), message);
        fs::remove(path(file));
        installation_.write(file, content);
    }
}

// Whoever may write in the directories can exchange what the checker has looked at for older files
// of the same user before the run reads them.
TEST_F(PlantedFiles, WhatIsExchangedBehindTheCheckersBackIsNotUsed) {
    const std::string parent = project_directory + "/ReplayAccessLogs/web";
    const std::string stale = parent + "/stale";
    const std::string exchanges[] = {
        "/bin/mv " + config_directory + " true; /bin/mv " + stale + " " + config_directory,
        "/bin/mv " + stale + "/* " + config_directory,
    };
    for (const std::string& exchange : exchanges) {
        for (const int answer : {0, 2}) {
            SCOPED_TRACE(exchange + " " + std::to_string(answer));
            fs::remove_all(path(parent));
            fs::remove_all(path("true"));
            fs::create_directories(path(cache_directory));
            installation_.write_checker(1);
            EXPECT_EQ(installation_.run().status, 0);
            std::string list = installation_.result("complete_url.list");
            installation_.write(stale + "/complete_url.list",
                                list.replace(list.find("/a?"), 2, "/z"));
            installation_.write(stale + "/url.list", "Total=9\n");
            installation_.write_checker_script(exchange + "; exit " + std::to_string(answer));
            expect_whole_result(installation_.run());
            EXPECT_EQ(installation_.result("url.list").find("/z"), std::string::npos);
        }
    }
}

// The name of the directory is what others may exchange, twice, when it is a link elsewhere.
TEST_F(PlantedFiles, ALinkThatWasExchangedAndPutBackIsNotTrusted) {
    fs::create_directories(path("elsewhere/config"));
    fs::create_directories(path("elsewhere/.tmp"));
    plant_link(config_directory, path("elsewhere/config"));
    installation_.write_checker(1);
    EXPECT_EQ(installation_.run().status, 0);
    installation_.write("elsewhere/config/url.list", "Total=9\n");
    const std::string away = path("away");
    installation_.write_checker_script("/bin/mv " + config_directory + " " + away + "; /bin/mv " +
                                       away + " " + config_directory + "; exit 0");
    expect_whole_result(installation_.run());
}

// A checker that has answered 0 has removed the backup, so that its name is free for everybody.
TEST_F(PlantedFiles, WhatTakesTheBackupsPlaceIsNotRemoved) {
    EXPECT_EQ(installation_.run().status, 0);
    const std::string backup = "/tmp/zvr_al_gen_url_list.backup.$PPID";
    installation_.write_checker_script("/bin/rm -r " + backup + "; /bin/mkdir -p " + backup +
                                       "/kept; /bin/mv " + config_directory + " x; /bin/mv x " +
                                       config_directory + "; exit 0");
    const RunResult run = installation_.run();
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.left_backup_directory);
}

TEST_F(PlantedFiles, DirectoriesOfOthersAreRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "others' directories are the superuser's to make";
    }
    for (const std::string& name : {scenario, config_directory, cache_directory}) {
        const auto expect_refusal = [&](bool is_refused) {
            const RunResult run = installation_.run();
            const bool is_cache = name == cache_directory;
            EXPECT_EQ(run.status, is_refused && !is_cache ? 255 : 0) << name;
            EXPECT_EQ(run.output.find("Failed to copy to cache") != std::string::npos,
                      is_refused && is_cache);
            EXPECT_EQ(run.output.find("Unable to create directory - ") != std::string::npos,
                      is_refused && !is_cache);
        };
        fs::remove_all(path(scenario));
        fs::create_directories(path(cache_directory));
        fs::create_directories(path(config_directory));
        fs::create_directories(path("elsewhere/config"));
        give_away(name);
        expect_refusal(true);
        plant_link(name, "elsewhere");
        give_away(name);
        expect_refusal(true);
        EXPECT_TRUE(installation_.files_of("elsewhere/config").empty());
        EXPECT_EQ(std::distance(fs::directory_iterator(path("elsewhere")), {}), 1);
        plant_link(name, "elsewhere"); // the user's own
        fs::create_directories(path("elsewhere/.tmp"));
        fs::create_directories(path(".tmp"));
        expect_refusal(false);
        fs::remove_all(path("elsewhere"));
    }
}

// An access control list of read and write permission for another user, to be passed on to all that
// is made in the directory. Returns false where there are no such lists.
bool plant_list(const std::string& directory) {
    struct Entry {
        uint16_t tag, permissions;
        uint32_t id;
    };
    const struct {
        uint32_t version = 2;
        Entry entries[5] = {{0x01, 7, ~0U}, // owner
                            {0x02, 7, other_user},
                            {0x04, 7, ~0U},  // group
                            {0x10, 7, ~0U},  // mask
                            {0x20, 7, ~0U}}; // all others
    } list;
    return setxattr(directory.c_str(), "system.posix_acl_default", &list, sizeof list, 0) == 0;
}

bool has_list(const fs::path& path, const std::string& kind) {
    return getxattr(path.c_str(), ("system.posix_acl_" + kind).c_str(), nullptr, 0) > 0;
}

void expect_no_more_rights(const std::string& path, mode_t permissions) {
    SCOPED_TRACE(path);
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, permissions);
    EXPECT_EQ(status.st_gid, getegid());
    EXPECT_FALSE(has_list(path, "access"));
}

TEST_F(PlantedFiles, NothingInheritsRightsFromItsDirectory) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "groups are the superuser's to give";
    }
    installation_.use_checker();
    const std::string project = project_directory + "/ReplayAccessLogs";
    const std::string logs = "webapps/zivrano/logs";
    for (const mode_t mask : {0027, 0002}) {
        for (const std::string& planted_in : {project, scenario}) {
            SCOPED_TRACE(planted_in);
            fs::remove_all(path(scenario));
            fs::create_directories(path(planted_in));
            for (const std::string& directory : {planted_in, logs}) {
                pass_group_on(directory);
                if (!plant_list(path(directory))) {
                    GTEST_SKIP() << "no access control lists here";
                }
            }
            installation_.prepare_process([mask] { umask(mask); });
            let_files_settle();
            EXPECT_EQ(installation_.run({"-d1", "-a"}).status, 0);
            const std::pair<std::string, mode_t> rows[] = {
                {config_directory + "/url.list", 0666 & ~mask},
                {config_directory + "/complete_url.list", 0666 & ~mask},
                {config_directory + "/query_url.list", 0666 & ~mask},
                {config_directory + "/hosts.list", 0666 & ~mask},
                {config_directory + "/akaau.trace", 0666 & ~mask},
                {logs + "/zivrano_replay_debug.log", 0666 & ~mask},
                {cache_directory + "/cache_answer.txt", 0600},
                {cache_directory + "/cache_manifest.txt", 0600},
                {cache_directory + "/web.conf", 0600},
            };
            for (const auto& [name, permissions] : rows) {
                expect_no_more_rights(path(name), permissions);
            }
            EXPECT_FALSE(has_list(path(config_directory), "default"));
            EXPECT_FALSE(has_list(path(cache_directory), "default"));
        }
    }
}

// They may stand in a directory that nobody else can look into.
TEST_F(PlantedFiles, CopiesOfInputsAreForTheUserAlone) {
    fs::create_directories(path(cache_directory));
    installation_.prepare_process([] { umask(0); });
    expect_whole_result(installation_.run());
    int copies = 0;
    for (const auto& copy : fs::directory_iterator(path(cache_directory))) {
        EXPECT_EQ(copy.status().permissions(), fs::perms::owner_read | fs::perms::owner_write);
        ++copies;
    }
    EXPECT_EQ(copies, 4);
}

// A link of the user's own may lead to a place where others write.
TEST_F(PlantedFiles, LinksOfOthersAreNotFollowedBehindOwnLinks) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "others' links are the superuser's to make";
    }
    const std::string results = path("open/results");
    const std::pair<std::string, bool> rows[] = {
        // target of the link "config", whether a run uses it
        {results, true},
        {path("relative"), true},
        {"../../../../../../../../open/./results/", true},
        {path("open/own/../results"), true},
        {path("open/planted"), false},
        {path("open/own/planted"), false},
        {path("planted_open/results"), false},
        {path("open/of_another"), false},
        {path("loop"), false},
        {path("open/none"), false},
    };
    for (const char* directory :
         {"open/results", "open/own", "open/of_another", "secret/results"}) {
        fs::create_directories(path(directory));
    }
    fs::create_symlink("open/results", path("relative"));
    fs::create_symlink("loop", path("loop"));
    plant_link("open/planted", "secret/results");
    plant_link("open/own/planted", "secret/results");
    plant_link("planted_open", "secret");
    for (const char* name :
         {"open/planted", "open/own/planted", "planted_open", "open/of_another"}) {
        give_away(name);
    }
    fs::create_directories(path(scenario));
    for (const auto& [target, is_used] : rows) {
        SCOPED_TRACE(target);
        fs::remove_all(path(config_directory));
        fs::create_symlink(target, path(config_directory));
        fs::remove(results + "/url.list");
        EXPECT_EQ(installation_.run().status, is_used ? 0 : 255);
        EXPECT_EQ(fs::exists(results + "/url.list"), is_used);
        EXPECT_TRUE(installation_.files_of("secret/results").empty());
        EXPECT_TRUE(installation_.files_of("open/of_another").empty());
    }
}

// Who moves the configuration directory during a run chooses what stands beside it from then on.
TEST_F(PlantedFiles, TheInputCacheIsBesideWhereTheRunBegan) {
    fs::create_directories(path("elsewhere/.tmp"));
    installation_.write("elsewhere/.tmp/replay_settings.dat", secret);
    fs::create_directories(path(cache_directory));
    HeldStream progress;
    installation_.prepare_process([&] { progress.replace(STDERR_FILENO); });
    const pid_t run = installation_.start({"-s", "web", "-c"});
    while (progress.take().find("End dumping complete url list") == std::string::npos) {
    }
    fs::rename(path(config_directory), path("elsewhere/config"));
    progress.stop_reading();
    expect_whole_result(installation_.finish(run));
    EXPECT_EQ(installation_.read("elsewhere/.tmp/replay_settings.dat"), secret);
    EXPECT_EQ(installation_.files_of("elsewhere/.tmp").size(), 1U);
    EXPECT_EQ(installation_.files_of(cache_directory).size(), 4U);
}

TEST_F(PlantedFiles, AFileInPlaceOfADirectoryIsNoMatterOfOwners) {
    fs::remove_all(path(scenario));
    installation_.write(scenario, "");
    const RunResult run = installation_.run();
    EXPECT_EQ(run.status, 255);
    EXPECT_NE(run.output.find("Path: '" + path(scenario) + "'. Error = 'File exists'"),
              std::string::npos)
        << run.output;
}

TEST_F(PlantedFiles, UsersShareDirectoriesOfTheSuperuser) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "they are the superuser's to make";
    }
    const fs::path results = path(scenario);
    for (const fs::path& directory : {results, results / "config", results / ".tmp"}) {
        fs::create_directories(directory);
        fs::permissions(directory, fs::perms::all);
    }
    fs::permissions(installation_.root(), fs::perms::all);
    for (const uid_t user : {uid_t{0}, other_user, other_user - 1, uid_t{0}}) {
        installation_.prepare_process([user] { require(setgid(user) == 0 && setuid(user) == 0); });
        expect_whole_result(installation_.run());
        struct stat status = {};
        EXPECT_EQ(stat(path(config_directory + "/url.list").c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, user);
    }
}

TEST_F(PlantedFiles, WhatCannotBeRemovedIsEmptiedOnlyWhenItIsTheUsersOwn) {
    const std::string debug_log = "webapps/zivrano/logs/zivrano_replay_debug.log";
    const std::string hosts = config_directory + "/hosts.list";
    EXPECT_EQ(installation_.run({"-d1", "-a"}).status, 0);
    const auto results = installation_.files_of(config_directory);
    const std::string long_text(5000, 'x');
    installation_.write(debug_log, long_text);
    for (const auto& [name, text] : results) {
        installation_.write(config_directory + "/" + name, long_text);
    }
    const RunResult emptied = run_in_closed_directories({"-d1", "-a"});
    if (emptied.status == not_permitted) {
        GTEST_SKIP() << "the superuser's rights can not be given up";
    }
    EXPECT_EQ(emptied.status, 0) << emptied.output;
    EXPECT_EQ(installation_.files_of(config_directory), results);
    EXPECT_EQ(installation_.read(debug_log).find("xx"), std::string::npos);
    EXPECT_EQ(run_in_closed_directories({"-q", "0"}).status, 0);
    EXPECT_EQ(installation_.result("query_url.list"), "") << "though none is wanted";
    EXPECT_EQ(installation_.result("akaau.trace"), "");

    const std::function<void()> plants[] = {
        [&] { plant_link(hosts, "victim"); },
        [&] {
            fs::remove(path(hosts));
            fs::create_hard_link(path("victim"), path(hosts));
        },
        [&] { plant_pipe(hosts); },
    };
    for (const auto& plant : plants) {
        plant();
        expect_failure(run_in_closed_directories({"-a"}),
                       "Failed to open file " + path(config_directory) + "//hosts.list");
        EXPECT_EQ(installation_.read("victim"), secret);
    }
}

TEST_F(PlantedFiles, ResultsThatARunDoesNotWriteAreNotLeftByAnother) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "others' files are the superuser's to make";
    }
    const std::pair<std::string, std::string> rows[] = {
        {"query_url.list", "Unable to create 'query_url.list' file"},
        {"akaau.trace", "Failed to open akaau.trace file"},
    };
    fs::create_directories(path(config_directory));
    fs::create_directories(path(cache_directory));
    for (const std::string& directory : {scenario, config_directory, cache_directory}) {
        fs::permissions(path(directory), fs::perms::all | fs::perms::sticky_bit);
    }
    fs::permissions(installation_.root(), fs::perms::all);
    installation_.prepare_process([] { require(setgid(7) == 0 && setuid(7) == 0); });
    for (const auto& [name, message] : rows) {
        const std::string file = config_directory + "/" + name;
        installation_.write(file, "forged\n");
        give_away(file);
        for (const fs::perms permissions : {fs::perms::owner_read, fs::perms::all}) {
            fs::permissions(path(file), permissions);
            expect_failure(installation_.run({"-q", "0"}), message);
        }
        fs::remove(path(file));
        fs::create_directory(path(file));
        expect_failure(installation_.run({"-q", "0"}), message);
        fs::remove(path(file));
        installation_.write(file, "old\n");
        EXPECT_EQ(chown(path(file).c_str(), 7, 7), 0);
        expect_whole_result(installation_.run({"-q", "0"}));
        EXPECT_FALSE(installation_.exists(file));
    }
}

TEST_F(PlantedFiles, TheBackupIsForTheUserAlone) {
    installation_.write_checker_script("/bin/ls -ld /tmp/zvr_al_gen_url_list.backup.$2 >seen\n"
                                       "/bin/rm /tmp/zvr_al_gen_url_list.backup.$2/* \n"
                                       "exit 1\n");
    for (const mode_t mask : {0000, 0777}) {
        installation_.prepare_process([mask] { umask(mask); });
        const RunResult run = installation_.run();
        EXPECT_TRUE(installation_.read("seen").starts_with("drwx------ ")) << mask;
        fs::permissions(path("seen"), fs::perms::all);
        EXPECT_NE(run.output.find(RunResult::error_line("Failed to copy to cache")),
                  std::string::npos)
            << "though nothing is left in it";
    }
}

} // namespace
