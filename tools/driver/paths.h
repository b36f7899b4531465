#pragma once

#include "base/own_directory.h"

#include <string>

// Where a run finds its scenario, its replay profile and its results.

// Names of the run, set while the command line is read and completed by find_scenario_and_profile
// on the main thread, only read afterwards.
extern char g_wdir[1024];  // the installation's directory, from environment variable ZV_WDIR
extern char project[512];  // the scenario's project, from option `scenario` or "default"
extern char sub_proj[512]; // the scenario's sub-project, likewise
extern char scenario[512]; // the scenario's name without ".conf"

// Takes ZV_WDIR from the environment into g_wdir. Fails when it is unset, no absolute
// path or too long.
void read_work_directory();

// Splits the argument of option `scenario`, workspace/profile/project/sub-project/name or a name
// alone, into the names above and the workspace's directory. Fails when the argument is
// malformed or one of its names too long.
void set_scenario(const char* argument);

// Takes the argument of option `replay_profile`, a name or project/sub-project/name, and its
// directory under the installation. Fails when nothing of that name is there.
void set_replay_profile(const char* argument);

// Makes sure that the scenario file exists, and derives the replay profile from the scenario when
// no option named it. Fails when either is not there.
void find_scenario_and_profile();

// Full paths. Each fails when the path is longer than 2,047 characters.
std::string scenario_file_path();
std::string replay_profile_file_path(const char* file_name);
std::string config_directory(); // of the results; ends with "/"

// Refuses a path or command that is longer than 2,047 characters with an error line, and ends the
// run.
void refuse_long_path(const std::string& path);

// Creates every directory of `path` up to its last "/", with permission 0777 less the process's
// mask. The path is built from the root. The last two of the directories have to be of this user or
// of root, be it behind links of theirs, so that nobody else leads the run elsewhere. Returns 1 on
// success; 0 after an error line when the path is longer than 2,048 characters, has more than 30
// components, or a directory cannot be created.
int mkdir_ex1(const char* path);

// Creates the directory as mkdir_ex1 does, but with permission 0777 whatever the process's mask:
// users who share directories of root's replace each other's results. Not open when that fails.
OwnDirectory make_shared_directory(const std::string& path);

// The same for the configuration directory. Fails when that fails.
OwnDirectory create_config_directory();
