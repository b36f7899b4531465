#include "base/regular_file.h"

#include "tests/unit_helpers.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

// A pipe that is opened and closed again costs its writer what it has written.
TEST(RegularFile, IsAllThatIsOpenedWhateverTakesItsPlace) {
    const TemporaryDirectory directory;
    const std::string path = directory.write("log", "x\n");
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const FileDescriptor openings(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_NE(inotify_add_watch(openings.get(), pipe.c_str(), IN_OPEN), -1);
    const std::jthread exchange([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, pipe.c_str(), RENAME_EXCHANGE);
        }
    });
    int attempts = 0;
    int found = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
    for (; std::chrono::steady_clock::now() < end; ++attempts) {
        found += open_regular_file(path.c_str()).is_open() ? 1 : 0;
    }
    EXPECT_GT(found, 0);
    EXPECT_LT(found, attempts);
    alignas(inotify_event) char event[sizeof(inotify_event)];
    EXPECT_EQ(read(openings.get(), event, sizeof event), -1) << "the pipe was opened";
    EXPECT_EQ(errno, EAGAIN);
}
