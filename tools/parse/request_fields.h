#pragma once

#include "base/logs.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/field_splitter.h"
#include "tools/parse/line_outcome.h"
#include "tools/parse/parsing_thread.h"
#include "tools/parse/request_record.h"

#include <cstdint>
#include <span>

// What the parsers of all log dialects have in common: the fields that mean the same in each of
// them, the replay period, and the record that an accepted line fills. Nothing is copied before a
// line is accepted.

// The line at work, for the messages about it.
struct LineOrigin {
    const char* fname; // the parser, as the debug log names it
    const char* file_name;
    int64_t line_num; // from 1
};

enum class FieldOutcome {
    handled,
    invalid_client_address,
    dialect_specific // means something in one dialect only
};

// The fields of the layout that are to be read, in the order of their kinds: those that the
// settings have a use for, or all where the debug log tells of them.
inline std::span<const PresentField> fields_to_read() {
    return debug_wanted(2) ? std::span(present_fields, static_cast<size_t>(present_field_count))
                           : std::span(read_fields, static_cast<size_t>(read_field_count));
}

// Whether a field holds the "-" that stands for no value.
inline bool is_dash(LineText field) {
    return field.size == 1 && field.text[0] == '-';
}

// Splits `line` at `quotes` into `fields` (max_al_fields of them). Returns `accepted`; or why the
// line is bad, which is then reported.
LineKind report_unusable_fields(const LineOrigin& origin, int count);
inline LineKind split_line(const LineOrigin& origin, LineText line, MarkCursor& quotes,
                           LineText fields[]) {
    const int count = get_al_fields(line, quotes, fields, max_al_fields);
    return count >= max_required_field_position ? LineKind::accepted
                                                : report_unusable_fields(origin, count);
}

// Writes the field's value to the debug log (level 4), except for a status code, which has a line
// of its own, and a client address that is not looked at.
void log_field_value(const LineOrigin& origin, int kind, LineText field);

// What strtol gives.
int read_any_status_code(LineText field);
inline int read_status_code(LineText field) {
    const auto digit = [&](size_t at) { return static_cast<unsigned>(field.text[at] - '0'); };
    if (field.size == 3 && digit(0) <= 9 && digit(1) <= 9 && digit(2) <= 9) { // as all have
        return static_cast<int>(digit(0) * 100 + digit(1) * 10 + digit(2));
    }
    return read_any_status_code(field);
}

// Sets the response time, to 0 for a negative one.
void read_number_of_seconds(LineText field, RequestFields& request);
void read_number_of_microseconds(LineText field, RequestFields& request);

FieldOutcome read_client_ip(const LineOrigin& origin, LineText field, RequestFields& request);

inline void log_text_allocation(const LineOrigin& origin, const char* name, LineText field) {
    DEBUG_LOG(2, origin.fname, "Allocating memory for %s. size = %d", name,
              static_cast<int>(field.size + 1));
}

// Reads a field of a kind (see tools/config/field_layout.h) that all dialects share into `request`.
// A bad field is reported. Inline, as lines have many fields.
inline FieldOutcome read_common_field(const LineOrigin& origin, int kind, LineText field,
                                      RequestFields& request) {
    switch (kind) {
    case AL_CLIENT_IP:
        return read_client_ip(origin, field, request);
    case AL_STATUS_CODE:
        request.response_code = read_status_code(field);
        DEBUG_LOG(4, origin.fname, "Response code = %d", request.response_code);
        break;
    case AL_REQUEST_COOKIE:
        log_text_allocation(origin, "Cookies", field);
        request.cookies = field;
        break;
    case AL_SET_COOKIE:
        log_text_allocation(origin, "Set Cookies", field);
        request.set_cookies = field;
        break;
    case AL_HOST_HEADER:
        if (!is_dash(field)) {
            log_text_allocation(origin, "Allocate host IP", field);
            request.host = field;
        }
        break;
    case AL_LOCATION:
        if (!is_dash(field)) {
            request.location = field;
        }
        break;
    case AL_RESPONSE_TIME:
        read_number_of_seconds(field, request);
        break;
    case AL_RESPONSE_TIME_USEC:
        read_number_of_microseconds(field, request);
        break;
    default:
        return FieldOutcome::dialect_specific;
    }
    return FieldOutcome::handled;
}

// Reports a bad line. `message` takes the line number and the file name.
void report_bad_line(const LineOrigin& origin, const char* message);

// Tests the replay period, both ends included. A request outside of it is reported.
LineKind report_out_of_period(const LineOrigin& origin, LineKind kind);
inline LineKind test_time(const LineOrigin& origin, uint64_t time_stamp) {
    if (start_time_stamp != 0 && time_stamp < start_time_stamp) {
        return report_out_of_period(origin, LineKind::before_period);
    }
    if (end_time_stamp != 0 && time_stamp > end_time_stamp) {
        return report_out_of_period(origin, LineKind::after_period);
    }
    return LineKind::accepted;
}

// The same, for the time from which the response time is subtracted where the settings say so.
inline LineKind test_replay_period(const LineOrigin& origin, RequestFields& request) {
    if (consider_response_time != 0) {
        request.time_stamp -= static_cast<uint64_t>(request.response_time);
    }
    return test_time(origin, request.time_stamp);
}

// The parsers' result for a line: counts it in `thread`, keeps what became of it there, and returns
// 0 when it is accepted, else -1.
int finish_line(ParsingThread& thread, const LineOrigin& origin, LineOutcome outcome);

// Resolves the location against `url` when it is relative; otherwise leaves it as logged.
void resolve_logged_location(ParsingThread& thread, LineText url, LineText& location);
inline void resolve_location(ParsingThread& thread, LineText url, LineText& location) {
    if (location.text != nullptr) {
        resolve_logged_location(thread, url, location);
    }
}

// Fills the record of an accepted request, whose texts stay where they are. Fields that no line
// fills stay as they are: the caller has cleared a new record.
void store_request(const RequestFields& request, alInfo& record);
