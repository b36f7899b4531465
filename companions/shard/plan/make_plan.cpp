#include "companions/shard/plan/make_plan.h"

#include "base/failure.h"
#include "base/file_state.h"
#include "base/own_directory.h"
#include "base/regular_file.h"
#include "cache/input_copies.h"
#include "cache/work_mark.h"
#include "companions/common/installation.h"
#include "companions/shard/plan/input_hashes.h"
#include "companions/shard/plan/log_samples.h"
#include "companions/shard/plan/planned_logs.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/input_backup.h"
#include "tools/driver/paths.h"
#include "tools/driver/result_cache.h"
#include "tools/load/input_files.h"
#include "tools/load/line_budgets.h"
#include "tools/load/thread_count.h"
#include "tools/parse/log_loader.h"
#include "tools/parse/replay_zone.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fmt/core.h>
#include <random>

namespace fs = std::filesystem;

namespace {

std::string random_id() {
    std::random_device source;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", source(), source(), source(), source());
}

// A run copies its inputs aside, and fails when one is missing.
void refuse_missing_inputs() {
    InputBackup().remove();
}

void refuse_scenario_at_work() {
    const OwnDirectory config_dir(config_directory());
    if (config_dir.is_open() && is_work_marked(config_dir)) {
        refuse_second_run();
    }
}

// Each instance waits for its own sessions, as with a thread of its own.
void refuse_shared_threads() {
    if (g_num_thread != 0 && choose_thread_count() < g_num_instance) {
        fail("NUM_THREAD %d lets instances share threads: on a cluster each of the %d instances "
             "has its own",
             g_num_thread, g_num_instance);
    }
}

// So many lines are never longer: a longer one counts as several.
uint64_t most_bytes(const InputFileInfo& file, uint64_t size) {
    const bool is_bounded = file.num_req != 0 && file.num_req < size / log_line_size;
    return is_bounded ? file.num_req * log_line_size : size;
}

void measure(const InputFileInfo& file, PlannedLog& log) {
    struct stat status;
    if (stat(file.input_file, &status) == 0 && !S_ISREG(status.st_mode)) {
        fail("%s is no regular file, which a cluster cannot read", file.input_file);
    }
    const FileDescriptor opened = open_regular_file(file.input_file);
    if (!opened.is_open() || fstat(opened.get(), &status) != 0) {
        fail("Unable to open url file %s", file.input_file);
    }
    log.size = most_bytes(file, static_cast<uint64_t>(status.st_size));
    log.samples = hash_log_samples(opened.get(), log.size, file.input_file);
    log.state = state_text(status);
}

std::vector<PlannedLog> plan_logs() {
    std::vector<PlannedLog> logs;
    for (int i = 0; i < num_al_files; ++i) {
        const InputFileInfo& file = seq_file_path[i];
        PlannedLog log = {.path = fs::absolute(file.input_file),
                          .size = 0,
                          .line_budget = file.num_req,
                          .is_body_file = file.body_flag != 0,
                          .instance = file.instance_idx,
                          .samples = 0,
                          .state = {}};
        if (!log.is_body_file) {
            measure(file, log);
        }
        logs.push_back(std::move(log));
    }
    return logs;
}

void plan_environment(Plan& plan) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has been started
    const char* const zone = std::getenv("TZ");
    plan.has_zone = zone != nullptr;
    plan.zone = zone == nullptr ? "" : zone;
    plan.zone_rules = hash_zone_rules();
    plan.replay_timezone = replay_timezone;
}

} // namespace

Plan make_plan(const RunOptions& options, uint64_t piece_count) {
    Plan plan = {};
    plan.id = random_id();
    plan.version = ZVR_VERSION;
    plan.directory = fs::current_path();
    plan.scenario = options.scenario;
    plan.replay_profile = options.replay_profile;
    plan.dump_query_url = options.dump_query_url;
    read_installation(options);
    plan.work_dir = g_wdir;
    refuse_scenario_at_work();
    refuse_missing_inputs();
    plan.input_hashes = hash_inputs(plan.settings);
    process_input_file_list2();
    fix_line_budgets();
    refuse_shared_threads();
    plan_environment(plan);
    plan.start_time_stamp = start_time_stamp;
    plan.end_time_stamp = end_time_stamp;
    plan.is_time_filtered = time_filter_flag != 0;
    plan.logs = plan_logs();
    plan.log_piece_size = choose_log_piece_size(plan.logs, piece_count);
    log_piece_size = plan.log_piece_size;
    plan.pieces = plan_pieces(plan.logs, piece_count);
    return plan;
}
