#include "checker/run_place.h"

#include "base/tokenizers.h"
#include "cache/input_copies.h"
#include "tools/driver/command_line.h"
#include "tools/driver/paths.h"

#include <algorithm>
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

// Components of a name; at most `max_count`, none of them empty.
std::vector<std::string> split_name(const std::string& name, int max_count) {
    std::string text = name;
    std::vector<char*> components(static_cast<size_t>(max_count));
    int count;
    get_tokens1(text.data(), components.data(), "/", max_count, &count);
    return {components.begin(), components.begin() + count};
}

struct ScenarioName {
    std::string workspace;
    std::string profile;
    std::string project;
    std::string sub_proj;
    std::string scenario;
};

std::optional<ScenarioName> read_scenario_name(const std::string& argument) {
    ScenarioName name = {"admin", "default", "default", "default", argument};
    if (argument.find('/') != std::string::npos) {
        const std::vector<std::string> components = split_name(argument, 5);
        if (components.size() < 5) {
            return std::nullopt;
        }
        name = {components[0], components[1], components[2], components[3], components[4]};
    }
    name.scenario.resize(std::min(name.scenario.find(".conf"), name.scenario.size()));
    return name;
}

void set_replay_profile(const Arguments& arguments, const ScenarioName& name,
                        const fs::path& project_dir, RunPlace& place) {
    if (arguments.replay_profile == nullptr) {
        place.replay_profile = name.project + "/" + name.sub_proj + "/" + name.scenario;
        place.replay_profile_dir = project_dir / "replay_profiles" / name.scenario;
        return;
    }
    place.replay_profile = relative_profile_name(arguments.replay_profile);
    place.replay_profile_dir = place.work_dir.string() + "/replay_profiles/" + place.replay_profile;
}

} // namespace

std::optional<RunPlace> locate_run(const RunProcess& run) {
    RunPlace place;
    const Arguments arguments = read_options(run, place);
    const std::string* work_dir = run.variable("ZV_WDIR");
    if (work_dir == nullptr || arguments.scenario == nullptr) {
        return std::nullopt;
    }
    const std::optional<ScenarioName> name = read_scenario_name(arguments.scenario);
    if (!name) {
        return std::nullopt;
    }
    place.work_dir = *work_dir;
    place.scenario = name->scenario;
    const fs::path project_dir = place.work_dir / "workspace" / name->workspace / name->profile /
                                 "quarvel" / name->project / name->sub_proj;
    place.scenario_file = project_dir / "scenarios" / scenario_file_name(name->scenario);
    set_replay_profile(arguments, *name, project_dir, place);
    const fs::path config_dir = project_dir / "ReplayAccessLogs" / name->scenario / "config";
    place.config_path = config_dir / "";
    place.config_directory = fs::weakly_canonical(config_dir);
    return place;
}
