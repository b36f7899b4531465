#include "tests/companions/report/plain_load.h"

#include "tests/companions/report/report_runs.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <numeric>

namespace {

using nlohmann::json;
using Values = std::vector<long>;
using Span = std::pair<long, long>; // first and last second

struct PlainSessions {
    Values sizes;
    Values lengths;
    Values gaps;
    Values page_gaps;
    std::vector<Span> spans;
};

long percentile(const Values& sorted, size_t percent) {
    size_t rank = 0; // the least with which `percent` of a hundred are reached
    while (rank * 100 < percent * sorted.size()) {
        ++rank;
    }
    return sorted[rank - 1];
}

void add_gaps(const Values& times, Values& gaps) {
    for (size_t i = 1; i < times.size(); ++i) {
        gaps.push_back(times[i] - times[i - 1]);
    }
}

PlainSessions sessions_of(const std::vector<PlainVisit>& visits) {
    std::map<std::string, std::vector<PlainVisit>> by_session;
    for (const PlainVisit& visit : visits) {
        by_session[visit.session].push_back(visit);
    }
    by_session.erase("");
    PlainSessions sessions;
    for (auto& [session, own] : by_session) {
        std::stable_sort(own.begin(), own.end(),
                         [](const PlainVisit& a, const PlainVisit& b) { return a.time < b.time; });
        Values times;
        Values page_times;
        for (const PlainVisit& visit : own) {
            times.push_back(visit.time);
            if (visit.is_main) {
                page_times.push_back(visit.time);
            }
        }
        sessions.sizes.push_back(static_cast<long>(own.size()));
        sessions.lengths.push_back(times.back() - times.front());
        sessions.spans.emplace_back(times.front(), times.back());
        add_gaps(times, sessions.gaps);
        add_gaps(page_times, sessions.page_gaps);
    }
    return sessions;
}

long at_work(const std::vector<Span>& spans, long second) {
    return std::count_if(spans.begin(), spans.end(), [&](const Span& span) {
        return span.first <= second && second <= span.second;
    });
}

long count_within(const Values& times, long begin, long end) {
    return std::count_if(times.begin(), times.end(),
                         [&](long time) { return begin <= time && time < end; });
}

// The most in any minute, as the figures tell it.
void expect_busiest_minute(const json& told, const Values& times) {
    std::map<long, long> minutes;
    for (const long time : times) {
        ++minutes[time - time % 60];
    }
    if (minutes.empty()) {
        EXPECT_TRUE(told.is_null());
        return;
    }
    const auto most =
        std::max_element(minutes.begin(), minutes.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    EXPECT_EQ(number(told["time"]), most->first);
    EXPECT_EQ(number(told["count"]), most->second);
}

void expect_rate(const json& told, const Values& times, long span) {
    EXPECT_NEAR(told["mean"].get<double>(),
                static_cast<double>(times.size()) * 60 / static_cast<double>(span), 1e-9);
    expect_busiest_minute(told["most"], times);
}

void expect_peak_at_work(const json& told, const std::vector<Span>& spans) {
    long most = 0;
    long when = 0;
    for (const Span& span : spans) {
        const long count = at_work(spans, span.first);
        if (count > most || (count == most && span.first < when)) {
            most = count;
            when = span.first;
        }
    }
    if (most == 0) {
        EXPECT_TRUE(told.is_null());
        return;
    }
    EXPECT_EQ(number(told["count"]), most);
    EXPECT_EQ(number(told["time"]), when);
}

void expect_steps(const json& told, const Values& times, const Values& main_times,
                  const std::vector<Span>& spans) {
    const long seconds = number(told["step_seconds"]);
    Values starts;
    for (const Span& span : spans) {
        starts.push_back(span.first);
    }
    long begin = number(told["start"]);
    for (size_t i = 0; i < told["requests"].size(); ++i, begin += seconds) {
        const long end = begin + seconds;
        EXPECT_EQ(number(told["requests"][i]), count_within(times, begin, end)) << i;
        EXPECT_EQ(number(told["main_requests"][i]), count_within(main_times, begin, end)) << i;
        EXPECT_EQ(number(told["sessions_begun"][i]), count_within(starts, begin, end)) << i;
        long most = at_work(spans, begin);
        for (const Span& span : spans) {
            if (begin <= span.first && span.first < end) {
                most = std::max(most, at_work(spans, span.first));
            }
        }
        EXPECT_EQ(number(told["sessions_at_work"][i]), most) << i;
    }
    EXPECT_EQ(count_within(times, number(told["start"]), begin), static_cast<long>(times.size()));
}

} // namespace

void expect_distribution(const json& told, Values values) {
    std::sort(values.begin(), values.end());
    EXPECT_EQ(number(told["count"]), static_cast<long>(values.size()));
    if (values.empty()) {
        EXPECT_TRUE(told["bins"].empty());
        return;
    }
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    EXPECT_NEAR(told["mean"].get<double>(), sum / static_cast<double>(values.size()), 1e-6);
    EXPECT_EQ(number(told["median"]), percentile(values, 50));
    EXPECT_EQ(number(told["p90"]), percentile(values, 90));
    EXPECT_EQ(number(told["p99"]), percentile(values, 99));
    EXPECT_EQ(number(told["largest"]), values.back());
    long next = -1;
    long counted = 0;
    for (const json& bin : told["bins"]) {
        EXPECT_TRUE(next == -1 || number(bin[0]) == next) << bin;
        next = number(bin[1]) + 1;
        EXPECT_EQ(number(bin[2]), count_within(values, number(bin[0]), next)) << bin;
        counted += number(bin[2]);
    }
    EXPECT_EQ(counted, static_cast<long>(values.size()));
}

void expect_load(const json& figures, const std::vector<PlainVisit>& visits) {
    const PlainSessions sessions = sessions_of(visits);
    const json& told = figures["sessions"];
    EXPECT_EQ(number(told["count"]), static_cast<long>(sessions.sizes.size()));
    EXPECT_EQ(number(told["with_one_request"]),
              std::count(sessions.sizes.begin(), sessions.sizes.end(), 1));
    expect_distribution(told["requests"], sessions.sizes);
    expect_distribution(told["length_seconds"], sessions.lengths);
    expect_distribution(told["gap_seconds"], sessions.gaps);
    expect_distribution(told["page_gap_seconds"], sessions.page_gaps);
    expect_peak_at_work(told["peak_at_work"], sessions.spans);

    Values times;
    Values main_times;
    Values starts;
    for (const PlainVisit& visit : visits) {
        times.push_back(visit.time);
        if (visit.is_main) {
            main_times.push_back(visit.time);
        }
    }
    for (const Span& span : sessions.spans) {
        starts.push_back(span.first);
    }
    if (times.empty()) {
        EXPECT_TRUE(figures["first_request"].is_null());
        return;
    }
    const auto [first, last] = std::minmax_element(times.begin(), times.end());
    EXPECT_EQ(number(figures["first_request"]["time"]), *first);
    EXPECT_EQ(number(figures["last_request"]["time"]), *last);
    const json& to_set = figures["to_set"];
    const long span = *last - *first + 1;
    expect_rate(to_set["requests_per_minute"], times, span);
    expect_rate(to_set["sessions_per_minute"], starts, span);
    expect_rate(to_set["main_requests_per_minute"], main_times, span);
    expect_steps(figures["over_time"], times, main_times, sessions.spans);
}
