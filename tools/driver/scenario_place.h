#pragma once

#include <optional>
#include <string>

// How the tool splits the names that its options give, and where it looks for what they name. Texts
// alone: nothing here asks the file system.

// The parts of what option `scenario` says.
struct ScenarioName {
    std::string workspace;
    std::string profile;
    std::string project;
    std::string sub_proj;
    std::string scenario; // without ".conf"
};

// Splits workspace/profile/project/sub-project/name, or a name alone, which belongs to the default
// of all others. Nothing when there are slashes and too few parts.
std::optional<ScenarioName> parse_scenario_name(const std::string& argument);

// The profile of a scenario for which option `replay_profile` names none.
std::string own_profile_name(const ScenarioName& name);

// The profile that an argument of option `replay_profile` names: a name alone, with or without
// slashes around it, belongs to the default project and sub-project.
std::string relative_profile_name(const std::string& argument);

// Directory of such a named profile under the installation's.
std::string profile_directory_path(const std::string& work_dir, const std::string& relative_name);

// A scenario and the directory of its sub-project.
struct ScenarioPlace {
    std::string directory;
    std::string name; // of the scenario, without ".conf"

    std::string scenario_file() const;
    std::string own_profile_directory() const;
    std::string config_directory() const; // of the results; ends with "/"
};

// `workspace_directory`: that of the scenario's workspace and profile.
ScenarioPlace place_of_scenario(const std::string& workspace_directory, const ScenarioName& name);
