#pragma once

#include "companions/doctor/init/format_text.h"

#include <string>
#include <vector>

// What a directive of a log format writes into the log.
enum class LogContent {
    text, // of the format itself
    client_address,
    date_and_time, // as the tool reads it, dd/Mmm/yyyy:hh:mm:ss and a zone
    date,          // yyyy-mm-dd
    time,          // hh:mm:ss
    unreadable_time,
    request_line,
    method,
    url_path,
    url_query,
    query_string,
    query_with_mark, // begins with the "?"
    protocol,
    status,
    request_cookie,
    single_cookie, // value of one cookie, without its name
    set_cookie,
    host,
    port,
    location,
    seconds,      // response time; whole ones, or with a fraction
    microseconds, // likewise
    other_unit,   // a response time in a unit that the tool does not have
    unknown       // nothing that the tool has a use for
};

struct FormatPiece {
    LogContent content = LogContent::unknown;
    std::string source;           // the directive, or the text itself
    std::string name = {};        // of a single cookie
    bool may_hold_blanks = false; // so that it has to be quoted
    bool brings_brackets = false; // writes brackets around itself
    int preference = 0; // of two pieces with one content the one with the greater preference counts
    bool logs_when_done = false; // the server writes its time when the response is done
};

// Takes a format apart, in its order. Texts between directives are pieces, too.
std::vector<FormatPiece> split_format(const FormatText& format);
