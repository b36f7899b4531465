#include "companions/doctor/check_command.h"

#include "base/failure.h"
#include "base/file_exists.h"
#include "companions/common/installation.h"
#include "companions/common/shown_text.h"
#include "companions/doctor/check_hosts.h"
#include "companions/doctor/check_logs.h"
#include "companions/doctor/check_patterns.h"
#include "companions/doctor/check_scenario.h"
#include "companions/doctor/check_settings.h"
#include "companions/doctor/check_zone.h"
#include "companions/doctor/findings_output.h"
#include "companions/doctor/near_word.h"
#include "tools/config/replay_profile.h"
#include "tools/driver/paths.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct CheckOptions {
    RunOptions run;
    bool is_json = false;
};

int check(const CheckOptions& options) {
    const Findings findings = check_scenario_inputs(options.run);
    if (options.is_json) {
        nlohmann::json json = findings_as_json(findings);
        json["scenario"] = valid_utf8(options.run.scenario);
        print_json(stdout, json);
    } else {
        print_findings(stdout, findings);
    }
    return exit_status_of(findings);
}

void add_failure(Findings& findings, const char* id, const std::string& value,
                 const Failure& failure, const char* cure) {
    findings.push_back(
        {id, Severity::error, "", 0, value, "A run fails: " + failure.message, cure});
}

bool find_work_directory(Findings& findings, const RunOptions& options) {
    constexpr const char* cure = "Set ZV_WDIR to the installation's directory, or give --work-dir.";
    try {
        enter_work_directory(options);
    } catch (const Failure& failure) {
        add_failure(findings, "work-directory", "", failure, cure);
        return false;
    }
    struct stat status;
    if (stat(g_wdir, &status) != 0 || !S_ISDIR(status.st_mode)) {
        findings.push_back({"work-directory", Severity::error, g_wdir, 0, "",
                            "There is no such directory: a run fails.", cure});
        return false;
    }
    return true;
}

// Names of the scenarios beside the one that is looked for.
std::vector<std::string> scenarios_beside(const std::string& scenario_file) {
    std::vector<std::string> names;
    std::error_code ignored;
    const fs::path directory = fs::path(scenario_file).parent_path();
    for (const auto& entry : fs::directory_iterator(directory, ignored)) {
        if (entry.path().extension() == ".conf") {
            names.push_back(entry.path().stem());
        }
    }
    return names;
}

void report_missing_scenario(Findings& findings) {
    const std::string path = scenario_file_path();
    const std::string near = nearest_word(scenario, scenarios_beside(path));
    findings.push_back({"scenario-missing", Severity::error, path, 0, scenario,
                        "There is no such scenario: a run fails.",
                        near.empty() ? "Name a scenario that is there, with its workspace if that "
                                       "is not admin/default."
                                     : "Write " + near + " if that is meant."});
}

// Finds the scenario and its profile, as far as they are there. Returns whether the scenario is.
bool find_inputs(Findings& findings, const RunOptions& options) {
    constexpr const char* profile_cure = "Make it, or name another one with --replay_profile.";
    try {
        apply_run_options(options);
    } catch (const Failure& failure) {
        const bool is_named = replay_profile != nullptr;
        add_failure(findings, is_named ? "profile-missing" : "scenario-name",
                    is_named ? replay_profile : options.scenario, failure,
                    is_named ? profile_cure
                             : "Write a name, or workspace/profile/project/subproject/name.");
        return false;
    }
    if (!file_exists(scenario_file_path().c_str())) {
        report_missing_scenario(findings);
        return false;
    }
    try {
        find_scenario_and_profile();
    } catch (const Failure& failure) {
        add_failure(findings, "profile-missing", replay_profile, failure, profile_cure);
    }
    return true;
}

} // namespace

void add_check_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(program, "check",
                                    "Look at everything that a run would read, and say what is "
                                    "wrong and what to do; changes nothing");
    const auto options = std::make_shared<CheckOptions>();
    add_run_options(command, options->run);
    add_json_option(command, options->is_json);
    command.callback([options, &exit_status] { exit_status = check(*options); });
}

Findings check_scenario_inputs(const RunOptions& options) {
    Findings findings;
    if (!find_work_directory(findings, options) || !find_inputs(findings, options)) {
        return findings;
    }
    DecidingLines lines = {.zone = check_zone(findings)};
    std::vector<HostOfPattern> hosts;
    if (file_exists(replay_profile_dir)) {
        lines.cookie_name = check_settings(findings)["COOKIE_NAME"];
        hosts = check_patterns(findings);
    }
    lines.period = check_scenario(findings);
    KnownHosts sampled = check_logs(findings, lines);
    check_hosts(findings, hosts, choose_known_hosts(config_directory(), std::move(sampled)));
    return findings;
}
