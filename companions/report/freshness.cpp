#include "companions/report/freshness.h"

#include "base/own_directory.h"
#include "base/result_names.h"
#include "cache/input_copies.h"
#include "cache/work_mark.h"
#include "companions/common/newer_inputs.h"
#include "tools/config/log_files.h"
#include "tools/driver/paths.h"
#include "tools/urls/query_list.h"

namespace {

std::vector<std::string> paths_of_inputs() {
    std::vector<std::string> paths = {scenario_file_path(), replay_profile_file_path(settings_name),
                                      replay_profile_file_path(url_patterns_name),
                                      replay_profile_file_path(filter_patterns_name)};
    for (int i = 0; i < num_al_files; ++i) {
        paths.emplace_back(seq_file_path[i].input_file);
    }
    return paths;
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
    freshness.state = freshness.newer_inputs.empty() ? ResultState::current : ResultState::older;
    return freshness;
}
