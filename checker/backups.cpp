#include "checker/backups.h"

#include "base/new_file.h"
#include "cache/backup_names.h"
#include "cache/manifest.h"
#include "checker/run_place.h"
#include "checker/run_process.h"

#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Only the name that a run of this number gives counts: others can be made in any number.
std::optional<pid_t> process_of(std::string_view name) {
    pid_t pid = 0;
    if (!name.starts_with(backup_name_start)) {
        return std::nullopt;
    }
    name.remove_prefix(backup_name_start.size());
    std::from_chars(name.data(), name.data() + name.size(), pid);
    return pid > 0 && name == std::to_string(pid) ? std::optional(pid) : std::nullopt;
}

// As a run makes it. A directory of this user's that others may write into they can have moved
// here.
bool is_own_backup(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & 0077) == 0;
}

// Calls `take` for each entry of a directory, which it closes.
void for_each_entry(DIR* directory, const std::function<void(const dirent&)>& take) {
    if (directory == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(directory)) {
        take(*entry);
    }
    closedir(directory);
}

// The calling user's. Anybody can make names here, which therefore cost as little as they can.
std::vector<pid_t> processes_with_backup() {
    std::vector<pid_t> processes;
    DIR* directory = opendir(backups_directory);
    for_each_entry(directory, [&](const dirent& entry) {
        if (entry.d_type != DT_DIR && entry.d_type != DT_UNKNOWN) {
            return;
        }
        const std::optional<pid_t> pid = process_of(entry.d_name);
        struct stat status;
        if (pid && fstatat(dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            is_own_backup(status)) {
            processes.push_back(*pid);
        }
    });
    return processes;
}

// Symbolic links are not followed: anybody can make one here.
FileDescriptor open_backup(pid_t pid, int flags) {
    return FileDescriptor(
        open(backup_path(pid).c_str(), flags | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Moment of making; nothing on a file system that does not keep it.
std::optional<std::pair<int64_t, uint32_t>> birth_time(const FileDescriptor& file) {
    struct statx status;
    if (statx(file.get(), "", AT_EMPTY_PATH, STATX_BTIME, &status) != 0 ||
        (status.stx_mask & STATX_BTIME) == 0) {
        return std::nullopt;
    }
    return std::pair(status.stx_btime.tv_sec, status.stx_btime.tv_nsec);
}

// Whether a run with the first process id and backup will find that with the second, as it comes
// later and has not passed its own check yet.
bool will_find(pid_t pid, const FileDescriptor& backup, pid_t other, const FileDescriptor& others) {
    const auto birth = birth_time(backup);
    const auto other_birth = birth_time(others);
    return birth && other_birth && std::pair(*birth, pid) > std::pair(*other_birth, other) &&
           faccessat(backup.get(), manifest_name, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
}

bool works_on(pid_t pid, const fs::path& config_directory) {
    const std::optional<RunProcess> run = find_run(pid);
    const std::optional<RunPlace> place = run ? locate_run(*run) : std::nullopt;
    return place && place->config_directory == config_directory;
}

std::vector<std::string> names_in(const FileDescriptor& directory) {
    std::vector<std::string> names;
    for_each_entry(fdopendir(openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
                   [&](const dirent& entry) { names.emplace_back(entry.d_name); });
    return names;
}

// A run that has made its directory a moment ago and not locked it yet makes another one when it
// finds this one gone.
bool is_left(pid_t pid, const FileDescriptor& directory) {
    return flock(directory.get(), LOCK_EX | LOCK_NB) == 0 &&
           is_at(AT_FDCWD, backup_path(pid).c_str(), directory);
}

} // namespace

FileDescriptor open_own_backup(pid_t pid) {
    FileDescriptor directory = open_backup(pid, O_RDONLY);
    struct stat status;
    const bool is_own =
        directory.is_open() && fstat(directory.get(), &status) == 0 && is_own_backup(status);
    return is_own ? std::move(directory) : FileDescriptor();
}

bool ask_for_exclusion(const FileDescriptor& backup) {
    return create_new_file(backup.get(), exclusion_name, 0600).is_open();
}

std::optional<pid_t> find_other_run(pid_t pid, const fs::path& config_directory) {
    const FileDescriptor own = open_backup(pid, O_PATH);
    for (const pid_t other : processes_with_backup()) {
        if (other != pid && !will_find(other, open_backup(other, O_PATH), pid, own) &&
            works_on(other, config_directory)) {
            return other;
        }
    }
    return std::nullopt;
}

void remove_backup(pid_t pid, const FileDescriptor& directory) {
    for (const std::string& name : names_in(directory)) {
        unlinkat(directory.get(), name.c_str(), 0);
    }
    rmdir(backup_path(pid).c_str());
}

void remove_left_backups() {
    for (const pid_t pid : processes_with_backup()) {
        const FileDescriptor directory = open_own_backup(pid);
        if (directory.is_open() && is_left(pid, directory)) {
            remove_backup(pid, directory);
        }
    }
}
