#include "base/logs.h"
#include "tools/config/field_layout.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/request_fields.h"
#include "tools/parse/timestamps.h"

#include <string>

namespace {

struct SeparateFields {
    LineText date = {};
    LineText time = {};
    LineText query_string = {};
    bool url_holds_query = false;
};

// Fields that only this layout has. The rest of the kinds in it are not used.
void read_own_field(int kind, LineText field, RequestFields& request, SeparateFields& separate) {
    switch (kind) {
    case AL_DATE:
        separate.date = field;
        break;
    case AL_TIME:
        separate.time = field;
        break;
    case AL_METHOD:
        request.method = field;
        break;
    case AL_URL:
        request.url = field;
        break;
    case AL_QUERY_STRING:
        separate.query_string = field;
        break;
    case AL_URL_QUERY:
        request.url = field;
        separate.url_holds_query = true;
        break;
    default:
        break;
    }
}

bool is_complete(const RequestFields& request, const SeparateFields& separate) {
    const bool has_url = separate.url_holds_query ||
                         (request.url.text != nullptr && separate.query_string.text != nullptr);
    return has_url && separate.date.text != nullptr && separate.time.text != nullptr;
}

void join_query_string(ParsingThread& thread, const LineOrigin& origin, RequestFields& request,
                       LineText query_string) {
    if (query_string.text == nullptr || is_dash(query_string)) {
        return;
    }
    DEBUG_LOG(2, origin.fname, "Allocating memory for %s. size = %d", "URL",
              static_cast<int>(request.url.size + query_string.size + 2));
    std::string& joined = thread.joined_url;
    joined.assign(request.url.text, request.url.size);
    joined.append(1, '?').append(query_string.text, query_string.size);
    request.url = {joined.data(), joined.size()};
}

LineKind read_fields(const LineOrigin& origin, const LineText fields[], RequestFields& request,
                     SeparateFields& separate) {
    for (const PresentField& present : fields_to_read()) {
        const int kind = present.kind;
        const LineText field = fields[present.index];
        if (debug_wanted(4)) {
            log_field_value(origin, kind, field);
        }
        switch (read_common_field(origin, kind, field, request)) {
        case FieldOutcome::handled:
            break;
        case FieldOutcome::invalid_client_address:
            return LineKind::invalid_client_address;
        case FieldOutcome::dialect_specific:
            read_own_field(kind, field, request, separate);
        }
    }
    return LineKind::accepted;
}

LineKind read_time(const LineOrigin& origin, const SeparateFields& separate,
                   RequestFields& request) {
    const time_t time_stamp = convert_into_second_iis(separate.date, separate.time);
    if (time_stamp == -1) {
        report_bad_line(origin, "Date/Time filed is invalid at line %ld in file '%s'");
        return LineKind::invalid_time;
    }
    request.time_stamp = static_cast<uint64_t>(time_stamp);
    return test_replay_period(origin, request);
}

LineKind read_line(ParsingThread& thread, const LineOrigin& origin, LineText line,
                   RequestFields& request) {
    DEBUG_LOG(4, origin.fname, "Processing line num - %ld of file - %s", origin.line_num,
              origin.file_name);
    LineText fields[max_al_fields];
    SeparateFields separate;
    LineKind kind = split_line(origin, line, *thread.quotes, fields);
    if (kind == LineKind::accepted) {
        kind = read_fields(origin, fields, request, separate);
    }
    if (kind == LineKind::accepted && !is_complete(request, separate)) {
        report_bad_line(origin, "Required fields are missing  at line %ld in file '%s'");
        kind = LineKind::missing_fields;
    }
    if (kind == LineKind::accepted) {
        kind = read_time(origin, separate, request);
    }
    if (kind == LineKind::accepted) {
        join_query_string(thread, origin, request, separate.query_string);
        resolve_location(thread, request.url, request.location);
    }
    return kind;
}

int parse_separate_fields(ParsingThread& thread, const LineOrigin& origin, alInfo& record,
                          LineText line) {
    RequestFields& request = thread.fields;
    request.clear();
    const LineKind kind = read_line(thread, origin, line, request);
    if (kind == LineKind::accepted) {
        store_request(request, record);
    }
    return finish_line(thread, origin, {kind, request.time_stamp});
}

} // namespace

int parse_al_line_iis(ParsingThread& thread, alInfo* al_info_array_t, LineText line,
                      const char* file_name, uint64_t seq_no, int64_t line_num) {
    const LineOrigin origin = {"parse_al_line_iis", file_name, line_num};
    return parse_separate_fields(thread, origin, al_info_array_t[seq_no], line);
}

int parse_al_line_weblogic(ParsingThread& thread, alInfo* al_info_array_t, LineText line,
                           const char* file_name, uint64_t seq_no, int64_t line_num) {
    const LineOrigin origin = {"parse_al_line_weblogic", file_name, line_num};
    return parse_separate_fields(thread, origin, al_info_array_t[seq_no], line);
}
