#include "tools/driver/reuse_guard.h"

#include "base/file_state.h"

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr useconds_t longest_step = 10'000; // of the times of files, in microseconds

// A directory and the one above it.
struct Directories {
    struct stat itself;
    struct stat above;
};

bool look_at(const OwnDirectory& directory, Directories& found) {
    return directory.is_open() && fstat(directory.descriptor(), &found.itself) == 0 &&
           fstatat(directory.descriptor(), "..", &found.above, 0) == 0;
}

std::string states_of(const Directories& directories) {
    return state_text(directories.itself) + " " + state_text(directories.above);
}

bool have_settled(const Directories& directories) {
    timespec now;
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    const int64_t changed =
        std::max(nanoseconds(directories.itself.st_ctim), nanoseconds(directories.above.st_ctim));
    return nanoseconds(now) - changed > int64_t{1000} * longest_step;
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
