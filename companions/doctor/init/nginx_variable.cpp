#include "companions/doctor/init/nginx_variable.h"

#include <string>

namespace {

struct Variable {
    std::string_view name;
    LogContent content;
    int preference = 0;
    bool may_hold_blanks = false;
};

constexpr Variable variables[] = {
    {"remote_addr", LogContent::client_address, 2},
    {"realip_remote_addr", LogContent::client_address, 1},
    {"http_x_real_ip", LogContent::client_address, 0},
    {"http_x_forwarded_for", LogContent::client_address, 0, true},
    {"time_local", LogContent::date_and_time, 0, true},
    {"time_iso8601", LogContent::unreadable_time},
    {"msec", LogContent::unreadable_time},
    {"request", LogContent::request_line, 0, true},
    {"request_method", LogContent::method},
    {"request_uri", LogContent::url_query},
    {"uri", LogContent::url_path},
    {"document_uri", LogContent::url_path},
    {"args", LogContent::query_string},
    {"query_string", LogContent::query_string},
    {"server_protocol", LogContent::protocol},
    {"status", LogContent::status},
    {"http_cookie", LogContent::request_cookie, 0, true},
    {"sent_http_set_cookie", LogContent::set_cookie, 1, true},
    {"upstream_http_set_cookie", LogContent::set_cookie, 0, true},
    {"http_host", LogContent::host, 3},
    {"host", LogContent::host, 2},
    {"server_name", LogContent::host, 1},
    {"server_port", LogContent::port},
    {"sent_http_location", LogContent::location, 1},
    {"upstream_http_location", LogContent::location, 0},
    {"request_time", LogContent::seconds},
    {"upstream_response_time", LogContent::unknown, 0, true},
    {"request_body", LogContent::unknown, 0, true},
};

bool is_name_character(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The name behind the sign, with or without braces, and the length of all of it; empty and 0 when
// there is none.
std::string_view read_name(std::string_view text, size_t& length) {
    const size_t begin = text.starts_with("${") ? 2 : 1;
    size_t end = begin;
    while (end < text.size() && is_name_character(text[end])) {
        ++end;
    }
    const bool is_closed = begin == 1 || (end < text.size() && text[end] == '}');
    length = end == begin || !is_closed ? 0 : end + (begin - 1);
    return length == 0 ? std::string_view() : text.substr(begin, end - begin);
}

FormatPiece piece_of(const Variable& variable) {
    FormatPiece piece;
    piece.content = variable.content;
    piece.preference = variable.preference;
    piece.may_hold_blanks = variable.may_hold_blanks;
    piece.logs_when_done = variable.content == LogContent::date_and_time;
    return piece;
}

FormatPiece piece_of_name(std::string_view name) {
    for (const Variable& variable : variables) {
        if (variable.name == name) {
            return piece_of(variable);
        }
    }
    FormatPiece piece;
    if (name.starts_with("cookie_")) {
        piece.content = LogContent::single_cookie;
        piece.name = name.substr(7);
    }
    // Headers hold what clients and servers like.
    piece.may_hold_blanks = name.starts_with("http_") || name.starts_with("sent_http_") ||
                            name.starts_with("upstream_http_");
    return piece;
}

} // namespace

size_t read_nginx_variable(std::string_view text, FormatPiece& piece) {
    size_t length = 0;
    const std::string_view name = read_name(text, length);
    if (length != 0) {
        piece = piece_of_name(name);
    }
    return length;
}
