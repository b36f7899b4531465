#include "tools/driver/input_backup.h"

#include "tools/driver/logs.h"
#include "tools/driver/paths.h"

#include <fcntl.h>
#include <filesystem>
#include <initializer_list>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr const char* fname = "main";

std::string backup_directory() {
    return "/tmp/zvr_al_gen_url_list.backup." + std::to_string(getpid());
}

// A descriptor that is closed at the end of its scope.
class OpenFile {
  public:
    OpenFile(const fs::path& path, int flags, mode_t permissions = 0)
        : descriptor_(open(path.c_str(), flags | O_CLOEXEC, permissions)) {}
    ~OpenFile() { close(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int get() const { return descriptor_; }
    bool is_open() const { return descriptor_ != -1; }
    bool close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

  private:
    int descriptor_;
};

bool write_all(int descriptor, const char* text, size_t size) {
    while (size != 0) {
        const ssize_t count = write(descriptor, text, size);
        if (count <= 0) {
            return false;
        }
        text += count;
        size -= static_cast<size_t>(count);
    }
    return true;
}

bool copy_contents(int from, int to) {
    char block[1 << 16];
    ssize_t count;
    while ((count = read(from, block, sizeof block)) > 0) {
        if (!write_all(to, block, static_cast<size_t>(count))) {
            return false;
        }
    }
    return count == 0;
}

// As cp does: what is there keeps its permissions, what is new gets those of the source less the
// mask.
bool copy_into_directory(const fs::path& file, const fs::path& directory) {
    OpenFile source(file, O_RDONLY);
    struct stat status;
    if (!source.is_open() || fstat(source.get(), &status) != 0 || S_ISDIR(status.st_mode)) {
        return false;
    }
    OpenFile target(directory / file.filename(), O_WRONLY | O_CREAT | O_TRUNC,
                    status.st_mode & 0777);
    return target.is_open() && copy_contents(source.get(), target.get()) && target.close();
}

void require_success(const std::string& command, bool succeeded) {
    if (!succeeded) {
        fatal_error(fname, "Failed to run command '%s'", command.c_str());
    }
}

void make_backup_directory(const std::string& directory) {
    constexpr mode_t permissions = 0777;
    require_success("mkdir " + directory, mkdir(directory.c_str(), permissions) == 0);
}

void back_up(std::initializer_list<std::string> files, const std::string& directory) {
    std::string command = "cp";
    for (const std::string& file : files) {
        command += " " + file;
    }
    command += " " + directory;
    refuse_long_path(command);
    bool succeeded = true;
    for (const std::string& file : files) {
        succeeded = copy_into_directory(file, directory) && succeeded;
    }
    require_success(command, succeeded);
}

} // namespace

void back_up_inputs() {
    const std::string directory = backup_directory();
    make_backup_directory(directory);
    back_up({scenario_file_path()}, directory);
    back_up({replay_profile_file_path("replay_settings.dat"),
             replay_profile_file_path("replay_url_patterns.dat"),
             replay_profile_file_path("replay_url_filter_patterns.dat")},
            directory);
}

void copy_backup_to_cache(const std::string& config_dir) {
    std::error_code error;
    bool succeeded = true;
    fs::directory_iterator entry(backup_directory(), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const bool is_hidden = entry->path().filename().string().starts_with('.');
        succeeded = (is_hidden || copy_into_directory(entry->path(), config_dir + "/../.tmp/")) &&
                    succeeded;
    }
    if (error || !succeeded) {
        error_log(fname, "Failed to copy to cache");
    }
}

void remove_backup() {
    std::error_code ignored; // whatever stays behind harms nobody
    fs::remove_all(backup_directory(), ignored);
}
