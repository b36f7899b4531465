#include "companions/report/load_output.h"

#include "companions/common/counted.h"
#include "companions/common/shown_text.h"
#include "companions/common/text_table.h"
#include "companions/report/wall_clock.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <numeric>

namespace {

constexpr size_t name_width = 40;
constexpr size_t most_time_rows = 24;
constexpr size_t most_transactions = 20;
constexpr size_t most_hosts = 10;

double share_of(uint64_t part, uint64_t all) {
    return all == 0 ? 0 : static_cast<double>(part) / static_cast<double>(all);
}

std::string percent(double share) {
    return fmt::format("{:.1f} %", 100 * share);
}

std::string decimal(double number) {
    return fmt::format("{:.2f}", number);
}

// A bar for a part of what makes a full one; whatever there is shows.
std::string bar(uint64_t part, uint64_t full, size_t width) {
    const double length = std::ceil(share_of(part, full) * static_cast<double>(width));
    return std::string(std::min(static_cast<size_t>(length), width), '#');
}

// Columns that bars may take beside a table.
size_t bar_width(size_t width) {
    constexpr size_t beside = 60;
    constexpr size_t least = 10;
    return width > beside + least ? width - beside : least;
}

std::string heading(const Style& style, const std::string& text) {
    return "\n" + style.heading(text) + "\n";
}

// ---- What it is about ----

std::string first_of(const std::vector<std::string>& paths) {
    const size_t more = paths.size() - 1;
    return shown_text(paths.front()) +
           (more == 0 ? "" : fmt::format(" and {}", counted(more, "more file")));
}

std::string freshness_text(const Freshness& freshness, const Style& style) {
    switch (freshness.state) {
    case ResultState::none:
        return style.note("No run has made results of this scenario yet.") + "\n";
    case ResultState::being_written:
        return style.warning("A run is just making the results of this scenario.") + "\n";
    case ResultState::older:
        return style.warning(fmt::format(
                   "The results of the last run are older than {}; these figures are of now.",
                   first_of(freshness.newer_inputs))) +
               "\n";
    case ResultState::of_other_inputs:
        return style.warning(fmt::format("The last run has not read {} as it is: of another replay "
                                         "profile, or replaced; these figures are of now.",
                                         first_of(freshness.other_inputs))) +
               "\n";
    case ResultState::current:
        break;
    }
    return freshness.lacks_query_list
               ? style.warning("The last run has left no query_url.list.") + "\n"
               : "";
}

std::string period_text(const ReplayPeriod& period) {
    if (!period.start && !period.end) {
        return "all that the logs hold";
    }
    return fmt::format("{} to {}", period.start ? wall_text(*period.start) : "the first request",
                       period.end ? wall_text(*period.end) : "the last request");
}

std::string introduction(const ScenarioFigures& figures, const Style& style) {
    const bool by_cookie = figures.session_mode == "cookie";
    return fmt::format("{}\n{}Profile {}, {}; sessions by {}\nReplay period: {}\n",
                       style.heading("Scenario " + shown_text(figures.scenario)),
                       freshness_text(figures.freshness, style), shown_text(figures.replay_profile),
                       counted(figures.logs.size(), "log"), by_cookie ? "cookie" : "client address",
                       period_text(figures.period));
}

// ---- The way from lines to URLs ----

std::string funnel_text(const Funnel& funnel, const Style& style, size_t width) {
    TextTable table({{"Lines"}, {"", Alignment::right}, {"", Alignment::right}, {""}});
    const auto add = [&](const char* name, uint64_t count) {
        table.add_row({name, std::to_string(count), percent(share_of(count, funnel.lines)),
                       bar(count, funnel.lines, bar_width(width))});
    };
    add("read", funnel.lines);
    add("- blank or comments", funnel.blank + funnel.comments);
    add("- bad", funnel.bad);
    add("- outside the period", funnel.outside_period());
    if (funnel.beyond_waiting_limit != 0) {
        add("- where no more requests can wait", funnel.beyond_waiting_limit);
    }
    add("= requests loaded", funnel.loaded);
    add("- redirect follow-ups", funnel.redirect_follow_ups);
    add("- without session", funnel.without_session);
    add("= requests that count", funnel.counted);
    add("  inline, left out", funnel.inline_left_out);
    add("  inline, listed", funnel.inline_listed);
    add("  filtered", funnel.filtered);
    add("  main with transaction", funnel.main_with_transaction);
    add("  main without transaction", funnel.main_without_transaction);
    add("  main without a pattern", funnel.no_pattern);
    const std::string verdict =
        funnel.adds_up() ? "It adds up." : style.error("It does not add up.");
    return heading(style, "From lines to URLs") + table.text() + verdict + "\n";
}

// ---- The load over time ----

std::string unit_of(uint64_t step_seconds) {
    constexpr uint64_t day = 86'400;
    return step_seconds == 1      ? "second"
           : step_seconds == 60   ? "minute"
           : step_seconds == 3600 ? "hour"
           : step_seconds == day  ? "day"
                                  : counted(step_seconds / day, "day");
}

// Seconds that a row covers: whole minutes, hours or days that people think in.
uint64_t choose_row_seconds(const LoadOverTime& load) {
    constexpr uint64_t minute = 60;
    constexpr uint64_t hour = 60 * minute;
    constexpr uint64_t day = 24 * hour;
    const uint64_t span = load.requests.size() * load.step_seconds;
    for (const uint64_t seconds :
         {uint64_t{1}, uint64_t{2}, uint64_t{5}, uint64_t{10}, uint64_t{15}, uint64_t{30}, minute,
          2 * minute, 5 * minute, 10 * minute, 15 * minute, 30 * minute, hour, 2 * hour, 3 * hour,
          6 * hour, 12 * hour, day}) {
        if (seconds >= load.step_seconds && span <= seconds * most_time_rows) {
            return seconds;
        }
    }
    const uint64_t days = span / (most_time_rows * day) + 1;
    return (days * day + load.step_seconds - 1) / load.step_seconds * load.step_seconds;
}

struct TimeRow {
    WallSeconds start;
    uint64_t requests;
    uint64_t sessions_begun;
    uint64_t most_at_work;
};

std::vector<TimeRow> make_time_rows(const LoadOverTime& load) {
    const auto row_seconds = static_cast<WallSeconds>(choose_row_seconds(load));
    std::vector<TimeRow> rows;
    for (size_t step = 0; step < load.requests.size(); ++step) {
        const auto time = load.start + static_cast<WallSeconds>(step * load.step_seconds);
        if (rows.empty() || time >= rows.back().start + row_seconds) {
            rows.push_back({time - time % row_seconds, 0, 0, 0});
        }
        TimeRow& row = rows.back();
        row.requests += load.requests[step];
        row.sessions_begun += load.sessions_begun[step];
        row.most_at_work = std::max(row.most_at_work, load.sessions_at_work[step]);
    }
    return rows;
}

std::string time_table(const LoadOverTime& load, size_t width) {
    TextTable table({{"From"},
                     {"Requests", Alignment::right},
                     {"Sessions begun", Alignment::right},
                     {"Most at work", Alignment::right},
                     {""}});
    const std::vector<TimeRow> rows = make_time_rows(load);
    uint64_t full = 0;
    for (const TimeRow& row : rows) {
        full = std::max(full, row.requests);
    }
    for (const TimeRow& row : rows) {
        table.add_row({wall_text(row.start), std::to_string(row.requests),
                       std::to_string(row.sessions_begun), std::to_string(row.most_at_work),
                       bar(row.requests, full, bar_width(width))});
    }
    return table.text();
}

std::string peak_text(const LoadOverTime& load) {
    if (!load.peak) {
        return "";
    }
    const auto start = load.start + static_cast<WallSeconds>(*load.peak * load.step_seconds);
    return fmt::format("Peak: {} in the {} from {}\n",
                       counted(load.requests[*load.peak], "request"), unit_of(load.step_seconds),
                       wall_text(start));
}

std::string outlying_text(const OutlyingLines& lines, const char* where) {
    if (lines.lines == 0) {
        return "";
    }
    const std::string last =
        lines.last == lines.first ? "" : fmt::format(" to {}", wall_text(lines.last));
    return fmt::format("Far {} this: {}, {}{}\n", where, counted(lines.lines, "line"),
                       wall_text(lines.first), last);
}

std::string over_time_text(const LoadOverTime& load, const Style& style, size_t width) {
    std::string text = heading(style, "Load over time");
    if (load.requests.empty()) {
        return text + "No line has a time.\n";
    }
    return text + time_table(load, width) + peak_text(load) + outlying_text(load.before, "before") +
           outlying_text(load.after, "behind");
}

std::string responses_text(const LoadOverTime& load, const Style& style, size_t width) {
    TextTable table({{"Status"}, {"Lines", Alignment::right}, {"Share", Alignment::right}, {""}});
    std::array<uint64_t, status_class_count> sums = {};
    for (size_t i = 0; i < status_class_count; ++i) {
        sums[i] = std::accumulate(load.responses[i].begin(), load.responses[i].end(), uint64_t{0});
    }
    const uint64_t all = std::accumulate(sums.begin(), sums.end(), uint64_t{0});
    for (size_t i = 0; i < status_class_count; ++i) {
        if (sums[i] != 0) {
            table.add_row({status_class_names[i], std::to_string(sums[i]),
                           percent(share_of(sums[i], all)), bar(sums[i], all, bar_width(width))});
        }
    }
    return heading(style, "Responses, in and outside the period") + table.text();
}

// ---- Sessions ----

std::string distributions_text(const ScenarioFigures& figures) {
    TextTable table({{""},
                     {"Mean", Alignment::right},
                     {"Median", Alignment::right},
                     {"90 %", Alignment::right},
                     {"99 %", Alignment::right},
                     {"Largest", Alignment::right}});
    const auto add = [&](const char* name, const Distribution& values) {
        table.add_row({name, decimal(values.mean), std::to_string(values.median),
                       std::to_string(values.p90), std::to_string(values.p99),
                       std::to_string(values.largest)});
    };
    add("Requests of a session", figures.sessions.requests);
    add("Length of a session (s)", figures.sessions.length);
    add("Between requests (s)", figures.sessions.gaps);
    add("Between main requests (s)", figures.sessions.page_gaps);
    if (figures.response_times) {
        add("Response time (us)", *figures.response_times);
    }
    return table.text();
}

std::string sessions_text(const ScenarioFigures& figures, const Style& style) {
    const SessionFigures& sessions = figures.sessions;
    std::string text = heading(style, "Sessions");
    text += fmt::format("{}, {} of them with one request", counted(sessions.count, "session"),
                        sessions.with_one_request);
    if (sessions.peak_at_work.count != 0) {
        text += fmt::format("; most at one time: {} at {}", sessions.peak_at_work.count,
                            wall_text(sessions.peak_at_work.start));
    }
    return text + "\n" + distributions_text(figures);
}

// ---- The mix ----

std::string transactions_text(const TrafficMix& mix, const Style& style, size_t width) {
    TextTable table({{"Transaction"},
                     {"Requests", Alignment::right},
                     {"Share", Alignment::right},
                     {"URLs", Alignment::right},
                     {"Peak/min", Alignment::right},
                     {""}});
    const uint64_t full = mix.transactions.empty() ? 0 : mix.transactions.front().requests;
    const auto add = [&](const std::string& name, const TransactionFigures& part,
                         const std::string& more) {
        table.add_row({name, std::to_string(part.requests), percent(part.share),
                       std::to_string(part.urls), std::to_string(part.peak_minute.count), more});
    };
    for (size_t i = 0; i < std::min(mix.transactions.size(), most_transactions); ++i) {
        const TransactionFigures& part = mix.transactions[i];
        add(shown_text(part.name, name_width), part, bar(part.requests, full, bar_width(width)));
    }
    add("(none)", mix.without_transaction, "share: of all main requests");
    std::string text = heading(style, "Mix by transaction") + table.text();
    if (mix.transactions.size() > most_transactions) {
        text += fmt::format(
            "and {}\n", counted(mix.transactions.size() - most_transactions, "more transaction"));
    }
    if (!mix.post_without_body.empty()) {
        text += fmt::format("{} with POST or PUT ({}) without a body file\n",
                            counted(mix.post_without_body.size(), "URL"),
                            counted(mix.post_without_body_requests, "request"));
    }
    return text;
}

std::string shares_text(const char* name, const std::vector<TrafficShare>& parts,
                        const Style& style, size_t width) {
    TextTable table({{name},
                     {"Requests", Alignment::right},
                     {"Share", Alignment::right},
                     {"URLs", Alignment::right},
                     {""}});
    for (size_t i = 0; i < std::min(parts.size(), most_hosts); ++i) {
        table.add_row({shown_text(parts[i].name, name_width), std::to_string(parts[i].requests),
                       percent(parts[i].share), std::to_string(parts[i].urls),
                       bar(parts[i].requests, parts.front().requests, bar_width(width))});
    }
    const size_t more = parts.size() - std::min(parts.size(), most_hosts);
    return heading(style, fmt::format("{}s", name)) + table.text() +
           (more == 0 ? "" : fmt::format("and {} more\n", more));
}

// ---- What to set ----

std::string to_set_text(const ScenarioFigures& figures, const Style& style) {
    TextTable table(
        {{"A minute"}, {"Mean", Alignment::right}, {"Busiest", Alignment::right}, {"Which"}});
    const auto add = [&](const char* name, double mean, const PeakStep& most) {
        table.add_row({name, decimal(mean), std::to_string(most.count),
                       most.count == 0 ? "" : wall_text(most.start)});
    };
    const LoadTestSettings& to_set = figures.to_set;
    add("New sessions", to_set.sessions_per_minute, to_set.most_sessions_a_minute);
    add("Requests", to_set.requests_per_minute, to_set.most_requests_a_minute);
    add("Main requests", to_set.main_requests_per_minute, to_set.most_main_requests_a_minute);
    const SessionFigures& sessions = figures.sessions;
    return heading(style, "To set in the load test") + table.text() +
           fmt::format("Concurrent sessions: {}\nThink time: median {} s, mean {} s\n",
                       sessions.peak_at_work.count, sessions.page_gaps.median,
                       decimal(sessions.page_gaps.mean));
}

} // namespace

std::string figures_as_text(const ScenarioFigures& figures, const Style& style, size_t width) {
    return introduction(figures, style) + funnel_text(figures.funnel, style, width) +
           over_time_text(figures.over_time, style, width) +
           responses_text(figures.over_time, style, width) + sessions_text(figures, style) +
           transactions_text(figures.mix, style, width) +
           shares_text("Host", figures.mix.hosts, style, width) +
           shares_text("Method", figures.mix.methods, style, width) + to_set_text(figures, style);
}
