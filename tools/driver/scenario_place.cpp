#include "tools/driver/scenario_place.h"

#include "base/tokenizers.h"
#include "cache/input_copies.h"

#include <algorithm>
#include <string_view>

namespace {

// A scenario may be named by its file; any text from ".conf" on is no part of its name.
std::string without_conf(const std::string& name) {
    return name.substr(0, name.find(".conf"));
}

// The text without the slashes around it.
std::string_view without_outer_slashes(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of('/'), text.size()));
    return text.substr(0, text.find_last_not_of('/') + 1);
}

} // namespace

std::optional<ScenarioName> parse_scenario_name(const std::string& argument) {
    if (argument.find('/') == std::string::npos) {
        return ScenarioName{"admin", "default", "default", "default", without_conf(argument)};
    }
    constexpr int part_count = 5;
    std::string text = argument;
    char* parts[part_count];
    int count;
    get_tokens1(text.data(), parts, "/", part_count, &count);
    if (count < part_count) {
        return std::nullopt;
    }
    return ScenarioName{parts[0], parts[1], parts[2], parts[3], without_conf(parts[4])};
}

std::string own_profile_name(const ScenarioName& name) {
    return name.project + "/" + name.sub_proj + "/" + name.scenario;
}

std::string relative_profile_name(const std::string& argument) {
    const std::string_view name = without_outer_slashes(argument);
    return name.find('/') != std::string_view::npos ? argument
                                                    : "default/default/" + std::string(name);
}

std::string profile_directory_path(const std::string& work_dir, const std::string& relative_name) {
    return work_dir + "/replay_profiles/" + relative_name;
}

std::string ScenarioPlace::scenario_file() const {
    return directory + "/scenarios/" + scenario_file_name(name);
}

std::string ScenarioPlace::own_profile_directory() const {
    return directory + "/replay_profiles/" + name;
}

std::string ScenarioPlace::config_directory() const {
    return directory + "/ReplayAccessLogs/" + name + "/config/";
}

ScenarioPlace place_of_scenario(const std::string& workspace_directory, const ScenarioName& name) {
    return {workspace_directory + "/" + name.project + "/" + name.sub_proj, name.scenario};
}
