#include "base/logs.h"
#include "base/tokenizers.h"
#include "tools/config/field_layout.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/request_fields.h"
#include "tools/parse/timestamps.h"

#include <cstring>

namespace {

constexpr int needed_parts = 3; // method, URL, protocol version

// The first blank-separated word at or after `position`; empty at the end of the text.
LineText next_word(const char* position, const char* end) {
    while (*position == ' ') {
        ++position;
    }
    const void* blank = std::memchr(position, ' ', static_cast<size_t>(end - position));
    const char* word_end = blank == nullptr ? end : static_cast<const char*>(blank);
    return {const_cast<char*>(position), static_cast<size_t>(word_end - position)};
}

bool split_request_line_quickly(LineText field, RequestFields& request) {
    const char* const end = field.text + field.size;
    request.method = next_word(field.text, end);
    request.url = next_word(request.method.text + request.method.size, end);
    const LineText version = next_word(request.url.text + request.url.size, end);
    return version.size != 0;
}

// The general way, which the debug log shows.
bool split_request_line(LineText field, RequestFields& request) {
    constexpr int max_parts = 5;
    char* parts[max_parts];
    int count;
    get_tokens1(field.text, parts, " ", max_parts, &count);
    if (count < needed_parts) {
        return false;
    }
    request.method = {parts[0], std::strlen(parts[0])};
    request.url = {parts[1], std::strlen(parts[1])};
    return true;
}

bool read_request_line(ParsingThread& thread, const LineOrigin& origin, LineText field,
                       RequestFields& request) {
    const bool is_complete = debug_wanted(4) ? split_request_line(field, request)
                                             : split_request_line_quickly(field, request);
    if (!is_complete) {
        ++thread.counters.bad_req;
        DEBUG_LOG(2, origin.fname,
                  "Invalid request line in file %s at line number - %ld, this request will be "
                  "ignored",
                  origin.file_name, origin.line_num);
        return false;
    }
    DEBUG_LOG(2, origin.fname, "Allocating memory for %s. size = %d", "url",
              static_cast<int>(request.url.size + 2));
    return true;
}

bool read_date_and_time(ParsingThread& thread, const LineOrigin& origin, LineText field,
                        RequestFields& request) {
    const time_t time_stamp = convert_into_second(field);
    if (time_stamp == -1) {
        DEBUG_LOG(2, origin.fname,
                  "Invalid date/time in file:%s at line number:%ld, ignorning line",
                  origin.file_name, origin.line_num);
        ++thread.counters.bad_req;
        return false;
    }
    request.time_stamp = static_cast<uint64_t>(time_stamp);
    return true;
}

// False when the line is rejected.
bool read_field(ParsingThread& thread, const LineOrigin& origin, int kind, LineText field,
                RequestFields& request) {
    if (debug_wanted(4)) {
        log_field_value(origin, kind, field);
    }
    switch (kind) {
    case AL_DATE_AND_TIME:
        return read_date_and_time(thread, origin, field, request);
    case AL_REQUEST_LINE:
        return read_request_line(thread, origin, field, request);
    default:
        break;
    }
    if (read_common_field(thread, origin, kind, field, request) == FieldOutcome::rejected) {
        return false;
    }
    if (kind == AL_LOCATION) {
        resolve_location(thread, request.url, request.location);
    }
    return true;
}

} // namespace

int parse_al_line(ParsingThread& thread, alInfo* al_info_array_t, LineText line,
                  const char* file_name, uint64_t seq_no, int64_t line_num) {
    const LineOrigin origin = {"parse_al_line", file_name, line_num};
    DEBUG_LOG(4, origin.fname, "Processing line num - %ld of file - %s", line_num, file_name);
    LineText fields[max_al_fields];
    if (!split_line(thread, origin, line, fields)) {
        return -1;
    }
    RequestFields request;
    for (int i = 0; i < present_field_count; ++i) {
        const PresentField& present = present_fields[i];
        if (!read_field(thread, origin, present.kind, fields[present.index], request)) {
            return -1;
        }
    }
    if (!is_in_replay_period(thread, origin, request)) {
        return -1;
    }
    store_request(thread, request, "url", al_info_array_t[seq_no]);
    DEBUG_LOG(4, origin.fname, "Successfully parsed line:%ld from File:%s", line_num, file_name);
    return 0;
}
