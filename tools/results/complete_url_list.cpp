#include "tools/results/complete_url_list.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/logs.h"
#include "base/result_file.h"
#include "base/result_names.h"
#include "base/text_arena.h"
#include "base/text_file.h"
#include "tools/load/line_count.h"
#include "tools/load/request_table.h"
#include "tools/results/complete_url_lines.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/unique_urls.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

namespace {

constexpr const char* fname = "fill_url_pattern_from_cache";

// Where the run counts, in the order of the counters.
uint64_t* const counters[complete_url_counter_count] = {
    &g_total_req,     &g_redirected_req,        &g_time_filtered_req,
    &g_total_bad_req, &g_total_non_session_req, &g_total_non_session_with_secondary_cookie,
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

void take_counter(LineText line) {
    const std::optional<CounterValue> read = read_counter_line(line);
    if (read) {
        *counters[read->counter] = read->value;
    }
}

void take_row(LineText line, TextArena& texts) {
    const std::optional<CompleteUrlRow> row = read_row_line(line);
    if (!row) {
        fail("Invalid line in complete_url.list, remove cache, and try again");
    }
    const int index = create_url_pattern(); // may move the table
    UrlInfo& entry = url_pattern[index];
    entry = {};
    std::snprintf(entry.method, sizeof entry.method, "%s", row->method);
    entry.host_hdr = texts.copy("host_hdr", row->host);
    entry.count = row->count;
    entry.query_url_offset = row->query_url_offset;
    entry.url = texts.copy("url", row->url);
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
    for (int i = 0; i < complete_url_counter_count; ++i) {
        file.append(complete_url_counter_keys[i]);
        file.append_unsigned(*counters[i]);
        file.append('\n');
    }
    file.append(complete_url_column_line);
    file.append('\n');
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
        if (is_head_line(line)) {
            take_counter(line);
        } else if (line.size != 0) {
            take_row(line, texts);
        }
    }
    DEBUG_LOG(2, fname, "Total uniq urls added = %d", url_pattern_count);
}

void forget_cached_urls() {
    for (uint64_t* counter : counters) {
        *counter = 0;
    }
    std::fill_n(url_pattern, url_pattern_count, UrlInfo{});
    url_pattern_count = 0;
}
