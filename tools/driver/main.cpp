#include "base/failure.h"
#include "base/logs.h"
#include "base/own_directory.h"
#include "base/progress.h"
#include "base/standard_streams.h"
#include "cache/work_mark.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_settings.h"
#include "tools/config/scenario_file.h"
#include "tools/driver/command_line.h"
#include "tools/driver/input_backup.h"
#include "tools/driver/paths.h"
#include "tools/driver/process_signals.h"
#include "tools/driver/result_cache.h"
#include "tools/driver/result_phases.h"
#include "tools/driver/reuse_guard.h"
#include "tools/driver/run_inputs.h"
#include "tools/load/input_files.h"
#include "tools/load/load_phase.h"
#include "tools/load/request_table.h"
#include "tools/load/worker.h"
#include "tools/parse/secondary_cookie_trace.h"
#include "tools/patterns/pattern_tables.h"
#include "tools/results/complete_url_list.h"
#include "tools/results/hosts_list.h"
#include "tools/results/url_list.h"
#include "tools/urls/query_list.h"
#include "tools/urls/session_order.h"
#include "tools/urls/unique_urls.h"

#include <new>
#include <string>
#include <utility>

namespace {

constexpr const char* fname = "main";

[[noreturn]] void report_no_memory() {
    out_of_memory("working memory", 0);
}

// A worker thread's failure ends the run at once, whatever the others are at.
[[noreturn]] void end_run(const Failure& failure) {
    fatal_error("%s", failure.message.c_str());
}

void load_logs(const OwnDirectory& config_dir) {
    open_akaau_trace(config_dir);
    process_input_file_list2();
    const PhaseProgress progress(
        "Start processing access log files at %s\n",
        "End processing access log files at %s\n,Total Time taken : %ld(sec) \n");
    tell_worker_failed = end_run;
    process_url_files();
    progress.finish();
    close_akaau_trace();
}

SessionOrder order_requests() {
    const PhaseProgress progress(
        "Start sorting of request table at %s\n",
        "End sorting of request table at %s\n Total time taken: %ld(sec)\n");
    SessionOrder session_order = order_by_session(request_table);
    progress.finish();
    return session_order;
}

void make_unique_urls(SessionOrder session_order, const OwnDirectory& config_dir) {
    QueryList query_list(config_dir);
    const PhaseProgress progress(
        "Start creating unique pattern of urls at %s\n",
        "End creating unique pattern of urls at %s\n Total time taken: %ld(sec) \n");
    make_url_pattern_list(request_table, std::move(session_order), query_list);
    progress.finish();
    DEBUG_LOG(4, fname, "Total url pattern - %d", url_pattern_count);
}

// Returns false, with nothing read, when others may have exchanged the list.
bool read_cache(const OwnDirectory& config_dir, const ReuseGuard& guard) {
    if (!guard.holds(config_dir)) {
        return false;
    }
    const PhaseProgress progress("Start reading urls data form cache at %s\n",
                                 "End reading urls data from cache at %s\nTime taken = %ld\n");
    fill_url_pattern_from_cache(config_dir);
    progress.finish();
    if (!guard.holds(config_dir)) {
        forget_cached_urls();
        return false;
    }
    return true;
}

void run(int argc, char* argv[]) {
    read_work_directory();
    const bool scenario_named = read_command_line(argc, argv);
    set_replay_timezone();
    if (!scenario_named) {
        error_log(fname, "--scenario argument missing");
        print_usage(argv[0]);
    }
    find_scenario_and_profile();
    load_replay_profile();

    InputBackup backup;
    const ReuseGuard guard(config_directory());
    const Reuse reuse = check_cache();
    const OwnDirectory config_dir = create_config_directory();
    if (reuse == Reuse::everything && print_cached_summary(config_dir, guard)) {
        return;
    }

    const FileDescriptor work_mark = mark_work(config_dir);
    if (backup.is_exclusive() && is_marked_by_others(work_mark)) {
        refuse_second_run();
    }
    set_default_field_positions();
    validate_al_format();
    read_scenario_file(scenario_file_path());
    sort_pattern_tables();

    bool is_reusable = true;
    if (reuse != Reuse::complete_list || !read_cache(config_dir, guard)) {
        load_logs(config_dir);
        make_unique_urls(order_requests(), config_dir);
        is_reusable = dump_complete_url_list(config_dir);
    }
    write_hosts_list(config_dir);
    classify_urls();
    write_url_list(config_dir);

    close_debug_log();
    backup.copy_to_cache(config_dir, is_reusable);
    backup.remove();
}

} // namespace

int main(int argc, char* argv[]) {
    std::set_new_handler(report_no_memory);
    occupy_standard_streams();
    take_over_signals();
    try {
        run(argc, argv);
    } catch (const Failure& failure) {
        end_run(failure);
    }
    return 0;
}
