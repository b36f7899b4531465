#include "tools/parse/line_tally.h"

#include <algorithm>
#include <bit>

namespace {

constexpr uint64_t largest_step = 86'400;
constexpr size_t most_steps = 200'000; // days of seconds, months of minutes, years of hours

size_t status_class(int code) {
    return code >= 100 && code <= 599 ? static_cast<size_t>(code / 100 - 1)
                                      : status_class_count - 1;
}

void add_counts(StatusCounts& sum, const StatusCounts& more) {
    for (size_t i = 0; i < status_class_count; ++i) {
        sum[i] += more[i];
    }
}

constexpr int digits = 8; // binary ones that are kept of a response time
constexpr size_t half_range = size_t{1} << (digits - 1);

} // namespace

StatusCounts& StatusCountsOverTime::at(uint64_t time) {
    const uint64_t key = time / step_seconds_;
    if (last_ == nullptr || key != last_key_) {
        last_ = &steps_[key];
        last_key_ = key;
    }
    return *last_;
}

void StatusCountsOverTime::add(uint64_t time, int status_code) {
    ++at(time)[status_class(status_code)];
    if (steps_.size() > most_steps && step_seconds_ < largest_step) {
        grow_step();
    }
}

void StatusCountsOverTime::grow_step() {
    const uint64_t grown = step_seconds_ == 3600 ? largest_step : step_seconds_ * 60;
    Steps steps;
    for (const auto& [key, counts] : steps_) {
        add_counts(steps[key * step_seconds_ / grown], counts);
    }
    steps_ = std::move(steps);
    step_seconds_ = grown;
    last_ = nullptr;
}

void StatusCountsOverTime::merge(const StatusCountsOverTime& other) {
    while (step_seconds_ < other.step_seconds_) {
        grow_step();
    }
    for (const auto& [key, counts] : other.steps_) {
        add_counts(at(key * other.step_seconds_), counts);
    }
    while (steps_.size() > most_steps && step_seconds_ < largest_step) {
        grow_step();
    }
}

size_t ResponseTimeCounts::bucket_of(uint64_t usec) {
    const int shift = std::max(static_cast<int>(std::bit_width(usec)) - digits, 0);
    return static_cast<size_t>(shift) * half_range + static_cast<size_t>(usec >> shift);
}

uint64_t ResponseTimeCounts::first_number(size_t bucket) {
    const size_t shift = bucket < 2 * half_range ? 0 : bucket / half_range - 1;
    return static_cast<uint64_t>(bucket - shift * half_range) << shift;
}

void ResponseTimeCounts::merge(const ResponseTimeCounts& other) {
    counts_.resize(std::max(counts_.size(), other.counts_.size()));
    for (size_t bucket = 0; bucket < other.counts_.size(); ++bucket) {
        counts_[bucket] += other.counts_[bucket];
    }
}

void LineTally::add(const LineOutcome& outcome, const RequestFields& fields) {
    ++lines_of(outcome.kind);
    const bool is_accepted = outcome.kind == LineKind::accepted;
    if (is_accepted || outcome.kind == LineKind::before_period ||
        outcome.kind == LineKind::after_period) {
        over_time_.add(outcome.time_stamp, fields.response_code);
    }
    if (is_accepted && fields.has_response_time != 0) {
        constexpr uint64_t second = 1'000'000;
        response_times_.add(static_cast<uint64_t>(fields.response_time) * second +
                            fields.response_usec);
    }
}

void LineTally::merge(const LineTally& other) {
    for (size_t kind = 0; kind < line_kind_count; ++kind) {
        lines_[kind] += other.lines_[kind];
    }
    over_time_.merge(other.over_time_);
    response_times_.merge(other.response_times_);
}
