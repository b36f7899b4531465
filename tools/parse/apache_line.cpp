#include "base/byte_search.h"
#include "base/logs.h"
#include "tools/config/field_layout.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/request_fields.h"
#include "tools/parse/timestamps.h"

namespace {

char* skip_blanks(char* position) {
    while (*position == ' ') {
        ++position;
    }
    return position;
}

// The first blank-separated word at or after `position`; empty at the end of the text.
LineText next_word(char* position, char* end) {
    char* const start = skip_blanks(position);
    char* const blank = find_in_line(start, end, ' ');
    return {start, static_cast<size_t>((blank == nullptr ? end : blank) - start)};
}

char* end_of(LineText word) {
    return word.text + word.size;
}

// Words of a request line are counted up to the fifth.
int count_words(LineText field) {
    constexpr int max_words = 5;
    LineText word = next_word(field.text, end_of(field));
    int count = 0;
    while (word.size != 0 && count < max_words) {
        ++count;
        word = next_word(end_of(word), end_of(field));
    }
    return count;
}

// Method and URL for most request lines, by one search: three words with a blank between them, of
// which two end within 64 characters. Returns whether the line is of this form.
bool split_usual_request_line(LineText field, RequestFields& request) {
    const uint64_t blanks = places_in_line(field.text, ' ');
    const uint64_t later_blanks = blanks & (blanks - 1);
    if (later_blanks == 0) {
        return false;
    }
    const auto first = static_cast<size_t>(__builtin_ctzll(blanks));
    const auto second = static_cast<size_t>(__builtin_ctzll(later_blanks));
    const bool is_usual = first != 0 && second != first + 1 && second + 1 < field.size &&
                          field.text[second + 1] != ' ';
    request.method = {field.text, first};
    request.url = {field.text + first + 1, second - first - 1};
    return is_usual;
}

// Method and URL, when a protocol version follows them. What comes behind that means nothing.
bool split_request_line(LineText field, RequestFields& request) {
    if (!debug_wanted(4) && split_usual_request_line(field, request)) {
        return true;
    }
    char* const end = end_of(field);
    DEBUG_LOG(4, "get_tokens1", "Total fields found : %d", count_words(field));
    request.method = next_word(field.text, end);
    request.url = next_word(end_of(request.method), end);
    return skip_blanks(end_of(request.url)) != end;
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

// A field that only this layout has. The rest of the kinds in it are not used.
LineKind read_own_field(const LineOrigin& origin, int kind, LineText field,
                        RequestFields& request) {
    switch (kind) {
    case AL_DATE_AND_TIME:
        return read_date_and_time(origin, field, request);
    case AL_REQUEST_LINE:
        return read_request_line(origin, field, request);
    default:
        return LineKind::accepted;
    }
}

LineKind read_field(ParsingThread& thread, const LineOrigin& origin, int kind, LineText field,
                    RequestFields& request) {
    if (debug_wanted(4)) {
        log_field_value(origin, kind, field);
    }
    switch (read_common_field(origin, kind, field, request)) {
    case FieldOutcome::handled:
        break;
    case FieldOutcome::invalid_client_address:
        return LineKind::invalid_client_address;
    case FieldOutcome::dialect_specific:
        return read_own_field(origin, kind, field, request);
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
    LineKind kind = split_line(origin, line, *thread.quotes, fields);
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
    request.clear();
    const LineKind kind = read_line(thread, origin, line, request);
    if (kind == LineKind::accepted) {
        store_request(request, al_info_array_t[seq_no]);
    }
    return finish_line(thread, origin, {kind, request.time_stamp});
}
