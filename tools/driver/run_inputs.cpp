#include "tools/driver/run_inputs.h"

#include "base/failure.h"
#include "base/file_exists.h"
#include "base/input_file.h"
#include "base/logs.h"
#include "cache/input_copies.h"
#include "tools/config/replay_profile.h"
#include "tools/config/settings_file.h"
#include "tools/driver/paths.h"
#include "tools/parse/replay_zone.h"
#include "tools/patterns/pattern_files.h"

#include <ctime>
#include <string>
#include <sys/stat.h>

void set_replay_timezone() {
    default_timezone = get_timezone_from_default_setting(g_wdir);
    replay_timezone = default_timezone;
    if (replay_timezone == -1) {
        tzset();
        replay_timezone = timezone;
    }
}

void load_pattern_file(const char* file_name, void (*load)(const char*)) {
    const std::string path = replay_profile_file_path(file_name);
    open_input_file(path.c_str()); // which remembers also one that is missing or empty
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        DEBUG_LOG(1, "main", "'%s' file not found in replay profile '%s'", file_name,
                  replay_profile);
    } else if (status.st_size != 0) {
        load(path.c_str());
    }
}

void load_replay_profile() {
    const std::string settings = replay_profile_file_path(settings_name);
    if (!file_exists(settings.c_str())) {
        fail("'replay_settings.dat' file not found in replay profile '%s'", replay_profile);
    }
    read_replay_prof_setting(settings.c_str());
    load_pattern_file(filter_patterns_name, save_filter_url_pattern);
    load_pattern_file(url_patterns_name, save_url_pattern);
}
