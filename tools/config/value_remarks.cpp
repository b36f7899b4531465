#include "tools/config/value_remarks.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* line_spacing = " \t\r";

const char* skip_spacing(const char* text) {
    return text + std::strspn(text, line_spacing);
}

// The digits of a number after its sign.
std::string_view digits_between(const char* text, const char* end) {
    text += std::strspn(text, " \t\n\v\f\r");
    text += *text == '-' || *text == '+' ? 1 : 0;
    return {text, static_cast<size_t>(end - text)};
}

} // namespace

bool skip_comment(const LinePlace& place, LineText line) {
    if (line.text[0] == '#') {
        observe_line(place, ObservedKind::comment, line.text);
        return true;
    }
    if (line.size == 0) {
        observe_line(place, ObservedKind::empty_line, "");
        return true;
    }
    return false;
}

void remark_on_length(const LinePlace& place, LineText line, size_t line_size) {
    if (line.size + 1 == line_size) {
        observe_line(place, ObservedKind::line_cut, line.text);
    }
}

void remark_on_separator(const LinePlace& place, const char* separator) {
    if (line_observer != nullptr && *separator != '\0' &&
        std::strchr(line_spacing, *separator) == nullptr) {
        observe_line(place, ObservedKind::separator_skipped, separator);
    }
}

void remark_on_rest(const LinePlace& place, const char* rest) {
    if (line_observer != nullptr && *skip_spacing(rest) != '\0') {
        observe_line(place, ObservedKind::text_not_read, rest);
    }
}

void remark_on_number(const LinePlace& place, const char* text, int base, long lowest,
                      long highest) {
    if (line_observer == nullptr) {
        return;
    }
    char* end;
    errno = 0;
    const long number = std::strtol(text, &end, base);
    if (end == text) {
        const bool is_missing = *skip_spacing(text) == '\0';
        observe_line(place, is_missing ? ObservedKind::value_missing : ObservedKind::not_a_number,
                     text);
        return;
    }
    if (errno == ERANGE || number < lowest || number > highest) {
        observe_line(place, ObservedKind::number_out_of_range, text);
    }
    const std::string_view digits = digits_between(text, end);
    if (base == 0 && digits.size() > 1 && digits[0] == '0') {
        observe_line(place, ObservedKind::number_not_decimal, text);
    }
    remark_on_rest(place, end);
}

void remark_on_unknown(const LinePlace& place, const char* value) {
    const bool is_missing = line_observer != nullptr && *skip_spacing(value) == '\0';
    observe_line(place, is_missing ? ObservedKind::value_missing : ObservedKind::value_unknown,
                 value);
}

void remark_on_spacing(const LinePlace& place, std::string_view value) {
    if (line_observer != nullptr && value.find_first_of("\t\r") != std::string_view::npos) {
        observe_line(place, ObservedKind::spacing_kept, value);
    }
}

void remark_on_columns(const LinePlace& place, LineText line, const char* last_column,
                       const char* delimiter) {
    if (line_observer == nullptr) {
        return;
    }
    const char* end = last_column + std::strlen(last_column);
    if (end < line.text + line.size) {
        ++end; // past the terminator that has replaced a delimiter
    }
    remark_on_rest(place, end + std::strspn(end, delimiter));
}
