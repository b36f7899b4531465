#pragma once

#include "tools/parse/line_outcome.h"
#include "tools/urls/request_selection.h"

#include <array>
#include <cstddef>
#include <cstdint>

// Why a line of a log does not count in a run's results.

enum class Rejection : uint8_t {
    none, // it counts

    // Read, but no request.
    blank,
    comment,

    // BadRequest of the summary.
    unclosed_field,
    too_few_fields,
    invalid_client_address,
    invalid_request_line,
    invalid_time,
    missing_fields,

    // TimeBasedFiltered.
    before_period,
    after_period,

    // NonSessionRequest.
    no_session_cookie,
    session_cookie_empty,
    session_never_set,
    no_client_address,

    // Redirected.
    redirect_follow_up,

    // In no counter but Total.
    waiting_limit_reached,

    // Not read.
    behind_waiting_limit,
    behind_line_count,
    no_line_feed,
};
constexpr size_t rejection_count = static_cast<size_t>(Rejection::no_line_feed) + 1;

// How many lines there are of each, `none` included.
using RejectionCounts = std::array<uint64_t, rejection_count>;

struct RejectionText {
    const char* name;    // a word by which programs go
    const char* meaning; // for people
    const char* counter; // of the run's summary, beside Total, that the line is in; empty: none
};

const RejectionText& text_of(Rejection why);

// What became of a line while the logs were loaded. An accepted line may still be dropped.
Rejection rejection_of_line(LineKind kind);

// Why an accepted request was dropped; `session`: as it stood when it was read.
Rejection rejection_of_request(DroppedRequest why, SessionNote session);
