#include "companions/common/newer_inputs.h"

#include <sys/stat.h>

namespace {

bool is_later(const timespec& a, const timespec& b) {
    return a.tv_sec != b.tv_sec ? a.tv_sec > b.tv_sec : a.tv_nsec > b.tv_nsec;
}

// An old file that was moved to its place, or copied there with its time, has a new time of status.
bool is_newer(const struct stat& input, const struct stat& result) {
    return is_later(input.st_mtim, result.st_mtim) || is_later(input.st_ctim, result.st_mtim);
}

} // namespace

std::vector<std::string> files_newer_than(const std::string& result,
                                          const std::vector<std::string>& paths) {
    std::vector<std::string> newer;
    struct stat made;
    if (stat(result.c_str(), &made) != 0) {
        return newer;
    }
    for (const std::string& path : paths) {
        struct stat changed;
        if (stat(path.c_str(), &changed) == 0 && is_newer(changed, made)) {
            newer.push_back(path);
        }
    }
    return newer;
}
