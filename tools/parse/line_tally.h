#pragma once

#include "tools/parse/line_outcome.h"
#include "tools/parse/request_parts.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

// How many lines of the logs became what, for a program that draws the load over time. Counts are
// kept, never lines.

constexpr size_t status_class_count = 6; // 1xx, 2xx, 3xx, 4xx, 5xx, all other codes
using StatusCounts = std::array<uint32_t, status_class_count>;

// Lines by the time of their requests and by the class of the status codes. Begins with a step for
// each second; steps grow when there are very many of them, so that odd times cost no memory.
class StatusCountsOverTime {
  public:
    // `time`: seconds, on the scale of tools/parse/timestamps.h.
    void add(uint64_t time, int status_code);
    void merge(const StatusCountsOverTime& other);

    // A key is a time divided by the step.
    using Steps = std::unordered_map<uint64_t, StatusCounts>;
    const Steps& steps() const { return steps_; }
    uint64_t step_seconds() const { return step_seconds_; } // 1, 60, 3600 or 86400

  private:
    StatusCounts& at(uint64_t time);
    void grow_step();

    Steps steps_;
    uint64_t step_seconds_ = 1;
    uint64_t last_key_ = 0;
    StatusCounts* last_ = nullptr; // counts of last_key_, where the next line mostly belongs
};

// Response times by their leading digits: a bucket for each number up to 255, then 128 to every
// doubling, so that the first number of a bucket is less than one in a hundred off.
class ResponseTimeCounts {
  public:
    void add(uint64_t usec) {
        const size_t bucket = bucket_of(usec);
        if (bucket >= counts_.size()) {
            counts_.resize(bucket + 1);
        }
        ++counts_[bucket];
    }
    void merge(const ResponseTimeCounts& other);

    const std::vector<uint64_t>& counts() const { return counts_; } // by bucket
    static size_t bucket_of(uint64_t usec);
    static uint64_t first_number(size_t bucket);

  private:
    std::vector<uint64_t> counts_;
};

class LineTally {
  public:
    // Takes a line. `fields` are those of a line whose time was read.
    void add(const LineOutcome& outcome, const RequestFields& fields);
    void merge(const LineTally& other);

    uint64_t& lines_of(LineKind kind) { return lines_[static_cast<size_t>(kind)]; }
    uint64_t lines_of(LineKind kind) const { return lines_[static_cast<size_t>(kind)]; }

    // Of all lines that could be parsed, also those outside the replay period.
    const StatusCountsOverTime& over_time() const { return over_time_; }

    // Of accepted requests, as far as the parsers read response times.
    const ResponseTimeCounts& response_times() const { return response_times_; }

  private:
    std::array<uint64_t, line_kind_count> lines_ = {};
    StatusCountsOverTime over_time_;
    ResponseTimeCounts response_times_;
};
