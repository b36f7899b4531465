#include "companions/doctor/init/log_format.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace {

// The fields of a layout as a text, in the order of their kinds: "CLIENT_IP 1, STATUS_CODE 6".
std::string fields_of(const LogLayout& layout) {
    std::string text;
    for (int kind = 0; kind < al_field_kind_count; ++kind) {
        if (layout.has(static_cast<FieldKind>(kind))) {
            text += (text.empty() ? "" : ", ") + std::string(al_required_fields[kind].name) + " " +
                    std::to_string(layout.positions[static_cast<size_t>(kind)]);
        }
    }
    return text;
}

bool has_finding(const FormatReading& reading, const std::string& id) {
    return std::ranges::any_of(reading.findings,
                               [&](const Finding& finding) { return finding.id == id; });
}

struct Row {
    const char* what;
    const char* format;
    const char* fields;
};

constexpr Row rows[] = {
    {"common", "%h %l %u %t \"%r\" %>s %b",
     "CLIENT_IP 1, DATE_AND_TIME 4, REQUEST_LINE 5, STATUS_CODE 6"},
    {"name of a format", "vhost_combined",
     "CLIENT_IP 2, DATE_AND_TIME 5, REQUEST_LINE 6, STATUS_CODE 7, HOST_HEADER 1"},
    {"as it stands in the configuration",
     R"(LogFormat "%h %l %u %t \"%r\" %>s %b \"%{Cookie}i\" \"%{Set-Cookie}o\"" replay)",
     "CLIENT_IP 1, DATE_AND_TIME 4, REQUEST_LINE 5, STATUS_CODE 6, REQUEST_COOKIE 8, SET_COOKIE 9"},
    {"in the quotes of the configuration", R"("%a %t \"%r\" %>s")",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
    {"headers in any case, microseconds",
     R"(%t "%r" %>s "%{cookie}i" "%{HOST}i" "%{location}o" %D)",
     "DATE_AND_TIME 1, REQUEST_LINE 2, STATUS_CODE 3, REQUEST_COOKIE 4, HOST_HEADER 5, LOCATION 6, "
     "RESPONSE_TIME_USEC 7"},
    {"units of the response time", R"(%h %t "%r" %>s %{ms}T %{us}T %T)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4, RESPONSE_TIME_USEC 6"},
    {"the status that the client got", R"(%h %t "%r" %s %>s)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 5"},
    {"conditions on the status", R"(%h %t "%r" %!200,304,302>s)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
    {"the address is better than a name", R"(%h %a %t "%r" %>s)",
     "CLIENT_IP 2, DATE_AND_TIME 3, REQUEST_LINE 4, STATUS_CODE 5"},
    {"a request line of parts", R"(%h %t "%m %U%q %H" %>s)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
    {"a time in quotes, written by a form", R"(%h "%{%d/%b/%Y:%H:%M:%S %z}t" "%r" %>s)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
    {"a cookie with its name", R"(%t "%r" %>s "JSESSIONID=%{JSESSIONID}C")",
     "DATE_AND_TIME 1, REQUEST_LINE 2, STATUS_CODE 3, REQUEST_COOKIE 4"},
    {"separate fields", R"(%{%Y-%m-%d}t %{%T}t %m %U%q %>s %a)",
     "CLIENT_IP 6, STATUS_CODE 5, DATE 1, TIME 2, METHOD 3, URL_QUERY 4"},
    {"an unquoted header behind what is needed", R"(%h %t "%r" %>s %{User-Agent}i %{Cookie}i)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
    {"nginx",
     R"(log_format main '$remote_addr - $remote_user [$time_local] "$request" '
        '$status $body_bytes_sent "$http_referer" "$http_user_agent" "$http_cookie" '
        '"$sent_http_set_cookie" "$http_host" $request_time';)",
     "CLIENT_IP 1, DATE_AND_TIME 4, REQUEST_LINE 5, STATUS_CODE 6, REQUEST_COOKIE 10, SET_COOKIE "
     "11, HOST_HEADER 12, RESPONSE_TIME 13"},
    {"nginx with an option",
     R"(log_format main escape=default '$remote_addr [$time_local] "$request" $status';)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
    {"nginx, the string alone, braces", R"(${host} $remote_addr [$time_local] "$request" $status)",
     "CLIENT_IP 2, DATE_AND_TIME 3, REQUEST_LINE 4, STATUS_CODE 5, HOST_HEADER 1"},
    {"nginx, parts of the request",
     R"($remote_addr [$time_local] "$request_method $request_uri $server_protocol" $status)",
     "CLIENT_IP 1, DATE_AND_TIME 2, REQUEST_LINE 3, STATUS_CODE 4"},
};

} // namespace

TEST(LogFormat, GivesTheFieldsTheirPlaces) {
    for (const Row& row : rows) {
        EXPECT_EQ(fields_of(read_log_format(row.format).layout), row.fields) << row.what;
    }
}

TEST(LogFormat, SaysWhatTheToolCannotRead) {
    struct Refusal {
        const char* format;
        const char* id;
    };
    constexpr Refusal refusals[] = {
        {R"(%h %>s "%r")", "no-time"},
        {R"(%h %t %>s)", "no-request"},
        {R"(%h %t "%r")", "no-status"},
        {R"(%t "%r" %>s)", "no-session"},
        {R"(%h %t %r %>s)", "format-not-quoted"},
        {R"(%h %t "%r" %>s)", "headers-not-logged"},
        {R"(%h %{sec}t "%r" %>s)", "unreadable-time"},
        {R"($remote_addr $time_iso8601 "$request" $status)", "unreadable-time"},
        {R"($remote_addr [$time_local] "$request" $status $cookie_sid)", "cookie-without-name"},
        {R"(%h %t "%r" %>s %{ms}T)", "unreadable-response-time"},
        {R"(%h %t "%r"%>s)", "format-not-closed"},
        {R"(log_format json escape=json '{"time":"$time_iso8601","request":"$request"}';)",
         "json-log"},
    };
    for (const Refusal& refusal : refusals) {
        EXPECT_TRUE(has_finding(read_log_format(refusal.format), refusal.id)) << refusal.format;
    }
}

TEST(LogFormat, KnowsWhichServersLogARequestWhenItIsDone) {
    EXPECT_FALSE(read_log_format("combined").layout.logs_when_done);
    EXPECT_TRUE(read_log_format(R"(%h "%{end:%d/%b/%Y:%T %z}t" "%r" %>s)").layout.logs_when_done);
    EXPECT_TRUE(
        read_log_format(R"($remote_addr [$time_local] "$request" $status)").layout.logs_when_done);
}
