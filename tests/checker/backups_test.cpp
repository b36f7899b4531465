#include "tests/checker/checker_fixture.h"
#include "tests/support/held_stream.h"
#include "tests/support/permissions.h"

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>

namespace fs = std::filesystem;

// What becomes of the backups of runs, whose process ids may come again.

TEST_F(Checker, BackupsThatNoRunHoldsAreRemoved) {
    const pid_t no_process = 2'000'000'000; // above every process id
    const std::string left = backup_path(no_process);
    const std::string held = backup_path(no_process + 1);
    const std::string link = backup_path(no_process + 2);
    const std::string of_other = backup_path(no_process + 3);
    const std::string moved_here = backup_path(no_process + 4);
    for (const std::string& path : {left, held, of_other, moved_here}) {
        fs::copy(installation_.path("logs"), path);
        fs::permissions(path, fs::perms::owner_all);
    }
    fs::permissions(moved_here, fs::perms::all);
    fs::create_directory_symlink(installation_.path("logs"), link);
    const FileDescriptor lock(open(held.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(flock(lock.get(), LOCK_EX), 0);
    const bool is_others = geteuid() == 0 && chown(of_other.c_str(), 65534, 65534) == 0;
    EXPECT_EQ(answer(), 1);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(held + "/access_0"));
    EXPECT_TRUE(fs::exists(link + "/access_0"));
    EXPECT_EQ(fs::exists(of_other), is_others);
    EXPECT_TRUE(fs::exists(moved_here + "/access_0")) << "which no run has made";
    for (const std::string& path : {held, link, of_other, moved_here}) {
        fs::remove_all(path);
    }
}

TEST_F(Checker, ABackupIsNeverRemovedUnderItsRun) {
    const pid_t tidier = fork();
    while (tidier == 0) {
        (void)!std::system(ZVR_CHECKER_PATH " /x.conf 2000000000 >/dev/null");
    }
    for (int i = 0; i < 20; ++i) {
        remove(cache_manifest);
        EXPECT_EQ(answer(), 1) << i;
        EXPECT_TRUE(installation_.exists(cache_manifest)) << i;
    }
    kill(tidier, SIGKILL);
    waitpid(tidier, nullptr, 0);
}

TEST_F(Checker, RunsInContainersThatShareTheirFilesAreNotInEachOthersWay) {
    installation_.prepare_process(enter_container);
    let_files_settle();
    if (installation_.run().status == not_permitted) {
        GTEST_SKIP() << "no process may have its own view of the file system";
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(answer(), 0) << i;
        EXPECT_FALSE(fs::exists(backup_path(1)));
    }

    append("logs/access_1", "\n"); // to be read again
    HeldStream progress;
    installation_.prepare_process([&] { progress.replace(STDERR_FILENO); });
    const pid_t waiting = installation_.start({"-s", "web", "-c"});
    progress.take();
    progress.has_line(-1);
    installation_.prepare_process(enter_container);
    expect_failure(installation_.run(),
                   "Url list processing Tool is already running, first close that and run again");
    EXPECT_TRUE(fs::exists(backup_path(waiting)));
    progress.stop_reading();
    EXPECT_EQ(installation_.finish(waiting).status, 0);
    installation_.prepare_process([] {});
    EXPECT_EQ(answer(), 0);
    EXPECT_FALSE(fs::exists(backup_path(1))) << "which the refused run has left";
}
