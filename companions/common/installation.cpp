#include "companions/common/installation.h"

#include "tools/config/field_layout.h"
#include "tools/config/scenario_file.h"
#include "tools/driver/command_line.h"
#include "tools/driver/paths.h"
#include "tools/driver/run_inputs.h"
#include "tools/patterns/pattern_tables.h"

#include <cstdlib>
#include <filesystem>
#include <getopt.h>
#include <string>
#include <vector>

namespace {

// Lets the tool's own reader of options apply them.
void apply_words(std::vector<std::string> words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    const int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    optind = 0; // the reader begins anew
    read_command_line(count, arguments.data());
}

// Without "." and ".." and a slash at its end, as it will be shown often.
std::string absolute_path(const std::string& path) {
    std::string absolute = std::filesystem::absolute(path).lexically_normal();
    while (absolute.size() > 1 && absolute.ends_with('/')) {
        absolute.pop_back();
    }
    return absolute;
}

} // namespace

void enter_work_directory(const RunOptions& options) {
    if (!options.work_dir.empty()) {
        const std::string path = absolute_path(options.work_dir);
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has been started
        setenv("ZV_WDIR", path.c_str(), 1);
    }
    read_work_directory();
}

void apply_run_options(const RunOptions& options) {
    std::vector<std::string> words = {"zvr_al_gen_url_list",
                                      "--num_thread",
                                      std::to_string(options.num_thread),
                                      "--dump_query_url",
                                      std::to_string(options.dump_query_url),
                                      "--scenario",
                                      options.scenario};
    if (!options.replay_profile.empty()) {
        words.insert(words.end(), {"--replay_profile", options.replay_profile});
    }
    apply_words(std::move(words));
    set_replay_timezone();
}

void read_installation(const RunOptions& options) {
    enter_work_directory(options);
    apply_run_options(options);
    find_scenario_and_profile();
    load_replay_profile();
    set_default_field_positions();
    validate_al_format();
    read_scenario_file(scenario_file_path());
    sort_pattern_tables();
}
