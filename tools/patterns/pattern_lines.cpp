#include "tools/patterns/pattern_lines.h"

#include "base/allocation.h"
#include "base/input_file.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/config/value_remarks.h"
#include "tools/patterns/pattern_columns.h"
#include "tools/patterns/pattern_regex.h"

#include <cstdio>
#include <cstring>
#include <strings.h>

namespace {

bool skip_header(const LinePlace& place, LineText line) {
    const bool is_header = place.line_num == 1 && strncasecmp(line.text, "status", 6) == 0;
    if (is_header) {
        observe_line(place, ObservedKind::column_header, line.text);
    }
    return is_header;
}

void remark_on_empty_columns(const LinePlace& place, const char* line) {
    if (line_observer != nullptr && (line[0] == '|' || std::strstr(line, "||") != nullptr)) {
        observe_line(place, ObservedKind::empty_column, line);
    }
}

void remark_on_fields(const LinePlace& place, const PatternFields& fields) {
    if (line_observer != nullptr && std::strlen(fields.method) > max_method_length) {
        observe_line(place, ObservedKind::text_cut, fields.method);
    }
    remark_on_spacing(place, fields.pattern);
}

char* shared_na() {
    return const_cast<char*>(na_string);
}

} // namespace

bool equal_ignoring_case(const char* a, const char* b) {
    return strcasecmp(a, b) == 0;
}

bool read_pattern_lines(const char* path, void (*add_line)(const LinePlace& place, LineText line)) {
    TextFile file(open_input_file(path), path, pattern_line_size);
    LinePlace place = {path, 0};
    if (!file.is_open()) {
        observe_line(place, ObservedKind::file_not_opened, "");
        return false;
    }
    LineText line;
    while (file.next(line)) {
        ++place.line_num;
        remark_on_length(place, line, pattern_line_size);
        if (!skip_comment(place, line) && !skip_header(place, line)) {
            read_observed_line(place, [&] { add_line(place, line); });
        }
    }
    return true;
}

bool split_pattern_line(const LinePlace& place, LineText line, char* fields[], int column_count) {
    constexpr const char* delimiter = "|";
    remark_on_empty_columns(place, line.text);
    int count;
    get_tokens1(line.text, fields, delimiter, column_count, &count);
    if (count < column_count) {
        observe_line(place, ObservedKind::too_few_columns, line.text);
        return false;
    }
    remark_on_columns(place, line, fields[count - 1], delimiter);
    return true;
}

bool is_active(const char* status) {
    return equal_ignoring_case(status, "active");
}

bool skip_inactive(const LinePlace& place, const char* status) {
    if (is_active(status)) {
        return false;
    }
    observe_line(place, ObservedKind::inactive, status);
    return true;
}

bool fill_pattern(const LinePlace& place, const PatternTable& table, const PatternFields& fields,
                  UPInfo& entry) {
    remark_on_fields(place, fields);
    if (zvr_compile_regex(fields.pattern, 1, &entry.url_ptrn_regex) != 0) {
        observe_line(place, ObservedKind::pattern_not_compiled, fields.pattern);
        return false;
    }
    const auto is_na = [](const char* field) { return equal_ignoring_case(field, na_string); };
    entry.url_ptrn_string = copy_text(table.name, fields.pattern);
    std::snprintf(entry.method, sizeof entry.method, "%s",
                  is_na(fields.method) ? na_string : fields.method);
    entry.host = is_na(fields.host) ? shared_na() : copy_text(table.name, fields.host);
    entry.txn_name = shared_na();
    return true;
}
