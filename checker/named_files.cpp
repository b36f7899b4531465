#include "checker/named_files.h"

#include "base/tokenizers.h"
#include "checker/file_contents.h"
#include "tools/config/keyword_text.h"
#include "tools/config/scenario_file.h"
#include "tools/patterns/pattern_columns.h"
#include "tools/patterns/pattern_lines.h"

#include <algorithm>

namespace {

void add_log(LineText line, std::vector<std::string>& logs) {
    if (!begins_with(line.text, log_file_keyword)) {
        return;
    }
    char* fields[1];
    int count;
    get_tokens1(skip_blanks(value_after(line, log_file_keyword)), fields, " ", 1, &count);
    if (count == 1) {
        logs.emplace_back(fields[0]);
    }
}

void add_post_data_file(LineText line, std::vector<std::string>& files) {
    if (line.size == 0 || line.text[0] == '#') {
        return;
    }
    char* fields[url_pattern_column_count];
    int count;
    get_tokens1(line.text, fields, "|", url_pattern_column_count, &count);
    if (count < url_pattern_column_count || !is_active(fields[URL_PATTERN_STATUS]) ||
        !equal_ignoring_case(fields[URL_PATTERN_TYPE], main_pattern_type)) {
        return;
    }
    const char* file = fields[URL_PATTERN_POST_DATA_FILE];
    if (!equal_ignoring_case(file, na_string) &&
        std::find(files.begin(), files.end(), file) == files.end()) {
        files.emplace_back(file);
    }
}

} // namespace

bool read_scenario_logs(const FileDescriptor& scenario, std::vector<std::string>& logs) {
    return read_lines(scenario, scenario_line_size, [&](LineText line) { add_log(line, logs); });
}

bool read_post_data_files(const FileDescriptor& patterns, std::vector<std::string>& files) {
    return read_lines(patterns, pattern_line_size,
                      [&](LineText line) { add_post_data_file(line, files); });
}
