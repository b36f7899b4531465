#include "base/logs.h"
#include "tools/config/field_layout.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/request_fields.h"
#include "tools/parse/timestamps.h"

#include <cstring>

namespace {

constexpr int needed_words = 3; // method, URL, protocol version

// The first blank-separated word at or after `position`; empty at the end of the text.
LineText next_word(const char* position, const char* end) {
    while (*position == ' ') {
        ++position;
    }
    const void* blank = std::memchr(position, ' ', static_cast<size_t>(end - position));
    const char* word_end = blank == nullptr ? end : static_cast<const char*>(blank);
    return {const_cast<char*>(position), static_cast<size_t>(word_end - position)};
}

// Method and URL, when a protocol version follows them. Words of a request line are counted up to
// the fifth; what comes behind that means nothing.
bool split_request_line(LineText field, RequestFields& request) {
    constexpr int max_words = 5;
    LineText words[max_words] = {};
    const char* const end = field.text + field.size;
    const int counted_words = debug_wanted(4) ? max_words : needed_words;
    const char* position = field.text;
    int count = 0;
    for (; count < counted_words; ++count) {
        words[count] = next_word(position, end);
        if (words[count].size == 0) {
            break;
        }
        position = words[count].text + words[count].size;
    }
    DEBUG_LOG(4, "get_tokens1", "Total fields found : %d", count);
    request.method = words[0];
    request.url = words[1];
    return count >= needed_words;
}

LineKind read_request_line(const LineOrigin& origin, LineText field, RequestFields& request) {
    if (!split_request_line(field, request)) {
        DEBUG_LOG(2, origin.fname,
                  "Invalid request line in file %s at line number - %ld, this request will be "
                  "ignored",
                  origin.file_name, origin.line_num);
        return LineKind::invalid_request_line;
    }
    DEBUG_LOG(2, origin.fname, "Allocating memory for %s. size = %d", "url",
              static_cast<int>(request.url.size + 2));
    return LineKind::accepted;
}

LineKind read_date_and_time(const LineOrigin& origin, LineText field, RequestFields& request) {
    const time_t time_stamp = convert_into_second(field);
    if (time_stamp == -1) {
        DEBUG_LOG(2, origin.fname,
                  "Invalid date/time in file:%s at line number:%ld, ignorning line",
                  origin.file_name, origin.line_num);
        return LineKind::invalid_time;
    }
    request.time_stamp = static_cast<uint64_t>(time_stamp);
    return LineKind::accepted;
}

LineKind read_field(ParsingThread& thread, const LineOrigin& origin, int kind, LineText field,
                    RequestFields& request) {
    if (debug_wanted(4)) {
        log_field_value(origin, kind, field);
    }
    switch (kind) {
    case AL_DATE_AND_TIME:
        return read_date_and_time(origin, field, request);
    case AL_REQUEST_LINE:
        return read_request_line(origin, field, request);
    default:
        break;
    }
    if (read_common_field(origin, kind, field, request) == FieldOutcome::invalid_client_address) {
        return LineKind::invalid_client_address;
    }
    if (kind == AL_LOCATION) {
        resolve_location(thread, request.url, request.location);
    }
    return LineKind::accepted;
}

LineKind read_line(ParsingThread& thread, const LineOrigin& origin, LineText line,
                   RequestFields& request) {
    DEBUG_LOG(4, origin.fname, "Processing line num - %ld of file - %s", origin.line_num,
              origin.file_name);
    LineText fields[max_al_fields];
    LineKind kind = split_line(origin, line, fields);
    for (const PresentField& field : fields_to_read()) {
        if (kind != LineKind::accepted) {
            return kind;
        }
        kind = read_field(thread, origin, field.kind, fields[field.index], request);
    }
    return kind == LineKind::accepted ? test_replay_period(origin, request) : kind;
}

} // namespace

int parse_al_line(ParsingThread& thread, alInfo* al_info_array_t, LineText line,
                  const char* file_name, uint64_t seq_no, int64_t line_num) {
    const LineOrigin origin = {"parse_al_line", file_name, line_num};
    RequestFields& request = thread.fields;
    request = {};
    const LineKind kind = read_line(thread, origin, line, request);
    if (kind == LineKind::accepted) {
        store_request(request, al_info_array_t[seq_no]);
    }
    return finish_line(thread, origin, {kind, request.time_stamp});
}
