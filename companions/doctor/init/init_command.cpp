#include "companions/doctor/init/init_command.h"

#include "companions/common/shown_text.h"
#include "companions/doctor/findings_output.h"
#include "companions/doctor/init/init_report.h"
#include "companions/doctor/init/log_gathering.h"
#include "companions/doctor/init/log_times.h"
#include "companions/doctor/init/own_check.h"
#include "companions/doctor/init/scenario_writer.h"

#include <algorithm>
#include <cctype>
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

long percent_of(size_t part, size_t whole) {
    return whole == 0 ? 0 : static_cast<long>((100 * part + whole / 2) / whole);
}

std::string reason_for_session(const SessionChoice& choice, const SessionEvidence& evidence,
                               const LogLayout& layout) {
    if (choice.key == SessionKey::cookie) {
        const CookieUse& use = evidence.cookies.front();
        return fmt::format("Session cookie: {}, in {} % of the requests that were tried.", use.name,
                           percent_of(use.requests, evidence.requests));
    }
    if (choice.key == SessionKey::none) {
        return "No cookie and no IPv4 address tells users apart, so there are no sessions and "
               "every "
               "request counts by itself.";
    }
    return layout.has(AL_REQUEST_COOKIE)
               ? "No cookie ties the requests together, so a session is a client address."
               : "No field of the log holds cookies, so a session is a client address.";
}

// What the choice of a session costs.
Findings findings_on_session(const SessionChoice& choice, const SessionEvidence& evidence) {
    Findings findings;
    const auto tell = [&](const char* id, size_t part, const char* meaning, const char* cure) {
        if (part != 0) {
            findings.push_back({id, Severity::note, "", 0,
                                fmt::format("{} of {} requests", part, evidence.requests), meaning,
                                cure});
        }
    };
    if (choice.key == SessionKey::cookie) {
        const CookieUse& use = evidence.cookies.front();
        tell("requests-without-session", evidence.requests - use.requests,
             "Of the requests that were tried, so many have no session cookie; they do not count "
             "unless they find a session by the secondary cookie.",
             "To count them, add IGNORE_NON_SESSION_URLS 0 to the settings.");
        tell("cookie-name-ambiguous", use.misread,
             "In so many requests the tool reads another value, since it looks for the cookie's "
             "name anywhere in the header.",
             "Choose another cookie where sessions matter.");
    } else if (choice.key == SessionKey::client_address) {
        tell("no-ipv4-address", evidence.bad_addresses,
             "Of the requests that were tried, so many have no IPv4 address as client, and count "
             "as bad.",
             "Log the Cookie header, by which the tool can know sessions, too.");
    }
    return findings;
}

// Quoted for a shell where it has to be.
std::string shell_word(const std::string& word) {
    const bool is_plain = !word.empty() && std::ranges::all_of(word, [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
               std::string_view("_-./+=:,@%").find(c) != std::string_view::npos;
    });
    if (is_plain) {
        return word;
    }
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

std::string run_command(const NewScenario& place, const RunOptions& options) {
    std::string command = "ZV_WDIR=" + shell_word(place.work_dir) +
                          " zvr_al_gen_url_list --scenario " + shell_word(options.scenario);
    if (!options.replay_profile.empty()) {
        command += " --replay_profile " + shell_word(options.replay_profile);
    }
    if (options.num_thread != 0) {
        command += " --num_thread " + std::to_string(options.num_thread);
    }
    if (options.dump_query_url == 0) {
        command += " --dump_query_url 0";
    }
    return command;
}

void plan_times(const std::vector<LogTimes>& times, ScenarioPlan& plan) {
    uint64_t first = UINT64_MAX;
    uint64_t last = 0;
    for (const LogTimes& log : times) {
        if (log.first.seconds != 0 && log.first.seconds < first) {
            first = log.first.seconds;
            plan.first_time = log.first.text;
        }
        if (log.last.seconds > last) {
            last = log.last.seconds;
            plan.last_time = log.last.text;
        }
    }
    plan.zone = zone_of(times);
}

void plan_scenario(const std::vector<LogSample>& samples, InitReport& report) {
    ScenarioPlan& plan = report.plan;
    plan.name = report.scenario;
    plan.layout = *report.layout.layout;
    plan.layout_reason = report.layout.reason;
    report.evidence = look_for_sessions(plan.layout, samples);
    plan.session = choose_session(plan.layout, report.evidence);
    plan.session_reason = reason_for_session(plan.session, report.evidence, plan.layout);
    for (const LogSample& sample : samples) {
        plan.logs.push_back(sample.path);
    }
    const std::vector<LogTimes> times = times_of(plan.layout, samples);
    plan_times(times, plan);
    append(report.findings, findings_on_session(plan.session, report.evidence));
    append(report.findings, check_order(samples, times));
}

InitReport set_up(const InitOptions& options) {
    const NewScenario place = place_new_scenario(options.run);
    if (!options.may_replace) {
        refuse_present_files(place);
    }
    const std::string unpack_to =
        options.unpack_to.empty()
            ? ""
            : std::filesystem::absolute(options.unpack_to).lexically_normal().string();
    GatheredLogs logs =
        gather_logs(options.logs, {unpack_to, options.unpack_limit, options.may_replace});
    InitReport report = {options.run.scenario, choose_layout(logs.samples, options.log_format)};
    report.findings = logs.findings;
    append(report.findings, report.layout.findings);
    if (report.layout.layout) {
        plan_scenario(logs.samples, report);
        report.written = write_scenario(place, report.plan);
        report.command = run_command(place, options.run);
        append(report.findings, findings_of_own_check(options.run));
    }
    return report;
}

int init(const InitOptions& options) {
    std::signal(SIGXFSZ, SIG_IGN); // a file that may grow no more is told of like a full disk
    const InitReport report = set_up(options);
    if (options.is_json) {
        print_json(stdout, report_as_json(report));
    } else {
        print_report(report);
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
