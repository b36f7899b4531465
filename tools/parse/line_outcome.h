#pragma once

#include <cstdint>

// What became of a line of an access log.
enum class LineKind {
    accepted,
    unclosed_field, // a quote or bracket has no end
    too_few_fields, // than the layout needs
    invalid_client_address,
    invalid_request_line,
    invalid_time,
    missing_fields, // the layout does not say where the date, the time or the URL stands
    before_period,  // of replay
    after_period
};

struct LineOutcome {
    LineKind kind = LineKind::accepted;
    uint64_t time_stamp = 0; // seconds, on the scale of tools/parse/timestamps.h; 0 unless the time
                             // was read before the line was rejected
};
