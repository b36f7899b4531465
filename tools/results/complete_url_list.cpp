#include "tools/results/complete_url_list.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/logs.h"
#include "base/result_file.h"
#include "base/result_names.h"
#include "base/text_arena.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/load/line_count.h"
#include "tools/load/request_table.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/unique_urls.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

constexpr const char* fname = "fill_url_pattern_from_cache";

struct CounterLine {
    std::string_view key;
    uint64_t& counter;
};

const CounterLine counter_lines[] = {
    {"#TOTAL_URLS=", g_total_req},
    {"#REDIRECTED_URLS=", g_redirected_req},
    {"#TIME_FILTERED_URLS=", g_time_filtered_req},
    {"#BAD_URLS=", g_total_bad_req},
    {"#NON_SESSION_URLS=", g_total_non_session_req},
    {"#NON_SESSION_URLS_WITH_SECONDARY_COOKIE=", g_total_non_session_with_secondary_cookie},
};

std::string list_path(const OwnDirectory& config_dir) {
    return config_dir.path() + "/" + complete_url_list_name;
}

bool can_be_read_back(const UrlInfo& entry) {
    return entry.method[0] != '#' && std::strchr(entry.method, '|') == nullptr &&
           std::strchr(entry.host_hdr, '|') == nullptr;
}

void write_row(ResultFile& file, const UrlInfo& entry) {
    file.append(entry.method);
    file.append('|');
    file.append(entry.host_hdr);
    file.append('|');
    file.append_unsigned(entry.count);
    file.append('|');
    file.append_signed(entry.query_url_offset);
    file.append('|');
    file.append(entry.url);
    file.append('\n');
}

void read_counter(LineText line) {
    const std::string_view text = {line.text, line.size};
    for (const CounterLine& counter_line : counter_lines) {
        if (text.starts_with(counter_line.key)) {
            counter_line.counter = std::strtoul(line.text + counter_line.key.size(), nullptr, 0);
            return;
        }
    }
}

[[noreturn]] void refuse_row() {
    fail("Invalid line in complete_url.list, remove cache, and try again");
}

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

void read_row(LineText line, TextArena& texts) {
    char* const line_end = line.text + line.size;
    char* columns[column_count];
    if (!read_columns(line, columns)) {
        refuse_row();
    }
    char* const column_end = columns[column_count - 1] + std::strlen(columns[column_count - 1]);
    if (column_end == line_end) {
        refuse_row(); // no separator, no URL
    }
    char* count_end;
    char* offset_end;
    const uint64_t count = std::strtoul(columns[2], &count_end, 0);
    const int64_t offset = std::strtol(columns[3], &offset_end, 10);
    if (*count_end != '\0' || *offset_end != '\0') {
        refuse_row(); // for instance of a host that holds a separator
    }
    const char* url = column_end + 1;
    const int index = create_url_pattern(); // may move the table
    UrlInfo& entry = url_pattern[index];
    entry = {};
    std::snprintf(entry.method, sizeof entry.method, "%s", columns[0]);
    entry.host_hdr = texts.copy("host_hdr", columns[1]);
    entry.count = count;
    entry.query_url_offset = offset;
    entry.url = texts.copy("url", {url, static_cast<size_t>(line_end - url)});
}

void allocate_table(const std::string& path, int descriptor) {
    const uint64_t line_count = total_lines_in_open_file(path.c_str(), descriptor);
    if (line_count == 0) {
        fail("Failed to count number of lines from file %s", path.c_str());
    }
    DEBUG_LOG(3, fname, "Number of request in cache file = %d", static_cast<int>(line_count));
    url_pattern =
        static_cast<UrlInfo*>(allocate_zeroed(fname, "Url pattern", line_count, sizeof(UrlInfo)));
    max_url_pattern = static_cast<int>(line_count);
}

} // namespace

bool write_complete_url_list(const OwnDirectory& config_dir) {
    DEBUG_LOG(3, "main", "Start dumping complete url list to complete_url.list file");
    const std::string path = list_path(config_dir);
    ResultFile file;
    if (!file.create(config_dir, complete_url_list_name)) {
        fail("Unable to open file - %s", path.c_str());
    }
    for (const CounterLine& counter_line : counter_lines) {
        file.append(counter_line.key);
        file.append_unsigned(counter_line.counter);
        file.append('\n');
    }
    file.append("#Method|Host|Count|Query_Offset|Url\n");
    bool can_all_be_read_back = true;
    for (int i = 0; i < url_pattern_count; ++i) {
        write_row(file, url_pattern[i]);
        can_all_be_read_back = can_all_be_read_back && can_be_read_back(url_pattern[i]);
    }
    if (!file.close()) {
        fail("Unable to write file - %s", path.c_str());
    }
    DEBUG_LOG(3, "main", "Dumped complete url list.");
    return can_all_be_read_back;
}

void fill_url_pattern_from_cache(const OwnDirectory& config_dir) {
    DEBUG_LOG(2, fname, "Method called");
    const std::string path = list_path(config_dir);
    FileDescriptor cache = config_dir.open_file(complete_url_list_name);
    if (!cache.is_open()) {
        fail("Failed to open cache file %s", path.c_str());
    }
    allocate_table(path, cache.get());
    TextFile file(std::move(cache), path, LineReader::unlimited);
    LineText line;
    TextArena texts;
    while (file.next(line)) {
        if (line.size != 0 && line.text[0] == '#') {
            read_counter(line);
        } else if (line.size != 0) {
            read_row(line, texts);
        }
    }
    DEBUG_LOG(2, fname, "Total uniq urls added = %d", url_pattern_count);
}
