#include "companions/shard/merge/merge_command.h"

#include "companions/shard/merge/job_input.h"
#include "companions/shard/merge/merge_tables.h"
#include "companions/shard/merge/scenario_at_work.h"
#include "companions/shard/plan/plan_file.h"
#include "companions/shard/stage_options.h"
#include "tools/driver/result_phases.h"
#include "tools/parse/secondary_cookie_trace.h"
#include "tools/results/hosts_list.h"
#include "tools/results/url_list.h"

#include <csignal>
#include <fmt/core.h>
#include <memory>
#include <optional>

namespace {

// Who starts the command before the job may begin with it now.
void tell_ready() {
    fmt::print(stderr, "ready\n");
}

// While this lives, no interrupt ends the process: one that a terminal sends to the whole job ends
// the input of this command, too, and then it fails and takes its copies of the inputs away.
class IgnoredInterrupts {
  public:
    IgnoredInterrupts()
        : interrupt_(std::signal(SIGINT, SIG_IGN)), termination_(std::signal(SIGTERM, SIG_IGN)) {}
    ~IgnoredInterrupts() {
        std::signal(SIGINT, interrupt_);
        std::signal(SIGTERM, termination_);
    }
    IgnoredInterrupts(const IgnoredInterrupts&) = delete;
    IgnoredInterrupts& operator=(const IgnoredInterrupts&) = delete;

  private:
    void (*interrupt_)(int);
    void (*termination_)(int);
};

void make_results(const StageOptions& options) {
    std::optional<IgnoredInterrupts> until_all_has_come(std::in_place);
    const Plan plan = read_plan(options.plan_path);
    ScenarioAtWork work(plan);
    tell_ready();
    FrameReader frames = standard_input(options, plan);
    const TableSpool tables = read_job(frames, plan);
    until_all_has_come.reset();
    open_akaau_trace(work.config_dir()); // takes that of an earlier run away
    QueryList query_list(work.config_dir());
    merge_tables(tables, query_list);
    const bool is_reusable = dump_complete_url_list(work.config_dir());
    write_hosts_list(work.config_dir());
    classify_urls();
    write_url_list(work.config_dir());
    work.finish(is_reusable);
}

} // namespace

void add_merge_command(CLI::App& program, int& status) {
    CLI::App& command = add_command(
        program, "merge",
        "Mark the scenario, wait for what the other stages made, and write the results");
    const auto options = std::make_shared<StageOptions>();
    add_plan_option(command, *options);
    add_bare_option(command, *options);
    command.callback([options, &status] {
        make_results(*options);
        status = 0;
    });
}
