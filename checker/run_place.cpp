#include "checker/run_place.h"

#include "base/workspace_directory.h"
#include "tools/driver/command_line.h"
#include "tools/driver/scenario_place.h"

#include <cstdlib>

namespace fs = std::filesystem;

namespace {

struct Arguments {
    const char* scenario = nullptr;
    const char* replay_profile = nullptr;
};

// The arguments point into the words of the run.
Arguments read_options(const RunProcess& run, RunPlace& place) {
    std::vector<char*> words;
    for (const std::string& word : run.words) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    opterr = 0;
    optind = 0; // begins anew
    Arguments arguments;
    int letter;
    while ((letter = getopt_long(static_cast<int>(run.words.size()), words.data(), short_options,
                                 long_options, nullptr)) != -1) {
        switch (letter) {
        case 's':
            arguments.scenario = optarg;
            break;
        case 'r':
            arguments.replay_profile = optarg;
            break;
        case 't':
            place.num_thread = std::atoi(optarg);
            break;
        case 'q':
            place.dump_query_url = std::atoi(optarg) != 0;
            break;
        case 'a':
            place.akaau_trace = true;
            break;
        default:
            break;
        }
    }
    return arguments;
}

// As it stands when others have put links there that lead nowhere.
fs::path without_links(const fs::path& path) {
    std::error_code error;
    fs::path found = fs::weakly_canonical(path, error);
    return error ? path : found;
}

} // namespace

std::optional<RunPlace> locate_run(const RunProcess& run) {
    RunPlace place;
    const Arguments arguments = read_options(run, place);
    const std::string* work_dir = run.variable("ZV_WDIR");
    if (work_dir == nullptr || arguments.scenario == nullptr) {
        return std::nullopt;
    }
    const std::optional<ScenarioName> name = parse_scenario_name(arguments.scenario);
    if (!name) {
        return std::nullopt;
    }
    const ScenarioPlace scenario_place = place_of_scenario(
        *work_dir + "/" + relative_workspace_directory(name->workspace, name->profile), *name);
    place.work_dir = *work_dir;
    place.scenario = name->scenario;
    place.scenario_file = scenario_place.scenario_file();
    place.replay_profile = own_profile_name(*name);
    place.replay_profile_dir = scenario_place.own_profile_directory();
    if (arguments.replay_profile != nullptr) {
        place.replay_profile = relative_profile_name(arguments.replay_profile);
        place.replay_profile_dir = profile_directory_path(*work_dir, place.replay_profile);
    }
    place.config_path = scenario_place.config_directory();
    place.config_directory = without_links(place.config_path.parent_path());
    return place;
}
