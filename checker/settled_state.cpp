#include "checker/settled_state.h"

#include "base/file_state.h"

#include <cerrno>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// "missing" for a file that does not exist; nothing for what is no regular file.
std::optional<std::string> state_at(const fs::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? std::optional<std::string>("missing") : std::nullopt;
    }
    return S_ISREG(status.st_mode) ? std::optional(state_text(status)) : std::nullopt;
}

// The time now on the clock that file times are taken from.
int64_t file_time_now() {
    timespec time;
    clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return nanoseconds(time);
}

// Whether the file system's clock has surely advanced since the file was changed. One that counts
// whole seconds shows it by the lack of a fraction.
bool has_settled(const fs::path& path) {
    constexpr int64_t second = 1'000'000'000;
    constexpr int64_t fine_step = second / 50;
    constexpr int64_t coarse_step = 2 * second;
    const std::optional<int64_t> changed = change_time(path);
    if (!changed) {
        return true; // missing
    }
    const bool is_coarse = *changed % second == 0;
    return file_time_now() - *changed >= (is_coarse ? coarse_step : fine_step);
}

} // namespace

std::optional<std::string> settled_file_state(const fs::path& path) {
    constexpr int attempts = 4;
    constexpr useconds_t step = 20'000;
    for (int i = 0; i < attempts; ++i) {
        std::optional<std::string> state = state_at(path);
        if (!state || has_settled(path)) {
            return state;
        }
        usleep(step);
    }
    return std::nullopt;
}

std::optional<int64_t> change_time(const fs::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return nanoseconds(status.st_ctim);
}
