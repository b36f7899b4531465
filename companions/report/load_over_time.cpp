#include "companions/report/load_over_time.h"

#include "companions/report/wall_clock.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace {

struct TimeSpan {
    uint64_t first;
    uint64_t last;
};

uint64_t sum_of(const StatusCounts& counts) {
    return std::accumulate(counts.begin(), counts.end(), uint64_t{0});
}

using TimedLines = std::vector<std::pair<uint64_t, uint64_t>>; // time and lines, in time

TimedLines lines_in_time(const StatusCountsOverTime& lines) {
    TimedLines timed;
    for (const auto& [key, counts] : lines.steps()) {
        timed.emplace_back(key * lines.step_seconds(), sum_of(counts));
    }
    std::sort(timed.begin(), timed.end());
    return timed;
}

TimedLines within(const TimedLines& timed, const TimeBounds& bounds) {
    TimedLines inner;
    for (const auto& [time, lines] : timed) {
        if (bounds.contain(time)) {
            inner.emplace_back(time, lines);
        }
    }
    return inner;
}

// Without the first and the last thousandth of the lines.
TimeSpan central_span(const TimedLines& timed) {
    uint64_t total = 0;
    for (const auto& [time, lines] : timed) {
        total += lines;
    }
    const uint64_t margin = total / 1000;
    const auto beyond_margin = [&](auto from, auto end) {
        uint64_t passed = 0;
        while (from + 1 != end && (passed += from->second) <= margin) {
            ++from;
        }
        return from->first;
    };
    return {beyond_margin(timed.begin(), timed.end()), beyond_margin(timed.rbegin(), timed.rend())};
}

// The span with all lines before and behind it up to the first long silence: a few odd times must
// not press all others together.
TimeSpan extend(TimeSpan span, const TimedLines& timed) {
    constexpr uint64_t day = 86'400;
    const uint64_t silence = std::max(day, span.last - span.first);
    for (auto line = timed.rbegin(); line != timed.rend(); ++line) {
        if (line->first < span.first && span.first - line->first <= silence) {
            span.first = line->first;
        }
    }
    for (const auto& [time, lines] : timed) {
        if (time > span.last && time - span.last <= silence) {
            span.last = time;
        }
    }
    return span;
}

TimeSpan shown_span(const TimedLines& timed, const TimeBounds& period) {
    const TimedLines in_period = within(timed, period);
    return extend(central_span(in_period.empty() ? timed : in_period), timed);
}

// At least the step that the lines are counted by.
uint64_t choose_step(uint64_t span, uint64_t least) {
    constexpr uint64_t day = 86'400;
    for (const uint64_t step : {uint64_t{1}, uint64_t{60}, uint64_t{3600}}) {
        if (step >= least && span / step < TimeSteps::most_steps) {
            return step;
        }
    }
    return day * (span / (day * TimeSteps::most_steps) + 1);
}

void add_outlying(OutlyingLines& outlying, WallSeconds time, uint64_t lines) {
    outlying.first = outlying.lines == 0 ? time : std::min(outlying.first, time);
    outlying.last = outlying.lines == 0 ? time : std::max(outlying.last, time);
    outlying.lines += lines;
}

} // namespace

TimeSteps::TimeSteps(const StatusCountsOverTime& lines, const TimeBounds& period) {
    const TimedLines timed = lines_in_time(lines);
    if (timed.empty()) {
        return;
    }
    const TimeSpan span = shown_span(timed, period);
    seconds_ = choose_step(span.last - span.first, lines.step_seconds());
    // Full hours and days of the clock that people see.
    const auto step = static_cast<WallSeconds>(seconds_);
    const WallSeconds past = wall_seconds(span.first) % step;
    start_ = span.first - static_cast<uint64_t>(past < 0 ? past + step : past);
    count_ = (span.last - start_) / seconds_ + 1;
}

LoadOverTime responses_over_time(const TimeSteps& steps, const StatusCountsOverTime& lines) {
    LoadOverTime load;
    load.step_seconds = steps.seconds();
    load.start = steps.count() == 0 ? 0 : wall_seconds(steps.start());
    for (auto* series :
         {&load.requests, &load.main_requests, &load.sessions_begun, &load.sessions_at_work}) {
        series->resize(steps.count());
    }
    for (auto& series : load.responses) {
        series.resize(steps.count());
    }
    for (const auto& [key, counts] : lines.steps()) {
        const uint64_t time = key * lines.step_seconds();
        const std::optional<size_t> step = steps.find(time);
        if (!step) {
            add_outlying(time < steps.start() ? load.before : load.after, wall_seconds(time),
                         sum_of(counts));
            continue;
        }
        for (size_t i = 0; i < status_class_count; ++i) {
            load.responses[i][*step] += counts[i];
        }
    }
    return load;
}
