#include "companions/report/export/export_command.h"

#include "base/failure.h"
#include "companions/common/common_options.h"
#include "companions/common/counted.h"
#include "companions/common/installation.h"
#include "companions/common/output_file.h"
#include "companions/common/shown_text.h"
#include "companions/report/export/export_formats.h"
#include "companions/report/export/listed_targets.h"
#include "companions/report/export/request_url.h"
#include "companions/report/freshness.h"

#include <algorithm>
#include <filesystem>
#include <fmt/core.h>
#include <memory>
#include <optional>
#include <system_error>

namespace {

struct ExportOptions {
    RunOptions run;
    std::string format;
    std::optional<std::string> output; // file; none: standard output
    TargetChoice choice;
};

// Refuses results that are not whole or do not fit to what they were made from.
void require_current_results() {
    const Freshness freshness = examine_results();
    if (freshness.state == ResultState::being_written) {
        fail("A run is writing the results in %s; try again when it has ended",
             freshness.directory.c_str());
    }
    if (freshness.state == ResultState::none) {
        fail("There are no results of this scenario in %s; run zvr_al_gen_url_list first",
             freshness.directory.c_str());
    }
    if (freshness.state == ResultState::older) {
        fail("The results in %s are older than %s%s; run zvr_al_gen_url_list again",
             freshness.directory.c_str(), freshness.newer_inputs.front().c_str(),
             freshness.newer_inputs.size() > 1 ? " and others" : "");
    }
    if (freshness.state == ResultState::of_other_inputs) {
        fail("The results in %s are not of %s%s as it is: of another replay profile, or replaced; "
             "run zvr_al_gen_url_list again",
             freshness.directory.c_str(), freshness.other_inputs.front().c_str(),
             freshness.other_inputs.size() > 1 ? " and others" : "");
    }
}

Targets fitting_targets(const ExportOptions& options, const ExportFormat& format,
                        ExportNotes& notes) {
    return [&options, &format, &notes](const TargetUse& use) {
        for_each_listed_target(options.choice, notes, [&](LoadTarget& target) {
            if (format.needs_hosts && target.host.empty()) {
                notes.leave_out("whose host is not in the logs: name one by --base-url",
                                target.count);
            } else if (format.fits(target, notes)) {
                notes.count(target);
                use(target);
            }
        });
    };
}

void write_targets(const ExportOptions& options, const ExportFormat& format, FILE* out) {
    ExportNotes notes;
    format.write(fitting_targets(options, format, notes), out);
    require_current_results(); // they may have been replaced in the meantime
    notes.print(stderr);
    if (notes.is_nothing_exported()) {
        fail("There is nothing to export");
    }
    if (format.needs_hosts && options.choice.base_url.empty()) {
        fmt::print(stderr, "Requests go to the hosts that the logs name, whoever wrote them there; "
                           "--base-url sends them to one place\n");
    }
}

void write_to_standard_output(const ExportOptions& options, const ExportFormat& format) {
    if (format.write_plan != nullptr) {
        fail("Format %s needs -o FILE: its data go into FILE%s", format.name, format.data_suffix);
    }
    bool is_written = true;
    try {
        write_targets(options, format, stdout);
    } catch (const std::system_error&) { // as fmt says it
        is_written = false;
    }
    if (!is_written || std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        fail("Standard output cannot be written to");
    }
}

void write_to_files(const ExportOptions& options, const ExportFormat& format) {
    const auto write = [&](FILE* out) { write_targets(options, format, out); };
    if (format.write_plan == nullptr) {
        OutputFile(*options.output).write(write);
        return;
    }
    const OutputFile plan(*options.output);
    const std::string data_path = *options.output + format.data_suffix;
    OutputFile(data_path).write(write);
    const std::string data_name = std::filesystem::path(data_path).filename();
    plan.write([&](FILE* out) { format.write_plan(data_name, out); });
}

void export_load(ExportOptions options) {
    const auto format =
        std::find_if(export_formats.begin(), export_formats.end(),
                     [&](const ExportFormat& known) { return options.format == known.name; });
    if (!options.choice.base_url.empty()) {
        options.choice.base_url = checked_base_url(options.choice.base_url);
    }
    read_installation(options.run);
    require_current_results();
    if (!options.output) {
        write_to_standard_output(options, *format);
    } else {
        write_to_files(options, *format);
    }
}

CLI::Validator one_of_formats() {
    std::vector<std::string> names;
    names.reserve(export_formats.size());
    for (const ExportFormat& format : export_formats) {
        names.emplace_back(format.name);
    }
    return CLI::IsMember(names);
}

// As of an unset variable in a script: without --base-url the load would go to the logged hosts.
CLI::Validator not_empty() {
    return CLI::Validator(
        [](const std::string& text) { return text.empty() ? "must not be empty" : ""; }, "");
}

std::string format_help() {
    std::string help = "What is written:";
    for (const ExportFormat& format : export_formats) {
        help += fmt::format("\n{}: {}", format.name, format.description);
    }
    return help;
}

} // namespace

void add_export_command(CLI::App& program, int& exit_status) {
    CLI::App& command = add_command(
        program, "export", "Write the load for another program: each URL as often as it counts");
    const auto options = std::make_shared<ExportOptions>();
    add_run_options(command, options->run);
    command.add_option("-f,--format", options->format, format_help())
        ->type_name("FORMAT")
        ->required()
        ->check(one_of_formats());
    command.add_option("-o,--output", options->output, "File to write (default: standard output)")
        ->type_name("FILE")
        ->check(not_empty());
    command
        .add_option("--base-url", options->choice.base_url,
                    "Where requests go, as http://host:8080 or https://host/path; the logged host "
                    "stays in header Host (default: http:// and the logged host)")
        ->type_name("URL")
        ->check(not_empty());
    command
        .add_option("--only-transaction", options->choice.transaction,
                    "Only the URLs of this transaction")
        ->type_name("NAME")
        ->check(not_empty());
    command.callback([options, &exit_status] {
        export_load(*options);
        exit_status = 0;
    });
}
