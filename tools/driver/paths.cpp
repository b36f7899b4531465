#include "tools/driver/paths.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/file_exists.h"
#include "base/logs.h"
#include "base/tokenizers.h"
#include "base/workspace_directory.h"
#include "tools/config/replay_profile.h"
#include "tools/driver/scenario_place.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

char g_wdir[1024];
char project[512];
char sub_proj[512];
char scenario[512];

namespace {

constexpr const char* fname = "main";
constexpr size_t max_path_length = 2047;

void refuse_long_name(std::string_view name, size_t capacity, const char* meaning) {
    if (name.size() >= capacity) {
        fail("Name of %s is longer than %zu characters", meaning, capacity - 1);
    }
}

template <size_t capacity>
void store_name(char (&field)[capacity], std::string_view name, const char* meaning) {
    refuse_long_name(name, capacity, meaning);
    name.copy(field, name.size());
    field[name.size()] = '\0';
}

void set_workspace(const char* workspace, const char* profile) {
    refuse_long_name(workspace, sizeof g_zv_workspace, "workspace");
    refuse_long_name(profile, sizeof g_zv_profile, "profile");
    constexpr int max_directory_length = 1023;
    if (zvlb_set_ta_dir_ex1(g_wdir, workspace, profile) > max_directory_length) {
        fail("Path of workspace '%s/%s' is longer than %d characters", workspace, profile,
             max_directory_length);
    }
}

// Makes the directory `name` in `parent`, unless it is there, and opens it. Not open, with errno
// set, when that cannot be done.
FileDescriptor make_directory(const FileDescriptor& parent, const char* name, bool must_be_own) {
    if (must_be_own) {
        return make_own_directory(parent, name, 0777);
    }
    const bool is_new = mkdirat(parent.get(), name, 0777) == 0;
    if (!is_new && errno != EEXIST) {
        return {};
    }
    FileDescriptor directory =
        FileDescriptor(openat(parent.get(), name, O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!directory.is_open()) {
        errno = EEXIST; // as something else
    }
    return directory;
}

ScenarioName scenario_name() {
    return {g_zv_workspace, g_zv_profile, project, sub_proj, scenario};
}

ScenarioPlace scenario_place() {
    return place_of_scenario(g_zv_ta_dir, scenario_name());
}

} // namespace

void read_work_directory() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has been started
    const char* work_dir = std::getenv("ZV_WDIR");
    if (work_dir == nullptr) {
        fail("Environment variable \"ZV_WDIR\" not set, Exiting.");
    }
    // A relative one would be taken for a directory of the root where directories are made.
    if (work_dir[0] != '/') {
        fail("ZV_WDIR is not an absolute path: '%s'", work_dir);
    }
    const size_t length = std::strlen(work_dir);
    if (length >= sizeof g_wdir) {
        fail("Environment variable \"ZV_WDIR\" is longer than %zu characters", sizeof g_wdir - 1);
    }
    std::memcpy(g_wdir, work_dir, length + 1);
}

void set_scenario(const char* argument) {
    const std::optional<ScenarioName> name = parse_scenario_name(argument);
    if (!name) {
        fail("Invalid format of Scenario name");
    }
    store_name(project, name->project, "project");
    store_name(sub_proj, name->sub_proj, "sub-project");
    store_name(scenario, name->scenario, "scenario");
    set_workspace(name->workspace.c_str(), name->profile.c_str());
}

void set_replay_profile(const char* argument) {
    const std::string name = relative_profile_name(argument);
    replay_profile = name == argument ? copy_text("replay_profile", name)
                                      : allocate_text(fname, "replay_profile", name);
    const std::string directory = profile_directory_path(g_wdir, replay_profile);
    refuse_long_path(directory);
    replay_profile_dir = allocate_text(fname, "replay_profile_dir", directory);
    if (!file_exists(replay_profile_dir)) {
        fail("Replay profile - '%s' not found at '%s'", replay_profile, replay_profile_dir);
    }
}

void find_scenario_and_profile() {
    const std::string scenario_file = scenario_file_path();
    if (!file_exists(scenario_file.c_str())) {
        fail("Scenario file %s does not exist.", scenario_file.c_str());
    }
    if (replay_profile != nullptr) {
        return;
    }
    replay_profile = allocate_text(fname, "replay_profile", own_profile_name(scenario_name()));
    const std::string directory = scenario_place().own_profile_directory();
    refuse_long_path(directory);
    replay_profile_dir = allocate_text(fname, "replay_profile_dir", directory);
    if (!file_exists(replay_profile_dir)) {
        fail("Replay profile not found for scenario - '%s/%s/%s' at '%s'", project, sub_proj,
             scenario, replay_profile_dir);
    }
}

std::string scenario_file_path() {
    std::string path = scenario_place().scenario_file();
    refuse_long_path(path);
    return path;
}

std::string replay_profile_file_path(const char* file_name) {
    std::string path = std::string(replay_profile_dir) + "/" + file_name;
    refuse_long_path(path);
    return path;
}

std::string config_directory() {
    std::string path = scenario_place().config_directory();
    refuse_long_path(path);
    return path;
}

void refuse_long_path(const std::string& path) {
    if (path.size() > max_path_length) {
        fail("Path or command is longer than %zu characters: '%s'", max_path_length, path.c_str());
    }
}

int mkdir_ex1(const char* path) {
    constexpr size_t max_length = 2048;
    constexpr int max_components = 30;
    const size_t length = std::strlen(path);
    if (length > max_length) {
        error_log("mkdir_ex1",
                  "mkdir_ex1() - Length of path (%d) is more than max allowed (2048). Path: '%s'\n",
                  static_cast<int>(length), path);
        return 0;
    }
    std::string text = path;
    char* components[max_components + 1];
    int count;
    get_tokens1(text.data(), components, "/", max_components + 1, &count);
    if (count > max_components) {
        error_log("mkdir_ex1", "Path has more than %d components. Path: '%s'", max_components,
                  path);
        return 0;
    }
    const bool last_is_directory = length > 0 && path[length - 1] == '/';
    const int directories = last_is_directory ? count : count - 1;
    constexpr int own_parts = 2;
    FileDescriptor directory(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::string built;
    for (int i = 0; i < directories; ++i) {
        built += std::string("/") + components[i];
        directory = make_directory(directory, components[i], i >= directories - own_parts);
        if (!directory.is_open()) {
            error_log("mkdir_ex1", "Error in creating directory. Path: '%s'. Error = '%s'\n",
                      built.c_str(), std::generic_category().message(errno).c_str());
            return 0;
        }
    }
    return 1;
}

OwnDirectory make_shared_directory(const std::string& path) {
    const mode_t mask = umask(0);
    const bool is_created = mkdir_ex1(path.c_str()) == 1;
    umask(mask);
    return is_created ? OwnDirectory(path) : OwnDirectory();
}

OwnDirectory create_config_directory() {
    const std::string path = config_directory();
    OwnDirectory config_dir = make_shared_directory(path);
    if (!config_dir.is_open()) {
        fail("Unable to create directory - %s", path.c_str());
    }
    return config_dir;
}
