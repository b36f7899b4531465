#include "companions/report/gather_figures.h"

#include "companions/common/installation.h"
#include "companions/common/load_progress.h"
#include "companions/common/shown_text.h"
#include "companions/report/freshness.h"
#include "companions/report/listed_urls.h"
#include "companions/report/load_over_time.h"
#include "companions/report/session_walk.h"
#include "companions/report/traffic_mix.h"
#include "companions/report/url_verdicts.h"
#include "companions/report/wall_clock.h"
#include "tools/config/field_layout.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_profile.h"
#include "tools/config/replay_settings.h"
#include "tools/driver/paths.h"
#include "tools/load/input_files.h"
#include "tools/load/load_phase.h"
#include "tools/load/tallied_lines.h"
#include "tools/load/worker.h"
#include "tools/patterns/classification.h"
#include "tools/results/url_list.h"
#include "tools/urls/query_list.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/unique_urls.h"

#include <cstdlib>
#include <fmt/core.h>
#include <sys/stat.h>
#include <utility>

namespace {

[[noreturn]] void end_process(const Failure& failure) {
    LoadProgress::hide();
    fmt::print(stderr, "zvr_al_report: {}\n", shown_lines(failure.message));
    std::_Exit(failure_status);
}

// Whether the response times of the tally mean anything is returned.
bool load_logs(LineTally& tally) {
    const bool has_response_times = read_response_times();
    process_input_file_list2();
    const LoadProgress progress;
    line_tally = &tally;
    tell_worker_failed = end_process;
    process_url_files();
    line_tally = nullptr;
    return has_response_times;
}

void describe_scenario(ScenarioFigures& figures) {
    constexpr const char* log_types[] = {"apache", "iis", "other"};
    figures.scenario = scenario;
    figures.replay_profile = replay_profile;
    figures.log_type = log_types[static_cast<unsigned char>(al_type)];
    figures.session_mode = session_mode == SESSION_MODE_COOKIE ? "cookie" : "client_address";
    figures.are_queries_cut = ignore_query_flag != 0;
    for (int i = 0; i < num_al_files; ++i) {
        const InputFileInfo& file = seq_file_path[i];
        struct stat status = {};
        stat(file.input_file, &status);
        figures.logs.push_back(
            {file.input_file, static_cast<uint64_t>(status.st_size), file.body_flag != 0});
    }
}

ReplayPeriod replay_period() {
    ReplayPeriod period;
    if (start_time_stamp != 0) {
        period.start = wall_seconds(start_time_stamp);
    }
    if (end_time_stamp != 0) {
        period.end = wall_seconds(end_time_stamp);
    }
    return period;
}

TimeBounds period_bounds() {
    return {start_time_stamp, end_time_stamp == 0 ? UINT64_MAX : end_time_stamp};
}

// As far as lines go, and what the phases counted.
void fill_funnel(const LineTally& tally, uint64_t counted, Funnel& funnel) {
    funnel.bad_lines = {tally.lines_of(LineKind::unclosed_field),
                        tally.lines_of(LineKind::too_few_fields),
                        tally.lines_of(LineKind::invalid_client_address),
                        tally.lines_of(LineKind::invalid_request_line),
                        tally.lines_of(LineKind::invalid_time),
                        tally.lines_of(LineKind::missing_fields)};
    funnel.blank = tally.lines_of(LineKind::empty);
    funnel.comments = tally.lines_of(LineKind::comment);
    funnel.lines = funnel.blank + funnel.comments + g_total_req;
    funnel.bad = g_total_bad_req;
    funnel.before_period = tally.lines_of(LineKind::before_period);
    funnel.after_period = tally.lines_of(LineKind::after_period);
    funnel.beyond_waiting_limit = tally.lines_of(LineKind::beyond_waiting_limit);
    funnel.loaded = g_valid_request;
    funnel.redirect_follow_ups = g_redirected_req;
    funnel.without_session = ignore_non_session_urls != 0 ? g_total_non_session_req : 0;
    funnel.counted = counted;
}

void add_verdicts(Funnel& funnel) {
    uint64_t* const counts[] = {&funnel.inline_left_out,
                                &funnel.filtered,
                                &funnel.inline_listed,
                                &funnel.main_with_transaction,
                                &funnel.main_without_transaction,
                                &funnel.no_pattern};
    for (int i = 0; i < url_pattern_count; ++i) {
        const auto entry = static_cast<size_t>(i);
        *counts[static_cast<size_t>(verdict_of(entry))] += url_pattern[i].count;
    }
}

QueryState query_state(const FigureOptions& options) {
    return ignore_query_flag == 0         ? QueryState::not_cut
           : !is_query_list_wanted()      ? QueryState::not_wanted
           : options.queries_per_url == 0 ? QueryState::left_out
                                          : QueryState::listed;
}

Distribution distribution_of(const ResponseTimeCounts& times) {
    ValueCounts values;
    for (size_t bucket = 0; bucket < times.counts().size(); ++bucket) {
        if (times.counts()[bucket] != 0) {
            values.add(ResponseTimeCounts::first_number(bucket), times.counts()[bucket]);
        }
    }
    return values.distribution();
}

// Sessions, URLs and mix of the loaded requests.
void work_out_requests(const LineTally& tally, const FigureOptions& options,
                       ScenarioFigures& figures) {
    figures.query_state = query_state(options);
    const bool is_queried = figures.query_state == QueryState::listed;
    const OrderedRequests counted = select_requests(request_table, order_by_session(request_table));
    const CollapsedRequests collapsed = collapse_requests(request_table, counted, is_queried);
    QueryList no_list;
    fill_url_patterns(request_table, collapsed, no_list);
    fill_pattern_index();
    fill_funnel(tally, counted.size(), figures.funnel);
    add_verdicts(figures.funnel);

    const std::vector<uint32_t> entries = listed_entries();
    figures.funnel.summary = url_list_summary(entries.size());
    figures.urls = list_urls(entries);
    if (is_queried) {
        figures.queries = count_queries(request_table, collapsed, entries, options.queries_per_url);
    }
    const TimeSteps steps(tally.over_time(), period_bounds());
    figures.over_time = responses_over_time(steps, tally.over_time());
    const UrlVerdicts verdicts = find_verdicts(request_table, collapsed);
    const size_t without_session = ignore_non_session_urls != 0 ? 0 : g_total_non_session_req;
    const std::vector<PeakStep> peaks =
        walk_sessions({request_table, counted, without_session, verdicts}, steps, figures);
    figures.mix = mix_of(figures.urls, verdicts.transaction_names, peaks);
}

} // namespace

ScenarioFigures gather_figures(const RunOptions& run, const FigureOptions& options) {
    read_installation(run);
    ScenarioFigures figures;
    LineTally tally;
    const bool has_response_times = load_logs(tally);
    describe_scenario(figures);
    figures.freshness = examine_results();
    figures.period = replay_period();
    if (has_response_times) {
        figures.response_times = distribution_of(tally.response_times());
    }
    work_out_requests(tally, options, figures);
    return figures;
}
