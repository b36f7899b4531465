#pragma once

#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

// A standard stream of a run that the test holds back, so that the test knows how far the run has
// come. The stream has room for one line, taken to begin with by an empty one: the run waits with
// each line until the line before it was taken.
class HeldStream {
  public:
    HeldStream() {
        EXPECT_EQ(pipe2(ends_, O_DIRECT | O_CLOEXEC), 0); // every write takes a page of its own
        fcntl(ends_[1], F_SETPIPE_SZ, sysconf(_SC_PAGESIZE));
        EXPECT_EQ(write(ends_[1], "\n", 1), 1);
    }
    ~HeldStream() {
        stop_reading();
        close(ends_[1]);
    }
    HeldStream(const HeldStream&) = delete;
    HeldStream& operator=(const HeldStream&) = delete;

    // Makes it a stream of this process, the run's, which is ended should it wait for ever.
    void replace(int descriptor) const {
        constexpr unsigned int ever = 300;
        dup2(ends_[1], descriptor);
        alarm(ever);
    }

    // The next lines with their line feeds; fewer when the run has closed the stream.
    std::string take(size_t count = 1) {
        close(std::exchange(ends_[1], -1));
        std::string lines;
        for (char line[PIPE_BUF]; count > 0; --count) {
            const ssize_t size = read(ends_[0], line, sizeof line);
            lines.append(line, size > 0 ? static_cast<size_t>(size) : 0);
        }
        return lines;
    }

    bool has_line(int milliseconds = 0) const {
        pollfd end = {ends_[0], POLLIN, 0};
        return poll(&end, 1, milliseconds) == 1 && (end.revents & POLLIN) != 0;
    }

    // Further lines are lost.
    void stop_reading() { close(std::exchange(ends_[0], -1)); }

  private:
    int ends_[2] = {-1, -1};
};

// Waits until no thread of a run is at work: all wait for something, or have ended.
inline void wait_until_idle(pid_t run) {
    bool is_idle = false;
    while (!is_idle) {
        usleep(1000);
        is_idle = true;
        for (const auto& thread :
             std::filesystem::directory_iterator("/proc/" + std::to_string(run) + "/task")) {
            std::string status; // the state follows the program's name
            std::getline(std::ifstream(thread.path() / "stat"), status);
            is_idle = is_idle && status.find_first_of("RD", status.rfind(") ")) == status.npos;
        }
    }
}
