#include "companions/common/newer_inputs.h"

#include <sys/stat.h>

namespace {

bool is_newer(const struct stat& a, const struct stat& b) {
    return a.st_mtim.tv_sec != b.st_mtim.tv_sec ? a.st_mtim.tv_sec > b.st_mtim.tv_sec
                                                : a.st_mtim.tv_nsec > b.st_mtim.tv_nsec;
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
