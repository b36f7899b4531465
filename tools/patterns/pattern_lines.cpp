#include "tools/patterns/pattern_lines.h"

#include "base/allocation.h"
#include "base/text_file.h"
#include "tools/patterns/pattern_columns.h"
#include "tools/patterns/pattern_regex.h"

#include <cstdio>
#include <strings.h>

namespace {

bool is_header(LineText line) {
    return strncasecmp(line.text, "status", 6) == 0;
}

char* shared_na() {
    return const_cast<char*>(na_string);
}

} // namespace

bool equal_ignoring_case(const char* a, const char* b) {
    return strcasecmp(a, b) == 0;
}

bool read_pattern_lines(const char* path, void (*add_line)(char* line, int line_num)) {
    TextFile file(path, pattern_line_size);
    if (!file.is_open()) {
        return false;
    }
    LineText line;
    for (int line_num = 1; file.next(line); ++line_num) {
        if (line.size != 0 && line.text[0] != '#' && !(line_num == 1 && is_header(line))) {
            add_line(line.text, line_num);
        }
    }
    return true;
}

bool is_active(const char* status) {
    return equal_ignoring_case(status, "active");
}

bool fill_pattern(const PatternTable& table, const PatternFields& fields, UPInfo& entry) {
    if (zvr_compile_regex(fields.pattern, 1, &entry.url_ptrn_regex) != 0) {
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
