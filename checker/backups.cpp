#include "checker/backups.h"

#include "checker/manifest.h"
#include "checker/run_process.h"

#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* parent_directory = "/tmp";
constexpr std::string_view name_start = "zvr_al_gen_url_list.backup.";

struct Backup {
    pid_t pid;
    fs::path path;
};

std::optional<pid_t> process_of(const std::string& name) {
    pid_t pid = 0;
    const char* end = name.data() + name.size();
    if (!name.starts_with(name_start) ||
        std::from_chars(name.data() + name_start.size(), end, pid).ptr != end || pid <= 0) {
        return std::nullopt;
    }
    return pid;
}

std::vector<Backup> all_backups() {
    std::vector<Backup> backups;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(parent_directory, ignored)) {
        const std::optional<pid_t> pid = process_of(entry.path().filename());
        if (pid) {
            backups.push_back({*pid, entry.path()});
        }
    }
    return backups;
}

// Symbolic links are not followed: anybody can make one here.
bool is_own_directory(const fs::path& path, struct stat& status) {
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

// Moment of making; nothing on a file system that does not keep it.
std::optional<std::pair<int64_t, uint32_t>> birth_time(const fs::path& path) {
    struct statx status;
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME, &status) != 0 ||
        (status.stx_mask & STATX_BTIME) == 0) {
        return std::nullopt;
    }
    return std::pair(status.stx_btime.tv_sec, status.stx_btime.tv_nsec);
}

bool came_later(const Backup& backup, const Backup& other) {
    const auto birth = birth_time(backup.path);
    const auto other_birth = birth_time(other.path);
    return birth && other_birth &&
           std::pair(*birth, backup.pid) > std::pair(*other_birth, other.pid);
}

bool works_on(const Backup& backup, const fs::path& config_directory) {
    if (!is_live_run(backup.pid)) {
        return false;
    }
    const std::optional<RunProcess> run = find_run(backup.pid);
    if (run) {
        const std::optional<RunPlace> place = locate_run(*run);
        return place && place->config_directory == config_directory;
    }
    // Another user's run: its checker has written down where it works.
    const std::optional<Manifest> manifest = read_manifest(backup.path / manifest_name);
    return manifest && manifest->config_directory == config_directory;
}

fs::path path_of(pid_t pid) {
    return fs::path(parent_directory) / (std::string(name_start) + std::to_string(pid));
}

} // namespace

std::optional<fs::path> own_backup_directory(pid_t pid) {
    struct stat status;
    const fs::path path = path_of(pid);
    return is_own_directory(path, status) ? std::optional(path) : std::nullopt;
}

// A later run that has not passed its own check yet will find this one.
std::optional<pid_t> find_other_run(pid_t pid, const fs::path& config_directory) {
    const Backup own = {pid, path_of(pid)};
    for (const Backup& backup : all_backups()) {
        std::error_code ignored;
        const bool finds_this_one =
            came_later(backup, own) && !fs::exists(backup.path / manifest_name, ignored);
        if (backup.pid != pid && !finds_this_one && works_on(backup, config_directory)) {
            return backup.pid;
        }
    }
    return std::nullopt;
}

void remove_stale_backups() {
    constexpr time_t hour = 3600;
    constexpr time_t day = 24 * hour;
    for (const Backup& backup : all_backups()) {
        struct stat status;
        if (is_own_directory(backup.path, status) && std::time(nullptr) - status.st_mtime > day &&
            !is_live_run(backup.pid)) {
            std::error_code ignored;
            fs::remove_all(backup.path, ignored);
        }
    }
}
