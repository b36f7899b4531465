#pragma once

#include <string>
#include <string_view>

// A field of a CSV row (RFC 4180): in quotes, each of its own doubled, where it must be.
inline std::string csv_field(std::string_view text) {
    if (text.find_first_of("\",\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string field = "\"";
    for (const char c : text) {
        field.append(c == '"' ? 2 : 1, c);
    }
    return field + '"';
}
