#pragma once

#include "companions/common/common_options.h"
#include "companions/doctor/init/scenario_texts.h"

#include <string>
#include <vector>

// Where a new scenario goes, by the rules by which a run looks for it.
struct NewScenario {
    std::string work_dir;
    std::string scenario_file;
    std::string profile_directory;
};

// Enters the installation, which need not be there yet, and finds the places. Fails when the names
// are malformed or the paths too long.
NewScenario place_new_scenario(const RunOptions& options);

// Fails when a file of the scenario is there already, and names all that are.
void refuse_present_files(const NewScenario& place);

// Makes the folders that a run needs and writes the files of the scenario, and the installation's
// zone where it names none. Returns the paths of the files. Fails when something cannot be made.
std::vector<std::string> write_scenario(const NewScenario& place, const ScenarioPlan& plan);
