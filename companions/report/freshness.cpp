#include "companions/report/freshness.h"

#include "base/own_directory.h"
#include "base/own_file.h"
#include "base/result_names.h"
#include "cache/input_copies.h"
#include "cache/work_mark.h"
#include "companions/common/newer_inputs.h"
#include "tools/config/log_files.h"
#include "tools/driver/paths.h"
#include "tools/urls/query_list.h"

#include <fcntl.h>
#include <filesystem>

namespace {

// Those of which a run keeps a copy.
std::vector<std::string> paths_of_copied_inputs() {
    return {scenario_file_path(), replay_profile_file_path(settings_name),
            replay_profile_file_path(url_patterns_name),
            replay_profile_file_path(filter_patterns_name)};
}

std::vector<std::string> paths_of_inputs() {
    std::vector<std::string> paths = paths_of_copied_inputs();
    paths.push_back(std::string(g_wdir) + "/sys/replay_settings.default");
    for (int i = 0; i < num_al_files; ++i) {
        paths.emplace_back(seq_file_path[i].input_file);
    }
    return paths;
}

// Where a text cannot be had, nothing is known.
bool differs_from_copy(const std::string& path, const FileDescriptor& copy) {
    constexpr size_t most = size_t{1} << 28;
    const FileDescriptor input(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const std::optional<std::string> text = read_whole(input, most);
    const std::optional<std::string> copied = read_whole(copy, most);
    return text && copied && *text != *copied;
}

// Times do not tell of another profile, which may be older than the results.
std::vector<std::string> inputs_not_read(const OwnDirectory& config_dir) {
    std::vector<std::string> inputs;
    const OwnDirectory copies = config_dir.beside(input_cache_name);
    if (copies.is_open()) {
        for (const std::string& path : paths_of_copied_inputs()) {
            const std::string name = std::filesystem::path(path).filename();
            if (differs_from_copy(path, open_own_file(copies.descriptor(), name.c_str()))) {
                inputs.push_back(path);
            }
        }
    }
    return inputs;
}

} // namespace

Freshness examine_results() {
    Freshness freshness;
    freshness.directory = config_directory();
    const OwnDirectory config_dir(freshness.directory);
    const bool has_list = config_dir.is_open() && config_dir.open_file(url_list_name).is_open();
    if (config_dir.is_open() && is_work_marked(config_dir)) {
        freshness.state = ResultState::being_written;
        return freshness;
    }
    if (!has_list) {
        freshness.state = ResultState::none;
        return freshness;
    }
    freshness.lacks_query_list =
        is_query_list_wanted() && !config_dir.open_file(query_url_list_name).is_open();
    freshness.newer_inputs =
        files_newer_than(freshness.directory + url_list_name, paths_of_inputs());
    freshness.other_inputs = inputs_not_read(config_dir);
    freshness.state = !freshness.newer_inputs.empty()   ? ResultState::older
                      : !freshness.other_inputs.empty() ? ResultState::of_other_inputs
                                                        : ResultState::current;
    return freshness;
}
