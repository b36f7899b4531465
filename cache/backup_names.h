#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

// Where each run puts copies of its input files aside: a directory of its own, named by its process
// id. The run holds a lock (flock) on the directory as long as it lives.

constexpr const char* backups_directory = "/tmp";
constexpr std::string_view backup_name_start = "zvr_al_gen_url_list.backup.";

inline std::string backup_path(pid_t pid) {
    return std::string(backups_directory) + "/" + std::string(backup_name_start) +
           std::to_string(pid);
}
