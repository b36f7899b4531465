#include "checker/run_directories.h"

#include "cache/input_copies.h"
#include "cache/manifest.h"
#include "tools/driver/paths.h"

#include <string>
#include <sys/stat.h>

// Users who share directories of root's replace each other's copies there, as they do the results.
void make_directories(const RunPlace& place, RunDirectories& directories) {
    directories.config = make_shared_directory(place.config_path);
    const mode_t mask = umask(0);
    directories.input_cache = directories.config.make_beside(input_cache_name, 0777);
    umask(mask);
}

void forget_last_run(const RunPlace& place, const OwnDirectory& input_cache) {
    input_cache.remove(manifest_name);
    for (const std::string& name : input_names(place.scenario)) {
        input_cache.remove(name.c_str());
    }
}
