#include "checker/named_files.h"

#include "base/tokenizers.h"
#include "checker/file_state.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace {

constexpr size_t scenario_line_size = 2048;
constexpr size_t pattern_line_size = 4096;

void add_log(LineText line, std::vector<std::string>& logs) {
    constexpr std::string_view keyword = "REPLAY_LOG_FILE";
    if (line.size <= keyword.size() ||
        strncasecmp(line.text, keyword.data(), keyword.size()) != 0) {
        return;
    }
    char* value = line.text + keyword.size() + 1;
    value += std::strspn(value, " \t");
    char* fields[1];
    int count;
    get_tokens1(value, fields, " ", 1, &count);
    if (count == 1) {
        logs.emplace_back(fields[0]);
    }
}

void add_post_data_file(LineText line, std::vector<std::string>& files) {
    enum { status, type, post_data_file = 7, field_count = 9 };
    char* fields[field_count];
    int count;
    if (line.size == 0 || line.text[0] == '#') {
        return;
    }
    get_tokens1(line.text, fields, "|", field_count, &count);
    if (count == field_count && strcasecmp(fields[status], "active") == 0 &&
        strcasecmp(fields[type], "main") == 0 && strcasecmp(fields[post_data_file], "NA") != 0 &&
        std::find(files.begin(), files.end(), fields[post_data_file]) == files.end()) {
        files.emplace_back(fields[post_data_file]);
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
