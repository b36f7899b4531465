#pragma once

#include <cstddef>
#include <cstdint>

struct accessLogInfo;

// What became of a line of an access log.
enum class LineKind : uint8_t {
    accepted,
    empty,          // no line that a parser is asked about
    comment,        // likewise
    unclosed_field, // a quote or bracket has no end
    too_few_fields, // than the layout needs
    invalid_client_address,
    invalid_request_line,
    invalid_time,
    missing_fields, // the layout does not say where the date, the time or the URL stands
    before_period,  // of replay
    after_period,
    beyond_waiting_limit // it should have waited for its session, and no more requests can: nothing
                         // behind it is read. Told by notes and tallies alone
};
constexpr size_t line_kind_count = 12;

// How an accepted request stands to its session when it is read.
enum class SessionNote : uint8_t {
    known,
    waits,                // may get it later, by its secondary cookie
    no_session_cookie,    // in its headers
    session_cookie_empty, // is there, without a value
    no_client_address     // in the log, where sessions go by it
};

struct LineOutcome {
    LineKind kind = LineKind::accepted;
    uint64_t time_stamp = 0; // seconds, on the scale of tools/parse/timestamps.h; 0 unless the time
                             // was read before the line was rejected
};

// What a program that asks for notes is left with for each line.
struct LineNote {
    LineKind kind;
    SessionNote session; // of an accepted request; else `known`
    uint32_t offset;     // bytes from LogPart::begin to the line; UINT32_MAX: that many or more
};

struct ObservedLogLine {
    const char* file_name;
    int64_t line_num; // in the file, from 1
    LineOutcome outcome;
    SessionNote session;          // as in LineNote
    const accessLogInfo* request; // its texts hold for the call; null unless the line is accepted
};

// Told of every line of the access logs that is read, those of one loading thread in their order,
// by that thread. Null, as in the tool: nobody is told. Set by a program before process_url_files.
extern void (*log_line_observer)(const ObservedLogLine& line);
