#include "companions/doctor/init/init_command.h"

#include "companions/common/shell_word.h"
#include "companions/doctor/findings_output.h"
#include "companions/doctor/init/init_report.h"
#include "companions/doctor/init/log_gathering.h"
#include "companions/doctor/init/own_check.h"
#include "companions/doctor/init/scenario_plan.h"
#include "companions/doctor/init/scenario_writer.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fmt/core.h>
#include <memory>

namespace {

struct InitOptions {
    RunOptions run;
    std::vector<std::string> logs;
    std::string log_format;
    std::string unpack_to;
    uint64_t unpack_limit = uint64_t{20} << 30; // bytes
    bool may_replace = false;
    bool is_json = false;
};

void append(Findings& findings, const Findings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

std::string scenario_words(const RunOptions& options) {
    const std::string words = " --scenario " + shell_word(options.scenario);
    return options.replay_profile.empty()
               ? words
               : words + " --replay_profile " + shell_word(options.replay_profile);
}

std::string run_command(const NewScenario& place, const RunOptions& options) {
    std::string command =
        "ZV_WDIR=" + shell_word(place.work_dir) + " zvr_al_gen_url_list" + scenario_words(options);
    if (options.num_thread != 0) {
        command += " --num_thread " + std::to_string(options.num_thread);
    }
    if (options.dump_query_url == 0) {
        command += " --dump_query_url 0";
    }
    return command;
}

// Without a slash at its end; empty where none is named.
std::string absolute_folder(const std::string& folder) {
    return folder.empty()
               ? ""
               : (std::filesystem::absolute(folder) / "").lexically_normal().parent_path().string();
}

// What "check" says of the scenario, without what has been said of its layout.
Findings further_findings(const RunOptions& options) {
    Findings findings = findings_of_own_check(options);
    std::erase_if(findings, [](const Finding& finding) { return finding.id == "no-location"; });
    return findings;
}

// What to ask once the scenario has been run.
std::vector<std::string> later_commands(const NewScenario& place, const RunOptions& options) {
    std::vector<std::string> commands;
    for (const char* command :
         {"zvr_al_doctor rejected", "zvr_al_doctor patterns", "zvr_al_report load"}) {
        commands.push_back(fmt::format("{} --work-dir {}{}", command, shell_word(place.work_dir),
                                       scenario_words(options)));
    }
    return commands;
}

InitReport set_up(const InitOptions& options) {
    const NewScenario place = place_new_scenario(options.run);
    if (!options.may_replace) {
        refuse_present_files(place);
    }
    const std::string unpack_to = absolute_folder(options.unpack_to);
    GatheredLogs logs =
        gather_logs(options.logs, {unpack_to, options.unpack_limit, options.may_replace});
    InitReport report = {options.run.scenario, choose_layout(logs.samples, options.log_format)};
    report.findings = logs.findings;
    append(report.findings, report.layout.findings);
    if (report.layout.layout) {
        plan_scenario(logs.samples, report);
        report.written = write_scenario(place, report.plan);
        report.command = run_command(place, options.run);
        report.later_commands = later_commands(place, options.run);
        append(report.findings, further_findings(options.run));
    }
    return report;
}

int init(const InitOptions& options) {
    std::signal(SIGXFSZ, SIG_IGN); // a file that may grow no more is told of like a full disk
    const InitReport report = set_up(options);
    if (options.is_json) {
        print_json(stdout, report_as_json(report));
    } else {
        print_report(stdout, report);
    }
    return exit_status_of(report.findings);
}

} // namespace

void add_init_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(program, "init",
                                    "Write a scenario that works for given logs: finds their "
                                    "layout and the session cookie, and unpacks them");
    const auto options = std::make_shared<InitOptions>();
    add_run_options(command, options->run);
    command
        .add_option("--log-format", options->log_format,
                    "The server's format of the logs: a LogFormat of Apache or log_format of nginx")
        ->type_name("FORMAT");
    command
        .add_option("--unpack-to", options->unpack_to,
                    "Folder for what compressed logs and archives hold")
        ->type_name("DIR");
    command
        .add_option("--unpack-limit", options->unpack_limit,
                    "No more than this is unpacked, for example 500M or 50G (default: 20G)")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false));
    command.add_flag("--force", options->may_replace,
                     "Replace the files of a scenario, and unpacked logs, that are there already");
    add_json_option(command, options->is_json);
    command.add_option("LOG", options->logs, "Logs: files, folders, or patterns of names")
        ->required();
    command.callback([options, &exit_status] { exit_status = init(*options); });
}
