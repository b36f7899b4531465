#include "tools/parse/request_fields.h"

#include "base/logs.h"
#include "base/short_text.h"
#include "tools/config/field_layout.h"
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

constexpr int64_t second_usec = 1'000'000;

// Of a number of seconds, what six digits after its point say.
int64_t fraction_in_usec(const char* seconds) {
    const char* digit = seconds + std::strspn(seconds, "0123456789");
    int64_t usec = 0;
    if (*digit == '.') {
        for (int64_t unit = second_usec / 10; unit > 0 && *++digit >= '0' && *digit <= '9';
             unit /= 10) {
            usec += unit * (*digit - '0');
        }
    }
    return usec;
}

// `usec`: beyond the seconds.
void set_response_time(RequestFields& request, LineText field, int64_t seconds, int64_t usec) {
    request.response_time = static_cast<int>(std::clamp<int64_t>(seconds, 0, INT_MAX));
    request.response_usec = static_cast<uint32_t>(usec) & 0x7fffffff;
    request.has_response_time = !is_dash(field);
}

} // namespace

LineKind report_unusable_fields(const LineOrigin& origin, int count) {
    report_bad_line(origin, "Invalid line at line %ld in file '%s'");
    return count == -1 ? LineKind::unclosed_field : LineKind::too_few_fields;
}

void log_field_value(const LineOrigin& origin, int kind, LineText field) {
    const bool is_skipped = kind == AL_CLIENT_IP && session_mode != SESSION_MODE_CLIENT_IP;
    if (kind != AL_STATUS_CODE && !is_skipped) {
        DEBUG_LOG(4, origin.fname, "%s value :'%s'", al_required_fields[kind].name, field.text);
    }
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

void read_number_of_seconds(LineText field, RequestFields& request) {
    set_response_time(request, field, std::atoi(field.text), fraction_in_usec(field.text));
}

void read_number_of_microseconds(LineText field, RequestFields& request) {
    const int64_t usec = std::max<int64_t>(std::atoll(field.text), 0);
    set_response_time(request, field, usec / second_usec, usec % second_usec);
}

int read_any_status_code(LineText field) {
    return static_cast<int>(std::strtol(field.text, nullptr, 10));
}

void report_bad_line(const LineOrigin& origin, const char* message) {
    if (debug_wanted(2)) {
        debug_log(2, origin.fname, message, origin.line_num, origin.file_name);
    }
}

LineKind report_out_of_period(const LineOrigin& origin, LineKind kind) {
    DEBUG_LOG(2, origin.fname,
              "Request doesn't come in replay period range , This request will be ignored");
    return kind;
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

void resolve_logged_location(ParsingThread& thread, LineText url, LineText& location) {
    if (!is_relative_location(location.text)) {
        return;
    }
    std::string& resolved = thread.resolved_location;
    make_absolute_from_relative_url(location.text, {url.text, url.size}, resolved);
    location = {resolved.data(), resolved.size()};
}

void store_request(const RequestFields& request, alInfo& record) {
    record.time_stamp = request.time_stamp;
    record.response_code = request.response_code;
    record.client_ip = request.client_ip;
    const size_t method_size = std::min(request.method.size, size_t{max_method_length});
    ShortText(request.method.text, method_size).store(record.method);
    record.jsession_id[0] = '\0';
    record.akaau_id[0] = '\0';
    record.url = request.url.text;
    record.url[request.url.size] = '\0'; // it may be a word of a field
    record.url_len = static_cast<int>(request.url.size);
    record.ignore_query_flag = 0;
    record.redirect_url = request.location.text;
    record.host_ip = request.host_or_none().data();
    record.cookies = request.cookies.text;
    record.set_cookies = request.set_cookies.text;
}
