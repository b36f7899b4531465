#include "tools/driver/input_backup.h"

#include "tools/driver/logs.h"
#include "tools/driver/paths.h"

#include <filesystem>
#include <initializer_list>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* fname = "main";

std::string backup_directory() {
    return "/tmp/zvr_al_gen_url_list.backup." + std::to_string(getpid());
}

bool copy_into_directory(const std::filesystem::path& file,
                         const std::filesystem::path& directory) {
    std::error_code error;
    std::filesystem::copy_file(file, directory / file.filename(),
                               std::filesystem::copy_options::overwrite_existing, error);
    return !error;
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
    for (const auto& entry : std::filesystem::directory_iterator(backup_directory(), error)) {
        succeeded = copy_into_directory(entry.path(), config_dir + "/../.tmp/") && succeeded;
    }
    if (error || !succeeded) {
        error_log(fname, "Failed to copy to cache");
    }
}

void remove_backup() {
    std::error_code ignored; // whatever stays behind harms nobody
    std::filesystem::remove_all(backup_directory(), ignored);
}
