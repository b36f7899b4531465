#include "companions/doctor/init/log_format.h"

#include "base/failure.h"
#include "companions/doctor/init/line_trial.h"
#include "tests/companions/properties/layout_properties.h"

#include <algorithm>
#include <vector>

namespace {

// A part of a format, and what a server writes for it.
struct FormatPart {
    const char* format;
    const char* text;
};

const std::string request = "/a%20b?x=[1]";

constexpr FormatPart apache_parts[] = {
    {"%h", "10.0.0.1"},
    {"%l", "-"},
    {"%t", "[10/Oct/2000:13:55:36 -0700]"},
    {"\"%r\"", "\"PUT /a%20b?x=[1] HTTP/1.1\""},
    {"%>s", "207"},
    {"%b", "-"},
    {"%D", "1234"},
    {"%{ms}T", "1"},
    {"\"%{Referer}i\"", "\"http://x/\\\"y\\\" [z\""},
    {"\"%{Cookie}i\"", "\"a=1; sid=S1\""},
    {"\"%{Set-Cookie}o\"", "\"sid=S1; Path=/\""},
    {"%v:%p", "www.example.com:80"},
    {"\"%{Host}i\"", "\"www.example.com\""},
    {"[%{X}e] ", "[x] "},
};

constexpr FormatPart nginx_parts[] = {
    {"$remote_addr", "10.0.0.1"},
    {"-", "-"},
    {"[$time_local]", "[10/Oct/2000:13:55:36 -0700]"},
    {"\"$request\"", "\"PUT /a%20b?x=[1] HTTP/1.1\""},
    {"\"$request_method $request_uri $server_protocol\"", "\"PUT /a%20b?x=[1] HTTP/1.1\""},
    {"${status}", "207"},
    {"$request_time", "0.003"},
    {"\"$http_user_agent\"", "\"Mozilla/5.0 (\\x22\""},
    {"\"$http_cookie\"", "\"a=1; sid=S1\""},
    {"\"$http_host\"", "\"www.example.com\""},
    {"$msec", "971211336.1"},
};

bool has_errors(const Findings& findings) {
    return std::ranges::any_of(
        findings, [](const Finding& finding) { return finding.severity == Severity::error; });
}

// The layout is one that a run takes.
void expect_taken(const LogLayout& layout) {
    try {
        apply_layout(layout, layout.has(AL_REQUEST_COOKIE) ? "cookie" : "client_ip");
    } catch (const Failure& failure) {
        ADD_FAILURE() << failure.message;
    }
}

void expect_found(const FormatReading& reading, const std::string& line) {
    LineTrial trial(reading.layout);
    ASSERT_EQ(trial.parse(line), LineKind::accepted) << line;
    const alInfo& record = trial.request();
    EXPECT_EQ(std::string_view(record.method), "PUT") << line;
    EXPECT_EQ(std::string_view(record.url), request) << line;
    EXPECT_EQ(record.response_code, 207) << line;
    if (reading.layout.has(AL_REQUEST_COOKIE)) {
        EXPECT_EQ(std::string_view(record.cookies), "a=1; sid=S1") << line;
    }
    if (reading.layout.has(AL_HOST_HEADER)) {
        EXPECT_TRUE(std::string_view(record.host_ip).starts_with("www.example.com")) << line;
    }
}

template <typename Parts> void check_parts(Choices& choices, const Parts& parts) {
    std::string format;
    std::string line;
    for (size_t count = 1 + choices.below(12); count > 0; --count) {
        const FormatPart& part = choices.of(parts);
        const char* separator = format.empty() ? "" : " ";
        format += separator + std::string(part.format);
        line += separator + std::string(part.text);
    }
    SCOPED_TRACE(format);
    const FormatReading reading = read_log_format(format);
    if (!has_errors(reading.findings)) {
        expect_taken(reading.layout);
        expect_found(reading, line);
    }
}

} // namespace

void check_log_format(Choices& choices) {
    if (choices.one_in(2)) {
        choices.one_in(2) ? check_parts(choices, apache_parts) : check_parts(choices, nginx_parts);
        return;
    }
    const std::string start = choices.one_in(3)   ? "LogFormat "
                              : choices.one_in(2) ? "log_format "
                                                  : "";
    const std::string format = start + choices.rest("%$\"'\\[]{}<>! hrtsiouCTm^;x_\n\t", 60);
    const FormatReading reading = read_log_format(format);
    if (!has_errors(reading.findings)) {
        expect_taken(reading.layout);
    }
}
