#include "companions/doctor/init/scenario_writer.h"

#include "base/failure.h"
#include "base/file_exists.h"
#include "base/workspace_directory.h"
#include "cache/input_copies.h"
#include "companions/common/installation.h"
#include "companions/doctor/init/written_files.h"
#include "tools/driver/paths.h"
#include "tools/driver/scenario_place.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::string profile_directory(const RunOptions& options) {
    std::string directory =
        options.replay_profile.empty()
            ? place_of_scenario(g_zv_ta_dir,
                                {g_zv_workspace, g_zv_profile, project, sub_proj, scenario})
                  .own_profile_directory()
            : profile_directory_path(g_wdir, relative_profile_name(options.replay_profile));
    refuse_long_path(directory);
    return directory;
}

struct NewFile {
    std::string directory;
    std::string name;
    std::string (*text)(const ScenarioPlan& plan);

    std::string path() const { return directory + "/" + name; }
};

std::vector<NewFile> files_of(const NewScenario& place) {
    const fs::path scenario_path = place.scenario_file;
    const std::string& profile = place.profile_directory;
    return {
        {scenario_path.parent_path(), scenario_path.filename(), scenario_text},
        {profile, settings_name, settings_text},
        {profile, url_patterns_name, [](const ScenarioPlan&) { return url_patterns_text(); }},
        {profile, filter_patterns_name, [](const ScenarioPlan&) { return filter_patterns_text(); }},
    };
}

// Results are shared as those of a run are.
void make_results_directories() {
    const std::string results = config_directory();
    if (!make_shared_directory(results).is_open() ||
        !make_shared_directory(
             (fs::path(results) / ".." / input_cache_name / "").lexically_normal())
             .is_open()) {
        fail("Cannot make the folders of the results, '%s'", results.c_str());
    }
}

void write_zone(const NewScenario& place, const ScenarioPlan& plan,
                std::vector<std::string>& written) {
    const OwnDirectory sys = make_directories(place.work_dir + "/sys");
    constexpr const char* name = "replay_settings.default";
    if (!is_taken(sys, name)) {
        write_file(sys, name, zone_file_text(plan));
        written.push_back(place.work_dir + "/sys/" + name);
    }
}

} // namespace

NewScenario place_new_scenario(const RunOptions& options) {
    enter_work_directory(options);
    set_scenario(options.scenario.c_str());
    if (std::string_view(scenario).empty()) {
        fail("The scenario's name is empty");
    }
    return {g_wdir, scenario_file_path(), profile_directory(options)};
}

void refuse_present_files(const NewScenario& place) {
    std::string present;
    for (const NewFile& file : files_of(place)) {
        if (file_exists(file.path().c_str())) {
            present += "\n  " + file.path();
        }
    }
    if (!present.empty()) {
        fail("Nothing is written, since these files are there already; --force replaces them:%s",
             present.c_str());
    }
}

std::vector<std::string> write_scenario(const NewScenario& place, const ScenarioPlan& plan) {
    make_directories(place.work_dir + "/webapps/zivrano/logs");
    std::vector<std::string> written;
    for (const NewFile& file : files_of(place)) {
        write_file(make_directories(file.directory), file.name, file.text(plan));
        written.push_back(file.path());
    }
    make_results_directories(); // last, so that only these are for all users
    write_zone(place, plan, written);
    return written;
}
