#include "tools/results/url_list.h"

#include "base/failure.h"
#include "base/progress.h"
#include "base/result_file.h"
#include "base/result_names.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/parse/secondary_cookie_trace.h"
#include "tools/patterns/classification.h"
#include "tools/urls/request_selection.h"
#include "tools/urls/unique_urls.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <strings.h>

namespace {

// The first and the last counter of a summary.
constexpr std::string_view total_key = "Total";
constexpr std::string_view row_count_key = "TotalUrlPattern";

constexpr std::string_view pattern_object[] = {"MAIN", "MAIN_WITHOUT_TX", "INLINE"};

bool is_na(const char* text) {
    return strcasecmp(text, na_string) == 0;
}

const char* host_column(const UrlInfo& entry, const UPInfo& pattern) {
    if (!is_na(pattern.host)) {
        return pattern.host;
    }
    return is_na(entry.host_hdr) ? na_string : entry.host_hdr;
}

// Only a main pattern has such a file.
const char* post_data_column(const UrlInfo& entry, const UPInfo& pattern) {
    return pattern.post_data_file != nullptr && sends_body(entry.method) ? pattern.post_data_file
                                                                         : na_string;
}

// One row, column by column.
class Row {
  public:
    explicit Row(ResultFile& file) : file_(file) {}
    ~Row() { file_.append('\n'); }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    void add(std::string_view text) {
        separate();
        file_.append(text);
    }
    void add_signed(int64_t number) {
        separate();
        file_.append_signed(number);
    }

  private:
    void separate() {
        if (!is_first_) {
            file_.append('|');
        }
        is_first_ = false;
    }

    ResultFile& file_;
    bool is_first_ = true;
};

std::string_view url_column(const char* url, std::string& escaped) {
    if (std::strchr(url, '|') == nullptr) {
        return url;
    }
    replace_pipe_by_ascii(url, 0, escaped);
    return escaped;
}

void write_row(ResultFile& file, const UrlListRow& told, std::string& escaped) {
    Row row(file);
    row.add(told.is_filtered ? "YES" : "NO");
    row.add(told.type);
    row.add(told.method);
    row.add(url_column(told.url, escaped));
    row.add_signed(static_cast<int64_t>(told.count));
    row.add(told.transaction);
    row.add(told.host);
    row.add_signed(told.query_file_offset);
    row.add(told.post_data_file);
    row.add(told.pattern);
}

// Returns the number of rows.
uint64_t write_rows(ResultFile& file) {
    uint64_t count = 0;
    std::string escaped;
    for (int i = 0; i < url_pattern_count; ++i) {
        if (url_pattern[i].ignore_flag == 0) {
            write_row(file, url_list_row(url_pattern[i]), escaped);
            ++count;
        }
    }
    return count;
}

// `secondary_cookie_part` stands between two counters; it may be empty.
std::string make_summary(uint64_t row_count, const std::string& secondary_cookie_part) {
    const auto counter = [](std::string_view key, uint64_t count) {
        return std::string(key) + "=" + std::to_string(count);
    };
    const uint64_t non_session = ignore_non_session_urls != 0 ? g_total_non_session_req : 0;
    return counter(total_key, g_total_req) + ";" + counter("Redirected", g_redirected_req) + ";" +
           counter("TimeBasedFiltered", g_time_filtered_req) + ";" +
           counter("BadRequest", g_total_bad_req) + ";" +
           counter("NonSessionRequest", non_session) + ";" + secondary_cookie_part +
           counter("InlineFilteredRequest", total_inline_filtered) + ";" +
           counter(row_count_key, row_count);
}

std::string secondary_cookie_part() {
    if (akaau_trace == 0 || ignore_non_session_urls == 0) {
        return "";
    }
    return "NonSessionRequestWithSecondaryCookie=" +
           std::to_string(g_total_non_session_with_secondary_cookie) + ";";
}

void print_summary(const std::string& summary) {
    if (std::printf("%s\n", summary.c_str()) < 0 || std::fflush(stdout) != 0) {
        fail("Unable to write summary to standard output");
    }
}

} // namespace

bool sends_body(const char* method) {
    return strcasecmp(method, "POST") == 0 || strcasecmp(method, "PUT") == 0;
}

UrlListRow url_list_row(const UrlInfo& entry) {
    const UPInfo* pattern = deciding_pattern(entry);
    UrlListRow row = {.is_filtered = false,
                      .type = pattern_object[static_cast<unsigned char>(REQUEST_TYPE_MAIN)],
                      .method = entry.method,
                      .url = entry.url,
                      .count = entry.count,
                      .transaction = na_string,
                      .host = entry.host_hdr,
                      .query_file_offset = entry.query_url_offset,
                      .post_data_file = na_string,
                      .pattern = na_string};
    if (pattern != nullptr) {
        row.is_filtered = entry.filter_flag != 0;
        row.type = pattern_object[static_cast<unsigned char>(entry.request_type)];
        row.transaction = pattern->txn_name;
        row.host = host_column(entry, *pattern);
        row.post_data_file = post_data_column(entry, *pattern);
        row.pattern = pattern->url_ptrn_string;
    }
    return row;
}

std::string url_list_summary(uint64_t row_count) {
    return make_summary(row_count, "");
}

void replace_pipe_by_ascii(const char* in, size_t len, std::string& out) {
    const std::string_view text = len == 0 ? std::string_view(in) : std::string_view(in, len);
    out.clear();
    for (const char c : text) {
        if (c == '|') {
            out += "&#124;";
        } else {
            out += c;
        }
    }
}

std::optional<uint64_t> row_count_in_summary(std::string_view summary) {
    const std::string key = ";" + std::string(row_count_key) + "=";
    const size_t found = summary.find(key);
    if (!summary.starts_with(std::string(total_key) + "=") || found == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view value = summary.substr(found + key.size());
    uint64_t count = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), count);
    return error == std::errc() ? std::optional(count) : std::nullopt;
}

void write_url_list(const OwnDirectory& config_dir) {
    const std::string path = config_dir.path() + "/" + url_list_name;
    ResultFile file;
    if (!file.create(config_dir, url_list_name)) {
        fail("Unable to open file - %s", path.c_str());
    }
    const PhaseProgress progress("Start dumping url pattern at  %s\n",
                                 "End dumping url pattern at  %s\nTotal time taken : %ld\n");
    file.append(std::string(summary_width, ' '));
    file.append("\nFilter|Type|Method|URL|Count|Txn-Name|Host|Query_File_Offset|POST-DATA_FILE|"
                "URL-Pattern\n");
    const uint64_t row_count = write_rows(file);
    file.overwrite_start(make_summary(row_count, ""));
    if (!file.close()) {
        fail("Unable to write file - %s", path.c_str());
    }
    print_summary(make_summary(row_count, secondary_cookie_part()));
    progress.finish();
}
