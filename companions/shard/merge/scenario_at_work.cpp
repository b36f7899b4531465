#include "companions/shard/merge/scenario_at_work.h"

#include "base/failure.h"
#include "base/file_state.h"
#include "base/regular_file.h"
#include "cache/work_mark.h"
#include "checker/own_run.h"
#include "companions/common/installation.h"
#include "companions/shard/merge/tool_program.h"
#include "companions/shard/plan/apply_plan.h"
#include "companions/shard/plan/input_hashes.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/paths.h"
#include "tools/driver/result_cache.h"
#include "tools/load/read_logs.h"
#include "tools/load/thread_count.h"

#include <string>
#include <unistd.h>

namespace {

// Reads the installation, before anything of the scenario is touched.
const Plan& read_scenario(const Plan& plan) {
    if (chdir(plan.directory.c_str()) != 0) {
        fail("Directory %s of the plan cannot be entered", plan.directory.c_str());
    }
    apply_zone(plan);
    read_installation({.scenario = plan.scenario,
                       .replay_profile = plan.replay_profile,
                       .num_thread = 0,
                       .dump_query_url = plan.dump_query_url,
                       .work_dir = plan.work_dir});
    std::string settings;
    if (hash_inputs(settings) != plan.input_hashes) {
        fail("The scenario, its settings or its patterns were changed after the plan was made");
    }
    return plan;
}

int instance_count(const Plan& plan) {
    return plan.logs.empty() ? 0 : plan.logs.back().instance + 1;
}

// Threads of a run of the tool that gives what the job gives: any number if no request waits for
// another instance's sessions, or if each instance gets a thread of its own anyway.
int equal_thread_count(const Plan& plan) {
    const bool may_wait = session_mode == SESSION_MODE_COOKIE && secondary_cookie_enable != 0;
    return may_wait && choose_thread_count() < instance_count(plan) ? instance_count(plan) : 0;
}

// The run that gives the same, as the system would show it.
RunProcess equal_run(const Plan& plan) {
    RunProcess run = {.pid = getpid(),
                      .words = {"zvr_al_gen_url_list", "--scenario", plan.scenario, "--num_thread",
                                std::to_string(equal_thread_count(plan)), "--dump_query_url",
                                std::to_string(plan.dump_query_url)},
                      .environment = {{"ZV_WDIR", plan.work_dir}},
                      .directory = plan.directory,
                      .program = find_tool()};
    if (!plan.replay_profile.empty()) {
        run.words.insert(run.words.end(), {"--replay_profile", plan.replay_profile});
    }
    if (plan.has_zone) {
        run.environment["TZ"] = plan.zone;
    }
    return run;
}

} // namespace

ScenarioAtWork::ScenarioAtWork(const Plan& plan)
    : plan_(read_scenario(plan)), config_dir_(create_config_directory()),
      work_mark_(mark_work(config_dir_)) {
    if (is_marked_by_others(work_mark_)) {
        refuse_second_run();
    }
    record_own_run(equal_run(plan));
}

void ScenarioAtWork::finish(bool is_reusable) {
    note_logs();
    backup_.copy_to_cache(config_dir_, is_reusable);
}

// As the plan has seen them and as they are now: the job has read them in between.
void ScenarioAtWork::note_logs() const {
    for (const PlannedLog& log : plan_.logs) {
        if (!log.is_body_file) {
            note_read_log(log.path.c_str(), log.state);
            const FileDescriptor file = open_regular_file(log.path.c_str());
            note_read_log(log.path.c_str(), file_state(file.get()).value_or("missing"));
        }
    }
}
