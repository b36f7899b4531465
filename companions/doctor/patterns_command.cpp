#include "companions/doctor/patterns_command.h"

#include "base/failure.h"
#include "base/own_directory.h"
#include "base/result_names.h"
#include "cache/input_copies.h"
#include "companions/common/counted.h"
#include "companions/common/installation.h"
#include "companions/common/newer_inputs.h"
#include "companions/common/shown_text.h"
#include "companions/doctor/findings_output.h"
#include "companions/doctor/patterns_output.h"
#include "tools/config/log_files.h"
#include "tools/driver/paths.h"
#include "tools/results/complete_url_list.h"

#include <cerrno>
#include <cstdio>
#include <fmt/core.h>
#include <limits>
#include <memory>
#include <system_error>

namespace {

struct PatternsOptions {
    RunOptions run;
    bool is_json = false;
    size_t limit = 20;
    TriedUrl url = {"", "GET", na_string};
};

PatternSources sources; // noted while the pattern files are read

void note_source(const ObservedLine& line) {
    sources.note(line);
}

void read_inputs(const RunOptions& options) {
    line_observer = note_source;
    read_installation(options);
    line_observer = nullptr;
    sources.sort();
}

void read_unique_urls() {
    const std::string path = config_directory();
    const OwnDirectory config_dir(path);
    if (!config_dir.is_open()) {
        fail("There are no results of this scenario in %s (%s); run zvr_al_gen_url_list first",
             path.c_str(), std::generic_category().message(errno).c_str());
    }
    try {
        fill_url_pattern_from_cache(config_dir);
    } catch (const Failure& failure) {
        fail("%s%s cannot be read back, as after requests whose method or host holds a '|': %s",
             path.c_str(), complete_url_list_name, failure.message.c_str());
    }
}

// Patterns may be newer: they are what is tried on the list.
std::vector<std::string> inputs_newer_than_list() {
    std::vector<std::string> inputs = {scenario_file_path(),
                                       replay_profile_file_path(settings_name)};
    for (int i = 0; i < num_al_files; ++i) {
        inputs.emplace_back(seq_file_path[i].input_file);
    }
    return files_newer_than(config_directory() + complete_url_list_name, inputs);
}

// On standard error, since it is about the answer.
void warn_of_newer_inputs(const std::vector<std::string>& newer) {
    if (!newer.empty()) {
        fmt::print(stderr,
                   "zvr_al_doctor: {} changed after the last run; the URLs are those of that run\n",
                   newer.size() == 1 ? shown_text(newer.front())
                                     : fmt::format("{} and {} more files",
                                                   shown_text(newer.front()), newer.size() - 1));
    }
}

void tell_trials(const PatternsOptions& options) {
    TriedUrl url = options.url;
    url.url = listed_url(url.url);
    const std::vector<PatternTrial> trials = try_patterns(url);
    if (options.is_json) {
        print_json(stdout, trials_as_json(url, trials, sources));
    } else {
        fmt::print("{}", trials_as_text(url, trials, sources));
    }
}

void tell_report(const PatternsOptions& options) {
    read_unique_urls();
    warn_of_newer_inputs(inputs_newer_than_list());
    ShownReport shown = {examine_patterns(), {}};
    shown.untaken_groups = group_urls(shown.report.untaken);
    if (options.is_json) {
        print_json(stdout, report_as_json(shown, sources, options.limit));
    } else {
        fmt::print("{}", report_as_text(shown, sources, options.limit));
    }
}

} // namespace

void add_patterns_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(program, "patterns",
                                    "Say what each pattern does with the URLs of the last run, and "
                                    "which URLs no pattern takes; reads no log");
    const auto options = std::make_shared<PatternsOptions>();
    add_run_options(command, options->run);
    add_json_option(command, options->is_json);
    command.add_option("--limit", options->limit, "Groups of URLs without a pattern to list")
        ->type_name("N")
        ->check(count_up_to(std::numeric_limits<size_t>::max()))
        ->capture_default_str();
    CLI::Option* url =
        command.add_option("--url", options->url.url, "Say how the patterns are tried on one URL")
            ->type_name("URL");
    command.add_option("--method", options->url.method, "Method of that URL")
        ->capture_default_str()
        ->needs(url);
    command.add_option("--host", options->url.host, "Host of that URL")
        ->capture_default_str()
        ->needs(url);
    command.callback([options, &exit_status] {
        read_inputs(options->run);
        options->url.url.empty() ? tell_report(*options) : tell_trials(*options);
        exit_status = 0;
    });
}
