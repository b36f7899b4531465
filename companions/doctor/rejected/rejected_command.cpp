#include "companions/doctor/rejected/rejected_command.h"

#include "companions/common/installation.h"
#include "companions/common/load_progress.h"
#include "companions/common/shown_text.h"
#include "companions/doctor/rejected/explained_logs.h"
#include "companions/doctor/rejected/rejected_output.h"
#include "tools/load/worker.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/core.h>
#include <limits>
#include <memory>
#include <optional>

namespace {

constexpr uint64_t lines_for_people = 50;
constexpr size_t usual_text_width = 200;

struct RejectedOptions {
    RunOptions run;
    std::optional<uint64_t> limit;
    size_t text_width = usual_text_width;
    bool is_tsv = false;
    bool is_json = false;
};

uint64_t limit_of(const RejectedOptions& options) {
    const bool is_for_people = !options.is_tsv && !options.is_json;
    const uint64_t limit = options.limit.value_or(is_for_people ? lines_for_people : 0);
    return limit == 0 ? std::numeric_limits<uint64_t>::max() : limit;
}

RejectedOutput output_of(const RejectedOptions& options) {
    using Form = RejectedOutput::Form;
    const Form form = options.is_json ? Form::json : options.is_tsv ? Form::tsv : Form::table;
    return {form, limit_of(options), options.text_width};
}

// Another worker thread may wait for input that never comes, so that its end is not waited for.
[[noreturn]] void end_at_once(const Failure& failure) {
    LoadProgress::hide();
    fmt::print(stderr, "zvr_al_doctor: {}\n", shown_lines(failure.message));
    std::_Exit(failure_status);
}

ExplainedLogs load_logs() {
    tell_worker_failed = end_at_once;
    const LoadProgress progress;
    return explain_logs();
}

int list_rejected(const RejectedOptions& options) {
    read_installation(options.run);
    const ExplainedLogs logs = load_logs();
    write_rejected(stdout, logs, output_of(options));
    return 0;
}

} // namespace

void add_rejected_command(CLI::App& program, int& exit_status) {
    CLI::App& command =
        add_command(program, "rejected",
                    "Read all logs like a run, and list every line that does not count, and why");
    const auto options = std::make_shared<RejectedOptions>();
    add_run_options(command, options->run);
    command
        .add_option("--limit", options->limit,
                    "Lines that are listed; 0: all (default: 50, all with --tsv or --json)")
        ->type_name("N")
        ->check(count_up_to(std::numeric_limits<uint64_t>::max()));
    command
        .add_option("--width", options->text_width,
                    "Characters that are shown of a line (default: 200, or what the terminal "
                    "has room for)")
        ->type_name("N")
        ->check(count_up_to(std::numeric_limits<size_t>::max()));
    CLI::Option* tsv = command.add_flag("--tsv", options->is_tsv, "Write tab-separated text");
    add_json_option(command, options->is_json);
    tsv->excludes("--json");
    command.callback([options, &exit_status] { exit_status = list_rejected(*options); });
}
