#include "base/marked_line.h"
#include "tests/layers/expectation.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/field_splitter.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/replay_zone.h"
#include "tools/parse/url_key.h"

#include <cstdlib>
#include <ctime>
#include <string>

// A program that links the parsing of log lines and nothing above it: it splits a line and parses
// it.

namespace {

const std::string log_line =
    R"(192.0.2.17 - - [10/Oct/2025:13:55:36 +0200] 8599 "GET /shop/view.jsp?item=7 HTTP/1.1" 302 )"
    R"(70 "-" "Browser [1]" text/html "JSESSIONID=abc" - www.example.com "login.jsp")";

bool splits() {
    MarkedLine line(log_line, field_quote);
    LineText fields[max_al_fields];
    const int count = get_al_fields(line.text(), line.marks(), fields, max_al_fields);
    return gives(std::to_string(count), "15") && gives(fields[9].text, "Browser [1]");
}

bool parses() {
    MarkedLine line(log_line, field_quote);
    ParsingThread thread;
    thread.quotes = &line.marks();
    alInfo request = {};
    if (parse_al_line(thread, &request, line.text(), "access_log", 0, 1) != 0) {
        return gives("refused", "accepted");
    }
    find_counted_url(request);
    RequestRows rows(1);
    thread.interner.add("session", {request.method, request.host_ip, counted_url(request)}, rows);
    thread.interner.finish(rows);
    return gives(request.method, "GET") && gives(request.url, "/shop/view.jsp?item=7") &&
           gives(std::string(counted_url(request)), "/shop/view.jsp?") &&
           gives(request.host_ip, "www.example.com") &&
           gives(request.redirect_url, "/shop/login.jsp") &&
           gives(request.cookies, "JSESSIONID=abc") &&
           gives(std::to_string(request.time_stamp), "1760097336") &&
           gives(std::to_string(request.response_code), "302") &&
           gives(std::string(UrlKey(thread.interner.texts().urls.text(rows[0].url)).url),
                 "/shop/view.jsp?");
}

bool refuses() {
    MarkedLine line("192.0.2.17 - - [10/Oct/2025:13:55:36 +0200", field_quote);
    ParsingThread thread;
    thread.quotes = &line.marks();
    alInfo request = {};
    const int outcome = parse_al_line(thread, &request, line.text(), "access_log", 0, 1);
    return gives(std::to_string(outcome), "-1") &&
           gives(std::to_string(thread.counters.bad_req), "1");
}

} // namespace

int main() {
    setenv("TZ", "UTC", 1);
    tzset();
    replay_timezone = 0;
    ignore_query_flag = 1;
    set_default_field_positions();
    validate_al_format();
    return splits() && parses() && refuses() ? 0 : 1;
}
