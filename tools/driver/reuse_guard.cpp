#include "tools/driver/reuse_guard.h"

#include "base/file_state.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr useconds_t longest_step = 10'000; // of the times of files, in microseconds

// A directory and the one above it; and the one in which its name stands, which is another one when
// that is a link.
using Directories = std::array<struct stat, 3>;

std::string named_in(std::string path) {
    while (path.ends_with('/')) {
        path.pop_back();
    }
    return path.substr(0, path.rfind('/') + 1);
}

bool look_at(const OwnDirectory& directory, Directories& found) {
    return directory.is_open() && fstat(directory.descriptor(), &found[0]) == 0 &&
           fstatat(directory.descriptor(), "..", &found[1], 0) == 0 &&
           stat(named_in(directory.path()).c_str(), &found[2]) == 0;
}

std::string states_of(const Directories& directories) {
    std::string states;
    for (const struct stat& directory : directories) {
        states += state_text(directory) + " ";
    }
    return states;
}

bool have_settled(const Directories& directories) {
    timespec now;
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return std::all_of(directories.begin(), directories.end(), [&](const struct stat& directory) {
        return nanoseconds(now) - nanoseconds(directory.st_ctim) > int64_t{1000} * longest_step;
    });
}

} // namespace

ReuseGuard::ReuseGuard(const std::string& config_directory) {
    constexpr int attempts = 4;
    const OwnDirectory config_dir(config_directory);
    Directories found;
    for (int i = 0; i < attempts && look_at(config_dir, found); ++i) {
        if (have_settled(found)) {
            states_ = states_of(found);
            return;
        }
        usleep(longest_step);
    }
}

bool ReuseGuard::holds(const OwnDirectory& config_dir) const {
    Directories found;
    return !states_.empty() && look_at(config_dir, found) && states_of(found) == states_;
}
