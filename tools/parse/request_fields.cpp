#include "tools/parse/request_fields.h"

#include "base/logs.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/client_address.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/relative_location.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void log_text_allocation(const LineOrigin& origin, const char* name, LineText field) {
    DEBUG_LOG(2, origin.fname, "Allocating memory for %s. size = %d", name,
              static_cast<int>(field.size + 1));
}

// What strtol gives; three digits, as every status code has, without its help.
int read_status_code(LineText field) {
    const auto digit = [&](size_t at) { return static_cast<unsigned>(field.text[at] - '0'); };
    if (field.size == 3 && digit(0) <= 9 && digit(1) <= 9 && digit(2) <= 9) {
        return static_cast<int>(digit(0) * 100 + digit(1) * 10 + digit(2));
    }
    return static_cast<int>(std::strtol(field.text, nullptr, 10));
}

FieldOutcome read_client_ip(const LineOrigin& origin, LineText field, RequestFields& request) {
    if (session_mode != SESSION_MODE_CLIENT_IP) {
        return FieldOutcome::handled;
    }
    if (is_dash(field)) {
        DEBUG_LOG(2, origin.fname,
                  "Client ip not found in line num %d in file %s, setting 127.0.0.1",
                  static_cast<int>(origin.line_num), origin.file_name);
        return FieldOutcome::handled; // address 0, a request without a session
    }
    if (zv_ip_addr(field.text, &request.client_ip) == -1) {
        DEBUG_LOG(2, origin.fname, "Invalid client ip %s at line %ld in file %s", field.text,
                  origin.line_num, origin.file_name);
        return FieldOutcome::invalid_client_address;
    }
    return FieldOutcome::handled;
}

int non_negative_seconds(int64_t seconds) {
    return static_cast<int>(std::clamp<int64_t>(seconds, 0, INT_MAX));
}

} // namespace

std::span<const PresentField> fields_to_read() {
    return debug_wanted(2) ? std::span(present_fields, static_cast<size_t>(present_field_count))
                           : std::span(read_fields, static_cast<size_t>(read_field_count));
}

bool is_dash(LineText field) {
    return field.size == 1 && field.text[0] == '-';
}

LineKind split_line(const LineOrigin& origin, LineText line, MarkCursor& quotes,
                    LineText fields[]) {
    const int count = get_al_fields(line, quotes, fields, max_al_fields);
    if (count >= max_required_field_position) {
        return LineKind::accepted;
    }
    report_bad_line(origin, "Invalid line at line %ld in file '%s'");
    return count == -1 ? LineKind::unclosed_field : LineKind::too_few_fields;
}

void log_field_value(const LineOrigin& origin, int kind, LineText field) {
    const bool is_skipped = kind == AL_CLIENT_IP && session_mode != SESSION_MODE_CLIENT_IP;
    if (kind != AL_STATUS_CODE && !is_skipped) {
        DEBUG_LOG(4, origin.fname, "%s value :'%s'", al_required_fields[kind].name, field.text);
    }
}

FieldOutcome read_common_field(const LineOrigin& origin, int kind, LineText field,
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
        request.response_time = non_negative_seconds(std::atoi(field.text));
        break;
    case AL_RESPONSE_TIME_USEC:
        request.response_time = non_negative_seconds(std::atoll(field.text) / 1'000'000);
        break;
    default:
        return FieldOutcome::dialect_specific;
    }
    return FieldOutcome::handled;
}

void report_bad_line(const LineOrigin& origin, const char* message) {
    if (debug_wanted(2)) {
        debug_log(2, origin.fname, message, origin.line_num, origin.file_name);
    }
}

LineKind test_replay_period(const LineOrigin& origin, RequestFields& request) {
    if (consider_response_time != 0) {
        request.time_stamp -= static_cast<uint64_t>(request.response_time);
    }
    const bool is_early = start_time_stamp != 0 && request.time_stamp < start_time_stamp;
    const bool is_late = end_time_stamp != 0 && request.time_stamp > end_time_stamp;
    if (!is_early && !is_late) {
        return LineKind::accepted;
    }
    DEBUG_LOG(2, origin.fname,
              "Request doesn't come in replay period range , This request will be ignored");
    return is_early ? LineKind::before_period : LineKind::after_period;
}

int finish_line(ParsingThread& thread, const LineOrigin& origin, LineOutcome outcome) {
    thread.outcome = outcome;
    switch (outcome.kind) {
    case LineKind::accepted:
        DEBUG_LOG(4, origin.fname, "Successfully parsed line:%ld from File:%s", origin.line_num,
                  origin.file_name);
        return 0;
    case LineKind::before_period:
    case LineKind::after_period:
        ++thread.counters.time_filtered_req;
        return -1;
    default:
        ++thread.counters.bad_req;
        return -1;
    }
}

void resolve_location(ParsingThread& thread, LineText url, LineText& location) {
    if (location.text == nullptr || !is_relative_location(location.text)) {
        return;
    }
    std::string& resolved = thread.resolved_location;
    make_absolute_from_relative_url(location.text, {url.text, url.size}, resolved);
    location = {resolved.data(), resolved.size()};
}

void store_request(const RequestFields& request, alInfo& record) {
    record = {};
    record.time_stamp = request.time_stamp;
    record.response_code = request.response_code;
    record.client_ip = request.client_ip;
    if (request.method.size != 0) {
        std::memcpy(record.method, request.method.text,
                    std::min(request.method.size, size_t{max_method_length}));
    }
    record.url = request.url.text;
    record.url[request.url.size] = '\0'; // it may be a word of a field
    record.url_len = static_cast<int>(request.url.size);
    record.redirect_url = request.location.text;
    record.host_ip = request.host.text == nullptr ? na_string : request.host.text;
    record.cookies = request.cookies.text;
    record.set_cookies = request.set_cookies.text;
}
