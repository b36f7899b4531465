#include "tools/driver/input_backup.h"

#include "base/failure.h"
#include "base/input_file.h"
#include "base/left_results.h"
#include "base/logs.h"
#include "base/new_file.h"
#include "cache/backup_names.h"
#include "cache/input_copies.h"
#include "cache/manifest.h"
#include "tools/driver/paths.h"
#include "tools/load/read_logs.h"
#include "tools/parse/replay_zone.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* fname = "main";

bool copy_contents(int from, int to) {
    char block[4096]; // small, as the stack may be
    ssize_t count;
    while ((count = read(from, block, sizeof block)) != 0) {
        if (count == -1 ? errno != EINTR : !write_whole(to, {block, static_cast<size_t>(count)})) {
            return false;
        }
    }
    return true;
}

// What an open file is, for S_ISREG and its kind; 0 when it is not open.
mode_t mode_of(const FileDescriptor& file) {
    struct stat status;
    return file.is_open() && fstat(file.get(), &status) == 0 ? status.st_mode : 0;
}

// The copy is for this user alone: the source may stand where nobody else can look.
bool copy_into_directory(const FileDescriptor& source, int directory, const char* name) {
    const mode_t mode = mode_of(source);
    if (mode == 0 || S_ISDIR(mode)) {
        return false;
    }
    FileDescriptor target = create_new_file(directory, name, mode & S_IRWXU);
    return target.is_open() && copy_contents(source.get(), target.get()) && target.close();
}

// Names of what is in a directory, whatever has become of its path.
std::vector<std::string> names_in(const FileDescriptor& directory) {
    std::vector<std::string> names;
    FileDescriptor own(openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    DIR* const entries = own.is_open() ? fdopendir(own.get()) : nullptr;
    if (entries == nullptr) {
        return names;
    }
    own.release(); // closed with the entries
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else reads from this stream
    while (const dirent* entry = readdir(entries)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    closedir(entries);
    return names;
}

void require_success(const std::string& command, bool succeeded) {
    if (!succeeded) {
        fail("Failed to run command '%s'", command.c_str());
    }
}

// For this user alone, whatever the mask.
bool make_private_directory(const std::string& path) {
    const mode_t mask = umask(0);
    const bool is_made = mkdir(path.c_str(), 0700) == 0;
    umask(mask);
    return is_made;
}

// Whether the run has read the logs that the checker has looked at.
bool has_logs_as_read(const Manifest& manifest) {
    std::error_code error;
    const fs::path directory = fs::current_path(error);
    return !error && std::ranges::all_of(read_logs(), [&](const auto& log) {
        const auto& [path, state] = log;
        return has_line(manifest.loading, log_line(directory / path, state));
    });
}

// The same for what it has read of the installation. What decides classification is as in the
// copies.
bool has_inputs_as_read(const Manifest& manifest) {
    return inputs_held_still() && has_line(manifest.loading, zone_line(default_timezone));
}

// Whoever tidies up may take a directory for a left one, and remove it, as long as it is not
// locked; then another one is made.
FileDescriptor make_locked_directory(const std::string& path) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    while (make_private_directory(path)) {
        FileDescriptor directory(open(path.c_str(), flags));
        if (directory.is_open() && flock(directory.get(), LOCK_EX) == 0 &&
            is_at(AT_FDCWD, path.c_str(), directory)) {
            return directory;
        }
    }
    return {};
}

} // namespace

InputBackup::InputBackup()
    : path_(backup_path(getpid())), directory_(make_locked_directory(path_)) {
    require_success("mkdir " + path_, directory_.is_open());
    copy_files({scenario_file_path()});
    copy_files({replay_profile_file_path(settings_name),
                replay_profile_file_path(url_patterns_name),
                replay_profile_file_path(filter_patterns_name)});
}

void InputBackup::copy_files(std::initializer_list<std::string> files) const {
    std::string command = "cp";
    for (const std::string& file : files) {
        command += " " + file;
    }
    command += " " + path_;
    refuse_long_path(command);
    bool succeeded = true;
    for (const std::string& file : files) {
        const FileDescriptor source = open_input_file(file.c_str());
        const std::string name = fs::path(file).filename();
        succeeded = copy_into_directory(source, directory_.get(), name.c_str()) && succeeded;
    }
    require_success(command, succeeded);
}

bool InputBackup::is_exclusive() const {
    return faccessat(directory_.get(), exclusion_name, F_OK, AT_SYMLINK_NOFOLLOW) == 0 ||
           !is_at(AT_FDCWD, path_.c_str(), directory_);
}

bool InputBackup::copy_inputs_to(const OwnDirectory& cache) const {
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC; // never waits
    const std::vector<std::string> names = names_in(directory_);
    return !names.empty() && std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        const FileDescriptor source(openat(directory_.get(), name.c_str(), flags));
        return name.starts_with('.') || name == manifest_name ||
               (S_ISREG(mode_of(source)) &&
                copy_into_directory(source, cache.descriptor(), name.c_str()));
    });
}

// There may be no manifest, as with another checker.
bool InputBackup::seal_manifest_in(const OwnDirectory& cache) const {
    std::optional<Manifest> manifest = read_manifest(directory_.get());
    if (!manifest || !has_inputs_as_read(*manifest) || !has_logs_as_read(*manifest)) {
        return true;
    }
    for (const auto& [name, state] : left_results()) {
        manifest->results += result_line(name, state);
    }
    return write_sealed_manifest(cache.descriptor(), *manifest);
}

void InputBackup::copy_to_cache(const OwnDirectory& config_dir, bool is_reusable) const {
    const OwnDirectory cache = config_dir.beside(input_cache_name);
    const bool succeeded =
        cache.is_open() && copy_inputs_to(cache) && (!is_reusable || seal_manifest_in(cache));
    if (!succeeded) {
        error_log(fname, "Failed to copy to cache");
    }
}

// By its descriptor: when the checker has removed the directory, another one may stand in its
// place.
void InputBackup::remove() const {
    for (const std::string& name : names_in(directory_)) {
        unlinkat(directory_.get(), name.c_str(), 0);
    }
    if (is_at(AT_FDCWD, path_.c_str(), directory_)) {
        rmdir(path_.c_str());
    }
}
