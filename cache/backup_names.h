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

// A file in it by which the checker asks the run, before it answers, to refuse to work beside
// another one. Others can let the checker look at another configuration directory than the run then
// works in, or end it, so the run that finds this file looks for marks itself (work_mark.h). Where
// it is missing another checker has answered, which alone decides.
constexpr const char* exclusion_name = ".exclusive";
