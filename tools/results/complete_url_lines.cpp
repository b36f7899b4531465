#include "tools/results/complete_url_lines.h"

#include "base/tokenizers.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr int column_count = 4; // before the URL, which may hold separators itself

// Cuts the line at its first separators, each column for itself. False when there are too few.
bool split_columns(char* line, char* columns[]) {
    for (int i = 0; i < column_count; ++i) {
        columns[i] = line;
        line = std::strchr(line, '|');
        if (line == nullptr) {
            return false;
        }
        *line++ = '\0';
    }
    return true;
}

// A log may give an empty method or host, which the tokenizer would pass over.
bool has_empty_method_or_host(const char* line) {
    const char* separator = std::strchr(line, '|');
    return separator == line || (separator != nullptr && separator[1] == '|');
}

bool read_columns(LineText line, char* columns[]) {
    if (has_empty_method_or_host(line.text)) {
        return split_columns(line.text, columns) && *columns[2] != '\0' && *columns[3] != '\0';
    }
    int count;
    get_tokens12(line.text, columns, "|", column_count, &count);
    return count == column_count;
}

} // namespace

std::optional<CounterValue> read_counter_line(LineText line) {
    const std::string_view text = {line.text, line.size};
    for (int i = 0; i < complete_url_counter_count; ++i) {
        const std::string_view key = complete_url_counter_keys[i];
        if (text.starts_with(key)) {
            return CounterValue{static_cast<CompleteUrlCounter>(i),
                                std::strtoul(line.text + key.size(), nullptr, 0)};
        }
    }
    return std::nullopt;
}

std::optional<CompleteUrlRow> read_row_line(LineText line) {
    const char* const line_end = line.text + line.size;
    char* columns[column_count];
    if (!read_columns(line, columns)) {
        return std::nullopt;
    }
    const char* const column_end =
        columns[column_count - 1] + std::strlen(columns[column_count - 1]);
    if (column_end == line_end) {
        return std::nullopt; // no separator, no URL
    }
    char* count_end;
    char* offset_end;
    const uint64_t count = std::strtoul(columns[2], &count_end, 0);
    const int64_t offset = std::strtol(columns[3], &offset_end, 10);
    if (*count_end != '\0' || *offset_end != '\0') {
        return std::nullopt; // for instance of a host that holds a separator
    }
    const char* url = column_end + 1;
    return CompleteUrlRow{
        columns[0], columns[1], count, offset, {url, static_cast<size_t>(line_end - url)}};
}
