#include "companions/doctor/init/apache_directive.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <strings.h>

namespace {

// A directive taken apart: %[!][status,...][<|>][{parameter}][^]letter[letter]
struct Directive {
    std::string letters;
    std::string parameter = "";
    bool is_final = false; // ">": of the last of internal redirects
};

constexpr int usual_preference = 2;

bool is_same(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool is_letter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

// Reads what may stand between the percent sign and the letter. Returns the letter's place, or
// npos.
size_t read_modifiers(std::string_view text, Directive& directive) {
    size_t at = 1;
    while (at < text.size()) {
        if (text[at] == '{') {
            const size_t end = text.find('}', at);
            if (end == std::string_view::npos) {
                return end;
            }
            directive.parameter = text.substr(at + 1, end - at - 1);
            at = end;
        } else if (text[at] == '>') {
            directive.is_final = true;
        } else if (std::string_view("<!,").find(text[at]) == std::string_view::npos &&
                   std::isdigit(static_cast<unsigned char>(text[at])) == 0) {
            return at;
        }
        ++at;
    }
    return std::string_view::npos;
}

size_t read_directive(std::string_view text, Directive& directive) {
    const size_t at = read_modifiers(text, directive);
    if (at == std::string_view::npos) {
        return 0;
    }
    const size_t length = text[at] == '^' ? 3 : 1; // as %^ti, trailers
    if (at + length > text.size() || !is_letter(text[at + length - 1])) {
        return 0;
    }
    directive.letters = text.substr(at, length);
    return at + length;
}

struct Header {
    std::string_view name;
    LogContent content;
    int preference;
};

constexpr Header request_headers[] = {
    {"Cookie", LogContent::request_cookie, usual_preference},
    {"Host", LogContent::host, usual_preference},
    {"X-Forwarded-Host", LogContent::host, 1},
    {"X-Forwarded-For", LogContent::client_address, 1},
    {"X-Real-IP", LogContent::client_address, 1},
};

constexpr Header response_headers[] = {
    {"Set-Cookie", LogContent::set_cookie, usual_preference},
    {"Location", LogContent::location, usual_preference},
};

template <size_t count>
FormatPiece header_piece(const Header (&headers)[count], const std::string& name) {
    FormatPiece piece;
    piece.may_hold_blanks = !is_same(name, "Host");
    for (const Header& header : headers) {
        if (is_same(header.name, name)) {
            piece.content = header.content;
            piece.preference = header.preference;
        }
    }
    return piece;
}

// The date, and the time with its zone, as the tool reads them.
bool is_usual_time(std::string_view form) {
    return form == "%d/%b/%Y:%H:%M:%S %z" || form == "%d/%b/%Y:%T %z" ||
           form == "%d/%h/%Y:%H:%M:%S %z" || form == "%d/%h/%Y:%T %z";
}

// Takes "begin:" or "end:" off a time's form; returns whether the time is that of the end.
bool take_moment(std::string_view& form) {
    const bool is_end = form.starts_with("end:") || form == "end";
    if (is_end) {
        form.remove_prefix(std::min<size_t>(form.size(), 4));
    } else if (form.starts_with("begin:") || form == "begin") {
        form.remove_prefix(std::min<size_t>(form.size(), 6));
    }
    return is_end;
}

FormatPiece time_piece(std::string_view form) {
    FormatPiece piece;
    piece.logs_when_done = take_moment(form);
    piece.may_hold_blanks = true;
    piece.brings_brackets = form.empty();
    if (form.empty() || is_usual_time(form)) {
        piece.content = LogContent::date_and_time;
        return piece;
    }
    piece.may_hold_blanks = form.find(' ') != std::string_view::npos;
    if (form == "%Y-%m-%d" || form == "%F") {
        piece.content = LogContent::date;
    } else if (form == "%H:%M:%S" || form == "%T") {
        piece.content = LogContent::time;
    } else {
        piece.content = LogContent::unreadable_time;
    }
    return piece;
}

LogContent response_time_content(std::string_view unit) {
    return unit.empty() || unit == "s" ? LogContent::seconds
           : unit == "us"              ? LogContent::microseconds
                                       : LogContent::other_unit;
}

FormatPiece piece_of(LogContent content, int preference = usual_preference) {
    FormatPiece piece;
    piece.content = content;
    piece.preference = preference;
    return piece;
}

FormatPiece quoted_piece(LogContent content) {
    FormatPiece piece = piece_of(content);
    piece.may_hold_blanks = true;
    return piece;
}

FormatPiece cookie_piece(const std::string& name) {
    FormatPiece piece = piece_of(LogContent::single_cookie);
    piece.name = name;
    return piece;
}

FormatPiece url_piece(const Directive& directive) {
    return piece_of(directive.letters == "U" ? LogContent::url_path : LogContent::query_with_mark);
}

FormatPiece read_letter(const Directive& directive) {
    if (directive.letters.size() != 1) {
        return quoted_piece(LogContent::unknown); // trailers, and what modules add
    }
    switch (directive.letters.front()) {
    case 'a':
        return piece_of(LogContent::client_address, 3); // %h may be a name
    case 'h':
        return piece_of(LogContent::client_address);
    case 't':
        return time_piece(directive.parameter);
    case 'r':
        return quoted_piece(LogContent::request_line);
    case 'm':
        return piece_of(LogContent::method);
    case 'U':
    case 'q':
        return url_piece(directive);
    case 'H':
        return piece_of(LogContent::protocol);
    case 's':
        return piece_of(LogContent::status, directive.is_final ? 3 : 1);
    case 'i':
        return header_piece(request_headers, directive.parameter);
    case 'o':
        return header_piece(response_headers, directive.parameter);
    case 'C':
        return cookie_piece(directive.parameter);
    case 'v':
    case 'V':
        return piece_of(LogContent::host, 0);
    case 'p':
        return piece_of(LogContent::port);
    case 'T':
        return piece_of(response_time_content(directive.parameter), 1);
    case 'D':
        return piece_of(LogContent::microseconds);
    case 'e':
    case 'f':
    case 'n':
        return quoted_piece(LogContent::unknown);
    default:
        return piece_of(LogContent::unknown);
    }
}

} // namespace

size_t read_apache_directive(std::string_view text, FormatPiece& piece) {
    if (text.starts_with("%%")) {
        piece = piece_of(LogContent::unknown);
        return 2;
    }
    Directive directive;
    const size_t length = read_directive(text, directive);
    if (length != 0) {
        piece = read_letter(directive);
    }
    return length;
}
